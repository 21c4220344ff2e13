#pragma once
// Automation: counted strings, variants and the dispatch interface.

#include <objbase.h>

// A counted string is preceded by its length in bytes and followed by a terminator.
BSTR WINAPI SysAllocString(const OLECHAR* text);
// text may be null: the characters are then left as they are.
BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length);
void WINAPI SysFreeString(BSTR text);
UINT WINAPI SysStringLen(BSTR text);
UINT WINAPI SysStringByteLen(BSTR text);

#define VARCMP_LT 0
#define VARCMP_EQ 1
#define VARCMP_GT 2
#define VARCMP_NULL 3
HRESULT WINAPI VarBstrCmp(BSTR left, BSTR right, LCID locale, ULONG flags);

struct ITypeInfo;
struct DISPPARAMS;
struct EXCEPINFO;
struct VARIANT;

extern const IID IID_IDispatch;

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count,
                                                    LCID locale, DISPID* ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID locale, WORD flags,
                                             DISPPARAMS* parameters, VARIANT* result,
                                             EXCEPINFO* exception, UINT* badArgument) = 0;

  protected:
    ~IDispatch() = default;
};

struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONG lVal;
        SCODE scode;
        VARIANT_BOOL boolVal;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        struct {
            PVOID pvRecord;
            PVOID pRecInfo;
        };
    };
};
using VARIANTARG = VARIANT;
static_assert(sizeof(VARIANT) == 24);

#define DISP_E_BADVARTYPE (static_cast<HRESULT>(0x80020008))

void WINAPI VariantInit(VARIANTARG* variant);
// Frees what the variant holds and makes it VT_EMPTY.
HRESULT WINAPI VariantClear(VARIANTARG* variant);
