#pragma once
// Privileges of a token.

#include <minwindef.h>
#include <winnt.h>

BOOL WINAPI AdjustTokenPrivileges(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES newState,
                                  DWORD bufferLength, PTOKEN_PRIVILEGES previousState,
                                  PDWORD returnLength);
