#pragma once
// What the stand-in's COM objects share. A class that CoCreateInstance makes stands with its
// family, which registers it by a ComClass.

#include <atomic>
#include <string>

#include <oleauto.h>
#include <winerror.h>

#include "Call.h"

namespace platform {

// One interface of an object, with the ids under which it is asked for: its own and those of the
// interfaces that it extends, but IUnknown.
template <class Interface, const IID&... ids>
struct ComInterface {
    using Type = Interface;
    static bool Has(REFIID id) { return ((id == ids) || ...); }
};

// An object of several interfaces, each a ComInterface; the first one is its IUnknown, and counts
// where two have the same id. Made with one reference, which its maker hands out (HandOut). Any
// thread. The ledger holds the object, under the call that made it, until its last reference goes;
// then it deletes itself. Each method that counts begins with a Call named "Interface::Method".
template <class First, class... Others>
class ComObject : public First::Type, public Others::Type... {
  public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (id == IID_IUnknown)
            *object = static_cast<typename First::Type*>(this);
        else
            (Give<First>(id, object) || ... || Give<Others>(id, object));
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            const QuietScope quiet;
            Machine::Current().ledger.Strike(kind, this);
            delete this;
        }
        return left;
    }

  protected:
    explicit ComObject(const char* call) { Machine::Current().ledger.Enter(kind, this, call); }
    virtual ~ComObject() = default;

  private:
    static constexpr char kind[] = "COM reference";

    template <class Wanted>
    bool Give(REFIID id, void** object) {
        if (!Wanted::Has(id)) return false;
        *object = static_cast<typename Wanted::Type*>(this);
        return true;
    }

    std::atomic<ULONG> m_references{1};
};

// An interface that scripts could call, which nobody does.
template <class Interface>
class DispatchStub : public Interface {
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
};

// Begins a method with an out-value, which is cleared. S_OK, or what the method returns at once:
// `missing` when there is no place for the value, or the call's fault.
template <class T>
HRESULT BeginOut(const Call& call, T* out, HRESULT missing = E_POINTER) {
    if (out == nullptr) return missing;
    *out = T();
    return call.Failed() ? call.Result() : S_OK;
}

// Hands out the object's first reference as that interface, or gives it up.
template <class Object>
HRESULT HandOut(Object* made, REFIID id, void** object) {
    const HRESULT result = made->QueryInterface(id, object);
    made->Release();
    return result;
}

// Makes a class known to CoCreateInstance, for the whole program: one object at namespace level, in
// the file that defines the interfaces' ids, so that whoever can name them has the class too.
class ComClass {
  public:
    // create: a new object as that interface, with one reference; E_NOINTERFACE.
    ComClass(const CLSID& id, HRESULT (*create)(REFIID id, void** object));
};

// The 38 characters of a GUID in braces, in capitals.
std::u16string GuidText(REFGUID guid);

}  // namespace platform
