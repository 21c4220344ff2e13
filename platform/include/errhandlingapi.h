#pragma once
// The thread's last error, and exceptions.

#include <minwindef.h>

DWORD WINAPI GetLastError();
void WINAPI SetLastError(DWORD error);
void WINAPI RaiseException(DWORD code, DWORD flags, DWORD argumentCount,
                           const ULONG_PTR* arguments);
