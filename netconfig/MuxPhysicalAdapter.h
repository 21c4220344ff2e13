#pragma once
// A lower object: a physical adapter, or a team as what VLANs are made over. Owns the miniports
// over it. Lives as long as one configuration session, whose components must live longer. Results
// are HRESULTs.

#include <windows.h>

#include "List.h"
#include "MuxTeamMiniport.h"
#include "MuxVirtualMiniport.h"

// A lower object carries so many virtual miniports at most.
inline constexpr DWORD kMostMiniports = 4095;

class CMuxPhysicalAdapter {
  public:
    CMuxPhysicalAdapter(NetworkComponents& netCfg, REFGUID guid)
        : m_adapterGuid(guid), m_netCfg(netCfg) {}
    CMuxPhysicalAdapter(const CMuxPhysicalAdapter&) = delete;
    CMuxPhysicalAdapter& operator=(const CMuxPhysicalAdapter&) = delete;
    virtual ~CMuxPhysicalAdapter();

    // Fills the miniports and the team from the adapter's entry in the MUX tree. 0x80070002 when it
    // has no entry, or carries nothing, or is in no team: no failure, and the miniports are there.
    HRESULT LoadConfiguration();
    // Writes the removals to the tree. ConfigActionRemove, after RemoveAllMiniports: the adapter's
    // entry goes too. S_OK.
    HRESULT ApplyRegistryChanges(DWORD action);
    // Removes the component of one miniport (null: of the first), whose removal from the tree is
    // pending then. 0x80070490 when there is no such miniport, else the result of its DeInstall.
    HRESULT RemoveMiniport(const GUID* guid);
    void RemoveAllMiniports();
    // S_OK when a VLAN of these values may be added, else E_FAIL.
    HRESULT CheckVlanParameters(LPCWSTR vlanId, LPCWSTR vlanName, LPCWSTR priority) const;
    // Whether the component of this GUID is a team's.
    bool IsTeamMiniport() const;

    DWORD MiniportCount() const { return m_miniports.Count(); }
    // The team that the adapter is a member of; null if none. One of the miniports.
    CMuxTeamMiniport* Team() const { return m_team; }

  private:
    using Miniports = List<CMuxVirtualMiniport*, GUID>;

    void AddEntry(LPCWSTR deviceName, LPCWSTR teamDeviceName);
    static void DeleteAll(Miniports& miniports);

    GUID m_adapterGuid;
    NetworkComponents& m_netCfg;
    Miniports m_miniports;
    Miniports m_miniportsToRemove;
    CMuxTeamMiniport* m_team = nullptr;
};
