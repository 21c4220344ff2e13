#pragma once
// Conversion and comparison of text.

#include <minwindef.h>

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR multiByte, int bytes, LPWSTR wide,
                               int capacity);
int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int characters,
                               LPSTR multiByte, int capacity, LPCSTR defaultChar,
                               LPBOOL usedDefaultChar);
int WINAPI CompareStringOrdinal(LPCWSTR first, int firstLength, LPCWSTR second, int secondLength,
                                BOOL ignoreCase);
