#pragma once
// The base of all COM interfaces.

#include <wtypes.h>

extern const IID IID_IUnknown;

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

  protected:
    ~IUnknown() = default;
};
using LPUNKNOWN = IUnknown*;
