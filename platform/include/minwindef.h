#pragma once
// Basic types and macros of the SDK. DWORD, LONG and ULONG have 32 bits, WCHAR has 16.

#include <basetsd.h>
#include <cstddef>

#define CONST const
#define VOID void
#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define WINAPIV
#define FAR
#define IN
#define OUT
#define OPTIONAL

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif
#define MAX_PATH 260

using CHAR = char;
using WCHAR = char16_t;
using TCHAR = WCHAR;
using BYTE = unsigned char;
using UCHAR = unsigned char;
using BOOLEAN = BYTE;
using SHORT = short;
using USHORT = unsigned short;
using WORD = unsigned short;
using INT = int;
using UINT = unsigned int;
using BOOL = int;
using LONG = int;
using ULONG = unsigned int;
using DWORD = unsigned int;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using DWORDLONG = unsigned long long;
using FLOAT = float;
using HRESULT = LONG;
using LSTATUS = LONG;
using LANGID = WORD;
using LCID = DWORD;
using ATOM = WORD;
using COLORREF = DWORD;
using ACCESS_MASK = DWORD;
using REGSAM = ACCESS_MASK;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using PUCHAR = UCHAR*;
using PBOOL = BOOL*;
using LPBOOL = BOOL*;
using PWORD = WORD*;
using PUSHORT = USHORT*;
using PLONG = LONG*;
using LPLONG = LONG*;
using PULONG = ULONG*;
using PDWORD = DWORD*;
using LPDWORD = DWORD*;
using PUINT = UINT*;
using PSTR = CHAR*;
using LPSTR = CHAR*;
using PCSTR = const CHAR*;
using LPCSTR = const CHAR*;
using PWSTR = WCHAR*;
using LPWSTR = WCHAR*;
using PWCHAR = WCHAR*;
using LPWCH = WCHAR*;
using PCWSTR = const WCHAR*;
using LPCWSTR = const WCHAR*;
using LPCWCH = const WCHAR*;
using PCWCH = const WCHAR*;
using PTSTR = LPWSTR;
using LPTSTR = LPWSTR;
using LPCTSTR = LPCWSTR;
using PCTSTR = LPCWSTR;

using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

using HANDLE = void*;
using PHANDLE = HANDLE*;
using LPHANDLE = HANDLE*;
using HGLOBAL = HANDLE;
using HLOCAL = HANDLE;

#define DECLARE_HANDLE(name) \
    struct name##__ {        \
        int unused;          \
    };                       \
    using name = name##__*

DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HDC);
DECLARE_HANDLE(HBITMAP);
DECLARE_HANDLE(HICON);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HFONT);
DECLARE_HANDLE(HBRUSH);
DECLARE_HANDLE(HRSRC);
DECLARE_HANDLE(HACCEL);
using HMODULE = HINSTANCE;
using HCURSOR = HICON;
using HGDIOBJ = void*;
using PHKEY = HKEY*;

using FARPROC = INT_PTR(WINAPI*)();
using PROC = INT_PTR(WINAPI*)();

#define TEXT_LITERAL(quote) u##quote
#define TEXT(quote) TEXT_LITERAL(quote)

#define LOWORD(l) (static_cast<WORD>(static_cast<DWORD_PTR>(l) & 0xFFFF))
#define HIWORD(l) (static_cast<WORD>((static_cast<DWORD_PTR>(l) >> 16) & 0xFFFF))
#define LOBYTE(w) (static_cast<BYTE>(static_cast<DWORD_PTR>(w) & 0xFF))
#define HIBYTE(w) (static_cast<BYTE>((static_cast<DWORD_PTR>(w) >> 8) & 0xFF))
#define MAKEWORD(a, b)                               \
    (static_cast<WORD>(static_cast<BYTE>((a)&0xFF) | \
                       (static_cast<WORD>(static_cast<BYTE>((b)&0xFF)) << 8)))
#define MAKELONG(a, b)                                 \
    (static_cast<LONG>(static_cast<WORD>((a)&0xFFFF) | \
                       (static_cast<DWORD>(static_cast<WORD>((b)&0xFFFF)) << 16)))
#define MAKEWPARAM(l, h) (static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(l, h))))
#define MAKELPARAM(l, h) (static_cast<LPARAM>(static_cast<DWORD>(MAKELONG(l, h))))
#define UNREFERENCED_PARAMETER(p) (void)(p)
#define ARRAYSIZE(a) (sizeof(a) / sizeof(*(a)))

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using PFILETIME = FILETIME*;
using LPFILETIME = FILETIME*;

#define _In_
#define _Out_
#define _Inout_
#define _In_opt_
#define _Out_opt_
#define _Inout_opt_
