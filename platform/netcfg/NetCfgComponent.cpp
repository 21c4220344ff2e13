// Components, as the engine gives them out.

#include <algorithm>

#include "ComponentDevice.h"
#include "Facts.h"
#include "NetCfgEnumerator.h"
#include "NetCfgStubs.h"

namespace platform {
namespace {

constexpr auto kComponentFailure = static_cast<DWORD>(E_FAIL);

class NetCfgComponent final
    : public NetCfgObject<ComInterface<NetCfgComponentStub, IID_INetCfgComponent>,
                          ComInterface<NetCfgBindingsStub, IID_INetCfgComponentBindings>> {
  public:
    NetCfgComponent(const char* call, const NetCfgSessionPtr& session, NetComponentPtr component)
        : NetCfgObject(call, "INetCfgComponent::QueryInterface", session),
          m_component(std::move(component)) {}

    const NetComponentPtr& Component() const { return m_component; }

    HRESULT STDMETHODCALLTYPE GetDisplayName(LPWSTR* name) override {
        const Call call("INetCfgComponent::GetDisplayName", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, name);
        if (begun != S_OK) return begun;
        const auto device = DeviceKeyOf(*m_component);
        if (!device) return NETCFG_E_ADAPTER_NOT_FOUND;
        const auto found = DeviceName(*device);
        return found ? GiveTaskText(*found, name) : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    }
    HRESULT STDMETHODCALLTYPE SetDisplayName(LPCWSTR name) override {
        const Call call("INetCfgComponent::SetDisplayName", nullptr, kComponentFailure);
        const HRESULT begun = BeginChange(call);
        if (begun != S_OK) return begun;
        if (name == nullptr) return E_POINTER;
        const auto device = DeviceKeyOf(*m_component);
        if (!device) return NETCFG_E_ADAPTER_NOT_FOUND;
        return WriteMachineText(*device, TEXT("FriendlyName"), name) ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override {
        const Call call("INetCfgComponent::GetId", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, id);
        return begun != S_OK ? begun : GiveTaskText(m_component->id, id);
    }
    HRESULT STDMETHODCALLTYPE GetInstanceGuid(GUID* guid) override {
        const Call call("INetCfgComponent::GetInstanceGuid", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, guid);
        if (begun != S_OK) return begun;
        if (!m_component->IsInstalled()) return NETCFG_E_ADAPTER_NOT_FOUND;
        *guid = m_component->guid;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPnpDevNodeId(LPWSTR* nodeId) override {
        const Call call("INetCfgComponent::GetPnpDevNodeId", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, nodeId);
        if (begun != S_OK) return begun;
        const NetText found = DeviceIdOf(*m_component);
        return found.empty() ? NETCFG_E_ADAPTER_NOT_FOUND : GiveTaskText(found, nodeId);
    }
    HRESULT STDMETHODCALLTYPE GetClassGuid(GUID* guid) override {
        const Call call("INetCfgComponent::GetClassGuid", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, guid);
        if (begun == S_OK) *guid = m_component->classGuid;
        return begun;
    }
    HRESULT STDMETHODCALLTYPE GetBindName(LPWSTR* name) override {
        const Call call("INetCfgComponent::GetBindName", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, name);
        if (begun != S_OK) return begun;
        if (!m_component->IsInstalled()) return NETCFG_E_ADAPTER_NOT_FOUND;
        return GiveTaskText(NetGuidText(m_component->guid), name);
    }
    HRESULT STDMETHODCALLTYPE GetDeviceStatus(ULONG* status) override {
        const Call call("INetCfgComponent::GetDeviceStatus", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, status);
        if (begun != S_OK) return begun;
        return DeviceKeyOf(*m_component) ? S_OK : NETCFG_E_ADAPTER_NOT_FOUND;
    }
    HRESULT STDMETHODCALLTYPE OpenParamKey(HKEY* key) override {
        const Call call("INetCfgComponent::OpenParamKey", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, key);
        if (begun != S_OK) return begun;
        if (!m_component->IsInstalled()) return NETCFG_E_ADAPTER_NOT_FOUND;
        const LSTATUS status =
            RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_component->key.c_str(), 0, KEY_ALL_ACCESS, key);
        return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    }

    HRESULT STDMETHODCALLTYPE EnumBindingPaths(DWORD flags,
                                               IEnumNetCfgBindingPath** paths) override {
        const Call call("INetCfgComponentBindings::EnumBindingPaths", nullptr, kComponentFailure);
        const HRESULT begun = BeginUse(call, paths);
        if (begun != S_OK) return begun;
        if (flags != EBP_ABOVE) return E_NOTIMPL;
        if (!m_component->IsInstalled()) return NETCFG_E_ADAPTER_NOT_FOUND;
        *paths = EnumeratePaths(call.Name(), Session(), Session()->PathsAbove(*m_component));
        return S_OK;
    }

  private:
    const NetComponentPtr m_component;
};

struct ComponentKind {
    using Enum = IEnumNetCfgComponent;
    using Item = INetCfgComponent;
    using Source = NetComponentPtr;
    static constexpr const IID& id = IID_IEnumNetCfgComponent;
    static constexpr const char* query = "IEnumNetCfgComponent::QueryInterface";
    static constexpr const char* next = "IEnumNetCfgComponent::Next";
    static constexpr const char* reset = "IEnumNetCfgComponent::Reset";
    static Item* Make(const char* call, const NetCfgSessionPtr& session, const Source& source) {
        return CreateComponent(call, session, source);
    }
};

}  // namespace

INetCfgComponent* CreateComponent(const char* call, const NetCfgSessionPtr& session,
                                  NetComponentPtr component) {
    return new NetCfgComponent(call, session, std::move(component));
}

IEnumNetCfgComponent* EnumerateComponents(const char* call, const NetCfgSessionPtr& session,
                                          std::vector<NetComponentPtr> components) {
    return new NetCfgEnumerator<ComponentKind>(call, session, std::move(components));
}

NetComponentPtr ComponentOf(INetCfgComponent* object) {
    const auto* const component = dynamic_cast<NetCfgComponent*>(object);
    return component != nullptr ? component->Component() : nullptr;
}

}  // namespace platform
