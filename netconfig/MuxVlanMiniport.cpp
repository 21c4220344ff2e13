#include "MuxVlanMiniport.h"

#include "MuxRegistry.h"

#include <strsafe.h>

namespace {

constexpr WCHAR kVlanId[] = TEXT("VlanID");
constexpr WCHAR kVlanName[] = TEXT("VlanName");
constexpr WCHAR kPriority[] = TEXT("Priority");

}  // namespace

CMuxVlanMiniport::CMuxVlanMiniport(NetworkComponents& netCfg, const GUID* guid, REFGUID lowerGuid,
                                   LPCWSTR vlanId, LPCWSTR vlanName, LPCWSTR priority)
    : CMuxVirtualMiniport(netCfg, guid), m_lowerGuid(lowerGuid) {
    if (!vlanId || !vlanName || !priority) return;
    (void)StringCchCopyW(m_vlanId, ARRAYSIZE(m_vlanId), vlanId);
    (void)StringCchCopyW(m_vlanName, ARRAYSIZE(m_vlanName), vlanName);
    (void)StringCchCopyW(m_vlanPriority, ARRAYSIZE(m_vlanPriority), priority);
}

HRESULT CMuxVlanMiniport::LoadConfiguration() {
    ScopedReference<INetCfgComponent> component;
    HRESULT result = m_netCfg.HrFindInstance(m_guid, component);
    if (result != S_OK) return result;
    RegistryKey key;
    result = component->OpenParamKey(key.Receive());
    if (result != S_OK) return result;
    LONG error = key.ReadText(kVlanId, m_vlanId);
    if (error == ERROR_SUCCESS) error = key.ReadText(kVlanName, m_vlanName);
    if (error == ERROR_SUCCESS) error = key.ReadText(kPriority, m_vlanPriority);
    return ToResult(error);
}

HRESULT CMuxVlanMiniport::ConfigureComponent(INetCfgComponent& component) {
    WCHAR name[kMiniportText];
    (void)StringCchPrintfW(name, ARRAYSIZE(name),
                           TEXT("Corvanta Virtual Miniport Driver - VLAN %s"), m_vlanName);
    HRESULT result = component.SetDisplayName(name);
    if (result != S_OK) return result;
    RegistryKey key;
    result = component.OpenParamKey(key.Receive());
    if (result != S_OK) return result;
    key.WriteBytes(kVlanId, REG_SZ, m_vlanId, sizeof(m_vlanId));
    key.WriteBytes(kVlanName, REG_SZ, m_vlanName, sizeof(m_vlanName));
    key.WriteBytes(kPriority, REG_SZ, m_vlanPriority, sizeof(m_vlanPriority));
    return S_OK;
}

bool CMuxVlanMiniport::IsVlan(LPCWSTR vlanName, LPCWSTR vlanId) const {
    return IsSameText(m_vlanName, vlanName) || IsSameText(m_vlanId, vlanId);
}
