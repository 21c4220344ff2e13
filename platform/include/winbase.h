#pragma once
// Local memory, messages, and what the SDK keeps beside them.

#include <cstdarg>

#include <minwindef.h>
#include <winnt.h>

#define LMEM_FIXED 0x0000
#define LMEM_ZEROINIT 0x0040
#define LPTR (LMEM_FIXED | LMEM_ZEROINIT)

HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes);
HLOCAL WINAPI LocalFree(HLOCAL block);

#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x00000100
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200
#define FORMAT_MESSAGE_FROM_STRING 0x00000400
#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000
#define FORMAT_MESSAGE_ARGUMENT_ARRAY 0x00002000
#define FORMAT_MESSAGE_MAX_WIDTH_MASK 0x000000FF

DWORD WINAPI FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId,
                            LPWSTR buffer, DWORD size, va_list* arguments);
#define FormatMessage FormatMessageW

int WINAPI lstrlenW(LPCWSTR text);
#define lstrlen lstrlenW

UINT WINAPI WinExec(LPCSTR commandLine, UINT show);
BOOL WINAPI LookupPrivilegeValueW(LPCWSTR system, LPCWSTR name, PLUID luid);
#define LookupPrivilegeValue LookupPrivilegeValueW
