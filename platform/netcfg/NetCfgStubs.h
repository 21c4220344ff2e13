#pragma once
// The methods of the engine's interfaces that nobody calls: they answer E_NOTIMPL. The engine's
// objects override what is called.

#include <netcfgx.h>
#include <winerror.h>

namespace platform {

class NetCfgStub : public INetCfg {
  public:
    HRESULT STDMETHODCALLTYPE Cancel() override { return E_NOTIMPL; }
};

class NetCfgLockStub : public INetCfgLock {
  public:
    HRESULT STDMETHODCALLTYPE IsWriteLocked(LPWSTR*) override { return E_NOTIMPL; }
};

class NetCfgClassStub : public INetCfgClass {
  public:
    HRESULT STDMETHODCALLTYPE FindComponent(LPCWSTR, INetCfgComponent**) override {
        return E_NOTIMPL;
    }
};

class NetCfgClassSetupStub : public INetCfgClassSetup2 {
  public:
    HRESULT STDMETHODCALLTYPE SelectAndInstall(HWND, OBO_TOKEN*, INetCfgComponent**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UpdateNonEnumeratedComponent(INetCfgComponent*, DWORD,
                                                           DWORD) override {
        return E_NOTIMPL;
    }
};

class NetCfgComponentStub : public INetCfgComponent {
  public:
    HRESULT STDMETHODCALLTYPE GetHelpText(LPWSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCharacteristics(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RaisePropertyUi(HWND, DWORD, IUnknown*) override { return E_NOTIMPL; }
};

class NetCfgBindingsStub : public INetCfgComponentBindings {
  public:
    HRESULT STDMETHODCALLTYPE BindTo(INetCfgComponent*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnbindFrom(INetCfgComponent*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SupportsBindingInterface(DWORD, LPCWSTR) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE IsBoundTo(INetCfgComponent*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsBindableTo(INetCfgComponent*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MoveBefore(INetCfgBindingPath*, INetCfgBindingPath*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE MoveAfter(INetCfgBindingPath*, INetCfgBindingPath*) override {
        return E_NOTIMPL;
    }
};

class NetCfgBindingPathStub : public INetCfgBindingPath {
  public:
    HRESULT STDMETHODCALLTYPE IsSamePathAs(INetCfgBindingPath*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsSubPathOf(INetCfgBindingPath*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetOwner(INetCfgComponent**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDepth(ULONG*) override { return E_NOTIMPL; }
};

class NetCfgBindingInterfaceStub : public INetCfgBindingInterface {
  public:
    HRESULT STDMETHODCALLTYPE GetName(LPWSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetLowerComponent(INetCfgComponent**) override { return E_NOTIMPL; }
};

}  // namespace platform
