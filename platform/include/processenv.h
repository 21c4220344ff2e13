#pragma once
// The process's standard streams.

#include <minwindef.h>

#define STD_INPUT_HANDLE (static_cast<DWORD>(-10))
#define STD_OUTPUT_HANDLE (static_cast<DWORD>(-11))
#define STD_ERROR_HANDLE (static_cast<DWORD>(-12))

HANDLE WINAPI GetStdHandle(DWORD stream);
