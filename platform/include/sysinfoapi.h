#pragma once
// The system's version, clock and directories.

#include <minwindef.h>
#include <winnt.h>

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW information);
DWORD WINAPI GetTickCount();
ULONGLONG WINAPI GetTickCount64();
void WINAPI GetLocalTime(LPSYSTEMTIME time);
UINT WINAPI GetWindowsDirectoryW(LPWSTR buffer, UINT size);
