#pragma once
// Modules and their resources.

#include <minwindef.h>

#define LOAD_LIBRARY_SEARCH_SYSTEM32 0x00000800

HMODULE WINAPI LoadLibraryW(LPCWSTR name);
HMODULE WINAPI LoadLibraryExW(LPCWSTR name, HANDLE reserved, DWORD flags);
BOOL WINAPI FreeLibrary(HMODULE module);
FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
// A null name stands for the program itself.
HMODULE WINAPI GetModuleHandleW(LPCWSTR name);
HRSRC WINAPI FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type);
HGLOBAL WINAPI LoadResource(HMODULE module, HRSRC resource);
LPVOID WINAPI LockResource(HGLOBAL resource);
DWORD WINAPI SizeofResource(HMODULE module, HRSRC resource);
