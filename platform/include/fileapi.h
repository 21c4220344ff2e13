#pragma once
// Files and directories of drive C:.

#include <minwindef.h>
#include <minwinbase.h>
#include <handleapi.h>
#include <winnt.h>

struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5

#define FILE_BEGIN 0
#define FILE_CURRENT 1
#define FILE_END 2

#define INVALID_FILE_ATTRIBUTES (static_cast<DWORD>(-1))

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD shareMode,
                          LPSECURITY_ATTRIBUTES attributes, DWORD disposition, DWORD flags,
                          HANDLE templateFile);
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped);
BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD written,
                      LPOVERLAPPED overlapped);
BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position,
                             DWORD method);
BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);
BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES attributes);
DWORD WINAPI GetFileAttributesW(LPCWSTR path);
BOOL WINAPI DeleteFileW(LPCWSTR path);

// The last part of the pattern may hold `*` and `?`.
HANDLE WINAPI FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW found);
BOOL WINAPI FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW found);
BOOL WINAPI FindClose(HANDLE search);
