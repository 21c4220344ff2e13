#pragma once
// The shell's helpers for text and paths.

#include <minwindef.h>

using STIF_FLAGS = int;
#define STIF_DEFAULT 0x00000000
#define STIF_SUPPORT_HEX 0x00000001

BOOL WINAPI StrToIntExW(PCWSTR text, STIF_FLAGS flags, int* number);
BOOL WINAPI PathFileExistsW(LPCWSTR path);
#define StrToIntEx StrToIntExW
#define PathFileExists PathFileExistsW
