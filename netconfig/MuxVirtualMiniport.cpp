#include "MuxVirtualMiniport.h"

#include "DeviceIds.h"
#include "MuxRegistry.h"

HRESULT CMuxVirtualMiniport::Install() {
    ScopedReference<INetCfgClassSetup> setup;
    HRESULT result = m_netCfg.QueryClassSetup(setup);
    if (result != S_OK) return result;
    ScopedReference<INetCfgComponent> component;
    result = setup->Install(kMuxMiniportId, nullptr, 0, 0, nullptr, nullptr, component.Receive());
    if (FAILED(result)) return result;
    if (!component) return E_UNEXPECTED;
    // The component has no GUID before it is applied.
    result = m_netCfg.Apply();
    if (result == S_OK) result = component->GetInstanceGuid(&m_guid);
    if (result == S_OK) result = ConfigureComponent(*component.Get());
    if (result != S_OK) (void)setup->DeInstall(component.Get(), nullptr, nullptr);
    return result;
}

HRESULT CMuxVirtualMiniport::ConfigureComponent(INetCfgComponent& /*component*/) {
    return S_OK;
}

HRESULT CMuxVirtualMiniport::DeInstall() {
    ScopedReference<INetCfgClassSetup> setup;
    HRESULT result = m_netCfg.QueryClassSetup(setup);
    if (result != S_OK) return result;
    ScopedReference<INetCfgComponent> component;
    result = m_netCfg.HrFindInstance(m_guid, component);
    if (result != S_OK) return result;
    result = setup->DeInstall(component.Get(), nullptr, nullptr);
    if (SUCCEEDED(result)) m_netCfg.Forget(m_guid);
    return result;
}

HRESULT CMuxVirtualMiniport::ApplyRegistryChanges(DWORD action, REFGUID lowerGuid) {
    if (action != ConfigActionAdd && action != ConfigActionRemove) return S_OK;
    RegistryKey entry;
    const LONG error = CreateMuxEntry(lowerGuid, entry);
    if (error != ERROR_SUCCESS) return ToResult(error);
    const auto deviceName = MakeDeviceName(GuidString(m_guid).Get());
    if (!deviceName) return ToResult(ERROR_NOT_ENOUGH_MEMORY);
    return ToResult(action == ConfigActionAdd ? HrPrependUpperBinding(entry, deviceName.get())
                                              : HrRemoveUpperBinding(entry, deviceName.get()));
}

bool CMuxVirtualMiniport::IsVlan(LPCWSTR /*vlanName*/, LPCWSTR /*vlanId*/) const {
    return false;
}
