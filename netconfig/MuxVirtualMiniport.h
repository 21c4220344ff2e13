#pragma once
// A virtual miniport, as long as one configuration session: its network component, and its entries
// in the MUX tree. Works on the session's components, which must live longer; the session holds the
// write lock. Results are HRESULTs.

#include <windows.h>
#include <netcfgx.h>

#include "NetworkComponents.h"

// What ApplyRegistryChanges does.
enum ConfigAction : DWORD {
    ConfigActionNone = 0,
    ConfigActionAdd = 2,
    ConfigActionRemove = 3,
};

inline constexpr size_t kMiniportText = 100;  // characters of a field, with terminator

class CMuxVirtualMiniport {
  public:
    // guid: null for a new miniport, whose GUID is zero until it is installed.
    CMuxVirtualMiniport(NetworkComponents& netCfg, const GUID* guid)
        : m_netCfg(netCfg), m_guid(guid ? *guid : GUID{}) {}
    CMuxVirtualMiniport(const CMuxVirtualMiniport&) = delete;
    CMuxVirtualMiniport& operator=(const CMuxVirtualMiniport&) = delete;
    virtual ~CMuxVirtualMiniport() = default;

    // Fills the object from the registry.
    virtual HRESULT LoadConfiguration() { return S_OK; }
    // Makes the network component. Any result but S_OK, NETCFG_S_REBOOT too, means that it was
    // taken out again.
    virtual HRESULT Install();
    // Gives the new component its name and values.
    virtual HRESULT ConfigureComponent(INetCfgComponent& component);
    // Removes the component. S_FALSE when there is none.
    virtual HRESULT DeInstall();
    // Adds the miniport to the entry of a lower object in the MUX tree, or removes it.
    virtual HRESULT ApplyRegistryChanges(DWORD action, REFGUID lowerGuid);
    // Whether it is a VLAN of that name or id, compared without regard to case.
    virtual bool IsVlan(LPCWSTR vlanName, LPCWSTR vlanId) const;

    REFGUID Guid() const { return m_guid; }

  protected:
    NetworkComponents& m_netCfg;
    GUID m_guid;
};
