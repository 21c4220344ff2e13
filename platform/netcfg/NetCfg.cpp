// The engine itself: a session with its write lock, and the classes of components.

#include <cstring>

#include <objbase.h>

#include "NetCfgObjects.h"
#include "NetCfgStubs.h"

namespace platform {
namespace {

constexpr auto kFailure = static_cast<DWORD>(E_FAIL);

class NetCfg final : public NetCfgObject<ComInterface<NetCfgStub, IID_INetCfg>,
                                         ComInterface<NetCfgLockStub, IID_INetCfgLock>> {
  public:
    NetCfg()
        : NetCfgObject("CoCreateInstance", "INetCfg::QueryInterface",
                       std::make_shared<NetCfgSession>()) {}
    ~NetCfg() override {
        const QuietScope quiet;
        Session()->End();
    }

    HRESULT STDMETHODCALLTYPE Initialize(PVOID) override {
        const Call call("INetCfg::Initialize", nullptr, kFailure);
        return call.Failed() ? call.Result() : Session()->Initialize();
    }
    HRESULT STDMETHODCALLTYPE Uninitialize() override {
        const Call call("INetCfg::Uninitialize", nullptr, kFailure);
        return call.Failed() ? call.Result() : Session()->Uninitialize();
    }
    HRESULT STDMETHODCALLTYPE Apply() override {
        const Call call("INetCfg::Apply", nullptr, kFailure);
        const HRESULT begun = BeginChange(call);
        return begun != S_OK ? begun : Session()->Apply();
    }
    HRESULT STDMETHODCALLTYPE EnumComponents(const GUID* classGuid,
                                             IEnumNetCfgComponent** components) override {
        const Call call("INetCfg::EnumComponents", nullptr, kFailure);
        const HRESULT begun = BeginUse(call, components);
        if (begun != S_OK) return begun;
        if (classGuid == nullptr) return E_POINTER;
        *components =
            EnumerateComponents(call.Name(), Session(), Session()->Components(*classGuid));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE FindComponent(LPCWSTR id, INetCfgComponent** component) override {
        const Call call("INetCfg::FindComponent", id, kFailure);
        const HRESULT begun = BeginUse(call, component);
        if (begun != S_OK) return begun;
        if (id == nullptr) return E_POINTER;
        NetComponentPtr found = Session()->Find(id);
        if (!found) return S_FALSE;
        *component = CreateComponent(call.Name(), Session(), std::move(found));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryNetCfgClass(const GUID* classGuid, REFIID id,
                                               void** object) override {
        const Call call("INetCfg::QueryNetCfgClass", nullptr, kFailure);
        const HRESULT begun = BeginUse(call, object);
        if (begun != S_OK) return begun;
        if (classGuid == nullptr) return E_POINTER;
        return CreateClass(call.Name(), Session(), *classGuid, id, object);
    }

    HRESULT STDMETHODCALLTYPE AcquireWriteLock(DWORD timeout, LPCWSTR client,
                                               LPWSTR* holder) override {
        const Call call("INetCfgLock::AcquireWriteLock", nullptr, kFailure);
        if (holder != nullptr) *holder = nullptr;
        if (call.Failed()) return call.Result();
        NetText name;
        const HRESULT result = Session()->AcquireLock(call.Name(), client, timeout, name);
        if (result != S_FALSE || holder == nullptr) return result;
        const HRESULT given = GiveTaskText(name, holder);
        return given != S_OK ? given : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE ReleaseWriteLock() override {
        const Call call("INetCfgLock::ReleaseWriteLock", nullptr, kFailure);
        if (call.Failed()) return call.Result();
        Session()->ReleaseLock();
        return S_OK;
    }
};

class NetCfgClass final
    : public NetCfgObject<
          ComInterface<NetCfgClassStub, IID_INetCfgClass>,
          ComInterface<NetCfgClassSetupStub, IID_INetCfgClassSetup2, IID_INetCfgClassSetup>> {
  public:
    NetCfgClass(const char* call, const NetCfgSessionPtr& session, const GUID& classGuid)
        : NetCfgObject(call, "INetCfgClass::QueryInterface", session), m_classGuid(classGuid) {}

    HRESULT STDMETHODCALLTYPE EnumComponents(IEnumNetCfgComponent** components) override {
        const Call call("INetCfgClass::EnumComponents", nullptr, kFailure);
        const HRESULT begun = BeginUse(call, components);
        if (begun != S_OK) return begun;
        *components =
            EnumerateComponents(call.Name(), Session(), Session()->Components(m_classGuid));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Install(LPCWSTR id, OBO_TOKEN*, DWORD, DWORD, LPCWSTR, LPCWSTR,
                                      INetCfgComponent** component) override {
        const Call call("INetCfgClassSetup::Install", id, kFailure);
        if (component != nullptr) *component = nullptr;
        const HRESULT begun = BeginChange(call);
        if (begun != S_OK) return begun;
        if (id == nullptr) return E_POINTER;
        NetComponentPtr made;
        const HRESULT result = Session()->Install(m_classGuid, id, made);
        if (result == S_OK && component != nullptr)
            *component = CreateComponent(call.Name(), Session(), std::move(made));
        return result;
    }
    HRESULT STDMETHODCALLTYPE DeInstall(INetCfgComponent* component, OBO_TOKEN*,
                                        LPWSTR* references) override {
        const Call call("INetCfgClassSetup::DeInstall", nullptr, kFailure);
        if (references != nullptr) *references = nullptr;
        const HRESULT begun = BeginChange(call);
        if (begun != S_OK) return begun;
        if (component == nullptr) return E_POINTER;
        const NetComponentPtr removed = ComponentOf(component);
        if (!removed || removed->classGuid != m_classGuid) return E_INVALIDARG;
        return Session()->DeInstall(removed);
    }

  private:
    const GUID m_classGuid;
};

}  // namespace

HRESULT CreateNetCfg(REFIID id, void** object) {
    return HandOut(new NetCfg, id, object);
}

HRESULT CreateClass(const char* call, const NetCfgSessionPtr& session, const GUID& classGuid,
                    REFIID id, void** object) {
    return HandOut(new NetCfgClass(call, session, classGuid), id, object);
}

HRESULT GiveTaskText(const NetText& text, LPWSTR* given) {
    const std::size_t bytes = (text.size() + 1) * sizeof(WCHAR);
    *given = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
    if (*given == nullptr) return E_OUTOFMEMORY;
    std::memcpy(*given, text.c_str(), bytes);
    return S_OK;
}

}  // namespace platform
