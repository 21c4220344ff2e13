#pragma once
// The changes of teams and VLANs. Each runs in a configuration session of its own, which holds the
// engine's write lock, and may take minutes. The calling thread has COM initialised.
//
// GUIDs are texts of 38 characters in braces. Results are HRESULTs: NETCFG_E_NO_WRITE_LOCK when
// another program holds the lock. Each failure also prints a diagnostic line; nothing is shown.

#include <windows.h>

// Characters of a buffer that receives the GUID of a new VLAN or team.
inline constexpr int kNewGuidCapacity = 64;

// The protocol of a team and of the adapters that fit into it, as the MUX tree stores it.
enum L2Protocol : DWORD {
    eL2_PROTOCOL_ETHERNET = 0,
    eL2_PROTOCOL_IPOIB = 1,
    eL2_PROTOCOL_INVALID = 2,  // for DeleteTeam and RemoveAllVlans: either
};

// Adds a VLAN over a physical adapter or team, or removes one. lowerGuid: of the adapter or team.
// vlanGuid: on add receives the new VLAN's GUID (kNewGuidCapacity characters); on removal names the
// VLAN. The three texts are the new VLAN's values; on removal they aren't used.
HRESULT ConfigureVlan(LPCWSTR lowerGuid, LPWSTR vlanGuid, bool add, LPCWSTR vlanId,
                      LPCWSTR vlanName, LPCWSTR priority);

// Adds a physical adapter to a team, or takes it out. On add, setTeamMac gives the team the
// adapter's MAC address, and setPrimary makes the adapter the team's primary.
HRESULT ConfigureTeamMember(bool add, LPCWSTR teamGuid, LPCWSTR adapterGuid, bool setTeamMac,
                            bool setPrimary);

// Makes a team without members. teamGuid receives its GUID (kNewGuidCapacity characters).
// l2Protocol: Ethernet or IPoIB.
HRESULT CreateTeam(LPCWSTR teamName, DWORD teamType, LPWSTR teamGuid, bool fallBackToPrimary,
                   DWORD l2Protocol);

// Removes a team with all VLANs over it, in two sessions. Refuses, with a negative result, a team
// that has members; its VLANs and its entry in the MUX tree are gone then.
HRESULT DeleteTeam(LPCWSTR teamGuid, DWORD l2Protocol);

// Removes all VLANs over a physical adapter or team, for an adapter also its team, and its entry in
// the MUX tree.
HRESULT RemoveAllVlans(LPCWSTR guid, DWORD l2Protocol);
