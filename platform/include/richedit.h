#pragma once
// The rich edit control of Riched20.dll.

#include <minwindef.h>
#include <winuser.h>

#define RICHEDIT_CLASSA "RichEdit20A"
#define RICHEDIT_CLASSW TEXT("RichEdit20W")

#define EM_SETBKGNDCOLOR (WM_USER + 67)
#define EM_GETTEXTEX (WM_USER + 94)
#define EM_GETTEXTLENGTHEX (WM_USER + 95)
#define EM_SETTEXTEX (WM_USER + 97)

#define ST_DEFAULT 0
struct SETTEXTEX {
    DWORD flags;
    UINT codepage;
};

#define GT_DEFAULT 0
#define GT_USECRLF 1
#pragma pack(push, 4)
struct GETTEXTEX {
    DWORD cb;
    DWORD flags;
    UINT codepage;
    LPCSTR lpDefaultChar;
    LPBOOL lpUsedDefChar;
};
#pragma pack(pop)

#define GTL_DEFAULT 0
#define GTL_USECRLF 1
#define GTL_NUMBYTES 16
struct GETTEXTLENGTHEX {
    DWORD flags;
    UINT codepage;
};
