#pragma once
// A VLAN: a virtual miniport over an adapter or team.

#include "MuxVirtualMiniport.h"

class CMuxVlanMiniport : public CMuxVirtualMiniport {
  public:
    // guid: null for a new VLAN. The three texts are cut to 99 characters; without all of them,
    // LoadConfiguration reads the VLAN's.
    CMuxVlanMiniport(NetworkComponents& netCfg, const GUID* guid, REFGUID lowerGuid,
                     LPCWSTR vlanId = nullptr, LPCWSTR vlanName = nullptr,
                     LPCWSTR priority = nullptr);

    HRESULT LoadConfiguration() override;
    HRESULT ConfigureComponent(INetCfgComponent& component) override;
    bool IsVlan(LPCWSTR vlanName, LPCWSTR vlanId) const override;

    // The adapter or team that it is made over.
    REFGUID LowerGuid() const { return m_lowerGuid; }

  private:
    WCHAR m_vlanId[kMiniportText] = {};
    WCHAR m_vlanName[kMiniportText] = {};
    WCHAR m_vlanPriority[kMiniportText] = {};
    GUID m_lowerGuid;
};
