#pragma once
// A team: a virtual miniport over its member adapters.

#include "ConfigurationOperations.h"
#include "List.h"
#include "MuxVirtualMiniport.h"
#include "RegistryKey.h"

inline constexpr size_t kMacLength = 6;  // bytes

class CMuxTeamMiniport : public CMuxVirtualMiniport {
  public:
    // guid: null for a new team, and for one that LoadConfiguration finds by its name. teamName:
    // may be null; cut to 99 characters.
    CMuxTeamMiniport(NetworkComponents& netCfg, const GUID* guid, LPCWSTR teamName, DWORD teamType,
                     BYTE fallBackToPrimary, DWORD l2Protocol);

    // S_OK also when the tree has no entry of the team: then the object keeps its protocol, and
    // still finds the members. kNoSuchTeam when no team has the name; E_FAIL when a value that a
    // team must have can't be read; 0x80070002 without a tree.
    HRESULT LoadConfiguration() override;
    HRESULT ConfigureComponent(INetCfgComponent& component) override;
    // Removes the entry of the team too.
    HRESULT DeInstall() override;
    // Makes the adapter a member, or takes it out, its whole entry with it. The primary adapter and
    // the MAC address are settled before; on removal the primary is cleared after it.
    HRESULT ApplyRegistryChanges(DWORD action, REFGUID adapterGuid) override;

    HRESULT AddAdapter(REFGUID guid) { return m_adapters.Insert(guid, guid); }
    HRESULT RemoveAdapter(REFGUID guid) { return m_adapters.Remove(guid); }
    DWORD AdapterCount() const { return m_adapters.Count(); }

    void SetPrimaryAdapter(REFGUID guid);
    bool HasPrimaryAdapter() const { return m_hasPrimaryAdapter; }
    bool IsPrimaryAdapter(REFGUID guid) const;
    void ClearPrimaryAdapter();

    void SetMacAddress(const BYTE (&mac)[kMacLength]);
    bool HasMacAddress() const { return m_hasMacAddress; }
    bool IsMacAddress(const BYTE (&mac)[kMacLength]) const;
    void ClearMacAddress();

    DWORD Protocol() const { return m_L2Protocol; }

    // No team of that name: the name is free.
    static constexpr HRESULT kNoSuchTeam = static_cast<HRESULT>(0x80070037);

  private:
    HRESULT FindByName();
    HRESULT ReadEntry(const RegistryKey& entry);
    void AddIfMember(const RegistryKey& entry, REFGUID adapterGuid);

    WCHAR m_teamName[kMiniportText] = {};
    DWORD m_teamType;
    List<GUID, GUID> m_adapters;
    GUID m_primaryAdapter = {};
    bool m_hasPrimaryAdapter = false;
    DWORD m_fallBackToPrimary;
    DWORD m_L2Protocol;
    bool m_hasMacAddress = false;
    BYTE m_macAddress[kMacLength] = {};
};
