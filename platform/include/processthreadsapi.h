#pragma once
// Threads and the process.

#include <minwinbase.h>
#include <minwindef.h>

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                           LPDWORD threadId);
BOOL WINAPI GetExitCodeThread(HANDLE thread, LPDWORD exitCode);
HANDLE WINAPI GetCurrentThread();
DWORD WINAPI GetCurrentThreadId();
HANDLE WINAPI GetCurrentProcess();
DWORD WINAPI GetCurrentProcessId();
BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, PHANDLE token);
