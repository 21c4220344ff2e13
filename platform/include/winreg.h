#pragma once
// The registry's functions and roots.

#include <minwindef.h>
#include <winnt.h>

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

#define PREDEFINED_KEY(number) \
    (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(number))))
#define HKEY_CLASSES_ROOT PREDEFINED_KEY(0x80000000)
#define HKEY_CURRENT_USER PREDEFINED_KEY(0x80000001)
#define HKEY_LOCAL_MACHINE PREDEFINED_KEY(0x80000002)
#define HKEY_USERS PREDEFINED_KEY(0x80000003)
#define HKEY_CURRENT_CONFIG PREDEFINED_KEY(0x80000005)

LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY result);
LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR keyClass,
                               DWORD options, REGSAM access, const LPSECURITY_ATTRIBUTES attributes,
                               PHKEY result, LPDWORD disposition);
LSTATUS WINAPI RegCloseKey(HKEY key);
LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR value, LPDWORD reserved, LPDWORD type,
                                LPBYTE data, LPDWORD size);
LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR value, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size);
LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR value);
LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subkey);
LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR subkey);
LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                             LPWSTR keyClass, LPDWORD classLength, PFILETIME lastWrite);
LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                             LPDWORD type, LPBYTE data, LPDWORD size);
LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                                LPDWORD subkeys, LPDWORD longestSubkey, LPDWORD longestClass,
                                LPDWORD values, LPDWORD longestValueName, LPDWORD longestData,
                                LPDWORD securitySize, PFILETIME lastWrite);
