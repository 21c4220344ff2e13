#pragma once
// Windows, messages, dialogs and the standard controls.

#include <minwindef.h>
#include <winresrc.h>

struct POINT {
    LONG x;
    LONG y;
};
using LPPOINT = POINT*;

struct SIZE {
    LONG cx;
    LONG cy;
};
using LPSIZE = SIZE*;

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPRECT = RECT*;
using LPCRECT = const RECT*;

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

struct NMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
};
using LPNMHDR = NMHDR*;

using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

#define IS_INTRESOURCE(r) ((((ULONG_PTR)(r)) >> 16) == 0)
#define MAKEINTRESOURCEW(i) ((LPWSTR)((ULONG_PTR)((WORD)(i))))
#define MAKEINTRESOURCE MAKEINTRESOURCEW

#define RT_BITMAP MAKEINTRESOURCEW(2)
#define RT_DIALOG MAKEINTRESOURCEW(5)
#define RT_STRING MAKEINTRESOURCEW(6)
#define RT_RCDATA MAKEINTRESOURCEW(10)
#define RT_VERSION MAKEINTRESOURCEW(16)
#define IDC_ARROW MAKEINTRESOURCEW(32512)
#define IDC_WAIT MAKEINTRESOURCEW(32514)

#define WM_DESTROY 0x0002
#define WM_SETFOCUS 0x0007
#define WM_KILLFOCUS 0x0008
#define WM_ENABLE 0x000A
#define WM_SETTEXT 0x000C
#define WM_GETTEXT 0x000D
#define WM_GETTEXTLENGTH 0x000E
#define WM_CLOSE 0x0010
#define WM_QUIT 0x0012
#define WM_SETFONT 0x0030
#define WM_GETFONT 0x0031
#define WM_NOTIFY 0x004E
#define WM_NCDESTROY 0x0082
#define WM_GETDLGCODE 0x0087
#define WM_KEYDOWN 0x0100
#define WM_CHAR 0x0102
#define WM_INITDIALOG 0x0110
#define WM_COMMAND 0x0111
#define WM_CHARTOITEM 0x002F
#define WM_VKEYTOITEM 0x002E
#define WM_COMPAREITEM 0x0039
#define WM_QUERYDRAGICON 0x0037
#define WM_CTLCOLORMSGBOX 0x0132
#define WM_CTLCOLORSTATIC 0x0138
#define WM_USER 0x0400
#define WM_APP 0x8000

#define VK_RETURN 0x0D
#define VK_ESCAPE 0x1B

#define DM_GETDEFID (WM_USER + 0)
#define DM_SETDEFID (WM_USER + 1)
#define DC_HASDEFID 0x534B
#define DLGC_WANTMESSAGE 0x0004
#define DLGC_DEFPUSHBUTTON 0x0010
#define DLGC_UNDEFPUSHBUTTON 0x0020
#define DLGC_RADIOBUTTON 0x0040
#define DLGC_STATIC 0x0100
#define DLGC_BUTTON 0x2000

#define BM_GETCHECK 0x00F0
#define BM_SETCHECK 0x00F1
#define BM_GETSTATE 0x00F2
#define BM_SETSTYLE 0x00F4
#define BM_CLICK 0x00F5
#define BN_CLICKED 0
#define BST_UNCHECKED 0x0000
#define BST_CHECKED 0x0001
#define BST_INDETERMINATE 0x0002
#define BST_PUSHED 0x0004
#define BST_FOCUS 0x0008

#define STM_SETIMAGE 0x0172
#define STM_GETIMAGE 0x0173

#define EM_GETSEL 0x00B0
#define EM_SETSEL 0x00B1
#define EM_GETMODIFY 0x00B8
#define EM_SETMODIFY 0x00B9
#define EM_REPLACESEL 0x00C2
#define EM_LIMITTEXT 0x00C5
#define EM_SETLIMITTEXT EM_LIMITTEXT
#define EM_SETREADONLY 0x00CF
#define EM_GETLIMITTEXT 0x00D5
#define EN_CHANGE 0x0300
#define EN_MAXTEXT 0x0501

#define LB_ADDSTRING 0x0180
#define LB_INSERTSTRING 0x0181
#define LB_DELETESTRING 0x0182
#define LB_RESETCONTENT 0x0184
#define LB_SETSEL 0x0185
#define LB_SETCURSEL 0x0186
#define LB_GETSEL 0x0187
#define LB_GETCURSEL 0x0188
#define LB_GETTEXT 0x0189
#define LB_GETTEXTLEN 0x018A
#define LB_GETCOUNT 0x018B
#define LB_SELECTSTRING 0x018C
#define LB_FINDSTRING 0x018F
#define LB_GETITEMDATA 0x0199
#define LB_SETITEMDATA 0x019A
#define LB_FINDSTRINGEXACT 0x01A2
#define LB_ERR (-1)
#define LB_ERRSPACE (-2)
#define LBN_SELCHANGE 1

#define CB_ADDSTRING 0x0143
#define CB_DELETESTRING 0x0144
#define CB_GETCOUNT 0x0146
#define CB_GETCURSEL 0x0147
#define CB_GETLBTEXT 0x0148
#define CB_GETLBTEXTLEN 0x0149
#define CB_INSERTSTRING 0x014A
#define CB_RESETCONTENT 0x014B
#define CB_FINDSTRING 0x014C
#define CB_SELECTSTRING 0x014D
#define CB_SETCURSEL 0x014E
#define CB_SHOWDROPDOWN 0x014F
#define CB_GETITEMDATA 0x0150
#define CB_SETITEMDATA 0x0151
#define CB_GETDROPPEDSTATE 0x0157
#define CB_FINDSTRINGEXACT 0x0158
#define CB_OKAY 0
#define CB_ERR (-1)
#define CB_ERRSPACE (-2)
#define CBN_SELCHANGE 1
#define CBN_DROPDOWN 7
#define CBN_CLOSEUP 8
#define CBN_SELENDOK 9
#define CBN_SELENDCANCEL 10

#define GWLP_ID (-12)
#define GWLP_USERDATA (-21)
#define GWL_STYLE (-16)
#define GWL_EXSTYLE (-20)
#define DWLP_MSGRESULT 0
#define DWLP_DLGPROC (DWLP_MSGRESULT + sizeof(LRESULT))
#define DWLP_USER (DWLP_DLGPROC + sizeof(DLGPROC))

#define GW_HWNDNEXT 2
#define GW_HWNDPREV 3
#define GW_OWNER 4
#define GW_CHILD 5

#define SW_HIDE 0
#define SW_SHOW 5

#define HWND_DESKTOP (static_cast<HWND>(nullptr))

#define MB_OK 0x00000000
#define MB_OKCANCEL 0x00000001
#define MB_ABORTRETRYIGNORE 0x00000002
#define MB_YESNOCANCEL 0x00000003
#define MB_YESNO 0x00000004
#define MB_RETRYCANCEL 0x00000005
#define MB_ICONHAND 0x00000010
#define MB_ICONQUESTION 0x00000020
#define MB_ICONEXCLAMATION 0x00000030
#define MB_ICONASTERISK 0x00000040
#define MB_ICONERROR MB_ICONHAND
#define MB_ICONSTOP MB_ICONHAND
#define MB_ICONWARNING MB_ICONEXCLAMATION
#define MB_ICONINFORMATION MB_ICONASTERISK
#define MB_DEFBUTTON1 0x00000000
#define MB_DEFBUTTON2 0x00000100
#define MB_DEFBUTTON3 0x00000200
#define MB_APPLMODAL 0x00000000
#define MB_TASKMODAL 0x00002000
#define MB_TYPEMASK 0x0000000F
#define MB_DEFMASK 0x00000F00
#define MB_MODEMASK 0x00003000

#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001
#define QS_KEY 0x0001
#define QS_MOUSE 0x0006
#define QS_INPUT 0x1C07
#define QS_POSTMESSAGE 0x0008
#define QS_SENDMESSAGE 0x0040
#define QS_ALLEVENTS 0x1CBF
#define QS_ALLINPUT 0x1CFF
#define MWMO_INPUTAVAILABLE 0x0004

#define EWX_REBOOT 0x00000002

// Windows
BOOL WINAPI DestroyWindow(HWND window);
LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL WINAPI IsWindow(HWND window);
BOOL WINAPI EnableWindow(HWND window, BOOL enable);
BOOL WINAPI IsWindowEnabled(HWND window);
BOOL WINAPI ShowWindow(HWND window, int command);
BOOL WINAPI IsWindowVisible(HWND window);
BOOL WINAPI SetWindowTextW(HWND window, LPCWSTR text);
int WINAPI GetWindowTextW(HWND window, LPWSTR text, int capacity);
int WINAPI GetWindowTextLengthW(HWND window);
LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index);
LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
HWND WINAPI GetParent(HWND window);
HWND WINAPI GetWindow(HWND window, UINT relation);
int WINAPI GetClassNameW(HWND window, LPWSTR text, int capacity);
HWND WINAPI GetForegroundWindow();
HWND WINAPI GetFocus();
HWND WINAPI SetFocus(HWND window);
HWND WINAPI GetLastActivePopup(HWND window);
BOOL WINAPI GetWindowRect(HWND window, LPRECT rect);
BOOL WINAPI GetClientRect(HWND window, LPRECT rect);
BOOL WINAPI ScreenToClient(HWND window, LPPOINT point);
int WINAPI MapWindowPoints(HWND from, HWND to, LPPOINT points, UINT count);
BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);
HDC WINAPI GetDC(HWND window);
int WINAPI ReleaseDC(HWND window, HDC context);
HCURSOR WINAPI LoadCursorW(HINSTANCE instance, LPCWSTR name);
HCURSOR WINAPI SetCursor(HCURSOR cursor);

// Messages
LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
void WINAPI PostQuitMessage(int exitCode);
BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last);
BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove);
BOOL WINAPI TranslateMessage(const MSG* message);
LRESULT WINAPI DispatchMessageW(const MSG* message);
DWORD WINAPI MsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, DWORD milliseconds,
                                         DWORD wakeMask, DWORD flags);

// Dialogs
INT_PTR WINAPI DialogBoxParamW(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter);
HWND WINAPI CreateDialogParamW(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter);
BOOL WINAPI EndDialog(HWND dialog, INT_PTR result);
BOOL WINAPI IsDialogMessageW(HWND dialog, LPMSG message);
BOOL WINAPI MapDialogRect(HWND dialog, LPRECT rect);
HWND WINAPI GetDlgItem(HWND dialog, int id);
int WINAPI GetDlgCtrlID(HWND window);
BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check);
UINT WINAPI IsDlgButtonChecked(HWND dialog, int id);
UINT WINAPI GetDlgItemTextW(HWND dialog, int id, LPWSTR text, int capacity);
LRESULT WINAPI SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);
int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style);

// Texts
int WINAPI LoadStringW(HINSTANCE instance, UINT id, LPWSTR text, int capacity);
DWORD WINAPI CharLowerBuffW(LPWSTR text, DWORD length);
DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD length);

BOOL WINAPI ExitWindowsEx(UINT flags, DWORD reason);
