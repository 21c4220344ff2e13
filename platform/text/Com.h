#pragma once
// What the stand-in's COM objects share. A class that CoCreateInstance gives is a row of the table
// in Com.cpp.

#include <atomic>
#include <string>

#include <oleauto.h>
#include <winerror.h>

#include "Call.h"

namespace platform {

// An object of one interface and those that it extends. Made with one reference, which its maker
// hands out. The ledger holds the object, under the call that made it, until its last reference
// goes; then it deletes itself.
template <class Interface>
class ComObject : public Interface {
  public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (id != IID_IUnknown && !Supports(id)) return E_NOINTERFACE;
        AddRef();
        *object = static_cast<Interface*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            Machine::Current().ledger.Strike(kind, this);
            delete this;
        }
        return left;
    }

  protected:
    explicit ComObject(const char* call) { Machine::Current().ledger.Enter(kind, this, call); }
    virtual ~ComObject() = default;

    // Whether that is one of the object's interfaces besides IUnknown.
    virtual bool Supports(REFIID id) const = 0;

  private:
    static constexpr char kind[] = "COM reference";
    std::atomic<ULONG> m_references{1};
};

// The same for an interface that scripts could call, which nobody does.
template <class Interface>
class DispatchObject : public ComObject<Interface> {
  public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }

  protected:
    using ComObject<Interface>::ComObject;
};

// Hands out the object's first reference as that interface, or gives it up.
template <class Object>
HRESULT HandOut(Object* made, REFIID id, void** object) {
    const HRESULT result = made->QueryInterface(id, object);
    made->Release();
    return result;
}

// The 38 characters of a GUID in braces, in capitals.
std::u16string GuidText(REFGUID guid);

}  // namespace platform
