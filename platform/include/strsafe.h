#pragma once
// Bounded text. Sizes are in characters, with the terminator. The result is 0,
// STRSAFE_E_INVALID_PARAMETER or STRSAFE_E_INSUFFICIENT_BUFFER; a truncated text is terminated.
// Formats have the meaning of the Windows C runtime: %s takes text of the function's own width, %S
// of the other.

#include <cstdarg>
#include <cstddef>

#include <minwindef.h>

#define STRSAFE_MAX_CCH 2147483647
#define STRSAFE_E_INVALID_PARAMETER (static_cast<HRESULT>(0x80070057))
#define STRSAFE_E_INSUFFICIENT_BUFFER (static_cast<HRESULT>(0x8007007A))

HRESULT StringCchCopyW(LPWSTR destination, size_t capacity, LPCWSTR source);
HRESULT StringCchCopyA(LPSTR destination, size_t capacity, LPCSTR source);
HRESULT StringCchCopyNW(LPWSTR destination, size_t capacity, LPCWSTR source, size_t most);
HRESULT StringCchCopyNA(LPSTR destination, size_t capacity, LPCSTR source, size_t most);
HRESULT StringCchCatW(LPWSTR destination, size_t capacity, LPCWSTR source);
HRESULT StringCchCatA(LPSTR destination, size_t capacity, LPCSTR source);
HRESULT StringCchCatNW(LPWSTR destination, size_t capacity, LPCWSTR source, size_t most);
HRESULT StringCchCatNA(LPSTR destination, size_t capacity, LPCSTR source, size_t most);
HRESULT StringCchPrintfW(LPWSTR destination, size_t capacity, LPCWSTR format, ...);
HRESULT StringCchPrintfA(LPSTR destination, size_t capacity, LPCSTR format, ...);
HRESULT StringCchVPrintfW(LPWSTR destination, size_t capacity, LPCWSTR format, va_list arguments);
HRESULT StringCchVPrintfA(LPSTR destination, size_t capacity, LPCSTR format, va_list arguments);
HRESULT StringCchLengthW(LPCWSTR text, size_t most, size_t* length);
HRESULT StringCchLengthA(LPCSTR text, size_t most, size_t* length);

#define StringCchCopy StringCchCopyW
#define StringCchCopyN StringCchCopyNW
#define StringCchCat StringCchCatW
#define StringCchCatN StringCchCatNW
#define StringCchPrintf StringCchPrintfW
#define StringCchVPrintf StringCchVPrintfW
#define StringCchLength StringCchLengthW
