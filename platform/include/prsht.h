#pragma once
// Property sheets.

#include <minwindef.h>
#include <winuser.h>

struct PROPSHEETPAGEW;
struct _PSP;
using HPROPSHEETPAGE = _PSP*;
using LPFNPSPCALLBACKW = UINT(CALLBACK*)(HWND, UINT, PROPSHEETPAGEW*);
using LPFNADDPROPSHEETPAGE = BOOL(CALLBACK*)(HPROPSHEETPAGE, LPARAM);
using PFNPROPSHEETCALLBACK = int(CALLBACK*)(HWND, UINT, LPARAM);
using PROPSHEETPAGE_RESOURCE = const void*;

struct PROPSHEETPAGEW {
    DWORD dwSize;
    DWORD dwFlags;
    HINSTANCE hInstance;
    union {
        LPCWSTR pszTemplate;
        PROPSHEETPAGE_RESOURCE pResource;
    };
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszTitle;
    DLGPROC pfnDlgProc;
    LPARAM lParam;
    LPFNPSPCALLBACKW pfnCallback;
    UINT* pcRefParent;
    LPCWSTR pszHeaderTitle;
    LPCWSTR pszHeaderSubTitle;
    HANDLE hActCtx;
    union {
        HBITMAP hbmHeader;
        LPCWSTR pszbmHeader;
    };
};
using LPPROPSHEETPAGEW = PROPSHEETPAGEW*;
using LPCPROPSHEETPAGEW = const PROPSHEETPAGEW*;

struct PROPSHEETHEADERW {
    DWORD dwSize;
    DWORD dwFlags;
    HWND hwndParent;
    HINSTANCE hInstance;
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszCaption;
    UINT nPages;
    union {
        UINT nStartPage;
        LPCWSTR pStartPage;
    };
    union {
        LPCPROPSHEETPAGEW ppsp;
        HPROPSHEETPAGE* phpage;
    };
    PFNPROPSHEETCALLBACK pfnCallback;
    union {
        HBITMAP hbmWatermark;
        LPCWSTR pszbmWatermark;
    };
    void* hplWatermark;
    union {
        HBITMAP hbmHeader;
        LPCWSTR pszbmHeader;
    };
};
using LPCPROPSHEETHEADERW = const PROPSHEETHEADERW*;

#define PSP_DEFAULT 0x00000000
#define PSP_USEICONID 0x00000004
#define PSP_USETITLE 0x00000008
#define PSP_USECALLBACK 0x00000080

#define PSPCB_ADDREF 0
#define PSPCB_RELEASE 1
#define PSPCB_CREATE 2

#define PSH_DEFAULT 0x00000000
#define PSH_PROPTITLE 0x00000001
#define PSH_PROPSHEETPAGE 0x00000008
#define PSH_USEPSTARTPAGE 0x00000040
#define PSH_NOAPPLYNOW 0x00000080
#define PSH_USECALLBACK 0x00000100
#define PSH_MODELESS 0x00000400
#define PSCB_INITIALIZED 1

struct PSHNOTIFY {
    NMHDR hdr;
    LPARAM lParam;
};
using LPPSHNOTIFY = PSHNOTIFY*;

#define PSN_FIRST (0U - 200U)
#define PSN_SETACTIVE (PSN_FIRST - 0)
#define PSN_KILLACTIVE (PSN_FIRST - 1)
#define PSN_APPLY (PSN_FIRST - 2)
#define PSN_RESET (PSN_FIRST - 3)
#define PSN_QUERYCANCEL (PSN_FIRST - 9)
#define PSNRET_NOERROR 0
#define PSNRET_INVALID 1
#define PSNRET_INVALID_NOCHANGEPAGE 2

#define PSM_SETCURSEL (WM_USER + 101)
#define PSM_CHANGED (WM_USER + 104)
#define PSM_UNCHANGED (WM_USER + 109)
#define PSM_APPLY (WM_USER + 110)
#define PSM_PRESSBUTTON (WM_USER + 113)
#define PSM_GETTABCONTROL (WM_USER + 116)
#define PSM_ISDIALOGMESSAGE (WM_USER + 117)
#define PSM_GETCURRENTPAGEHWND (WM_USER + 118)
#define PSM_HWNDTOINDEX (WM_USER + 129)
#define PSM_INDEXTOHWND (WM_USER + 130)
#define PSM_GETRESULT (WM_USER + 135)

#define PSBTN_OK 3
#define PSBTN_APPLYNOW 4
#define PSBTN_CANCEL 5

HPROPSHEETPAGE WINAPI CreatePropertySheetPageW(LPCPROPSHEETPAGEW page);
BOOL WINAPI DestroyPropertySheetPage(HPROPSHEETPAGE page);
INT_PTR WINAPI PropertySheetW(LPCPROPSHEETHEADERW header);
