#pragma once
// Types of COM and Automation.

#include <minwindef.h>
#include <guiddef.h>

using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;
using LPBSTR = BSTR*;

using SCODE = LONG;
using DISPID = LONG;
using VARTYPE = unsigned short;
using VARIANT_BOOL = short;
#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))

enum VARENUM {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I4 = 3,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_UNKNOWN = 13,
};

enum CLSCTX {
    CLSCTX_INPROC_SERVER = 0x1,
    CLSCTX_LOCAL_SERVER = 0x4,
    CLSCTX_REMOTE_SERVER = 0x10,
};
#define CLSCTX_SERVER (CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER)
