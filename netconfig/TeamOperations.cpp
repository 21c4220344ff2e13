#include <memory>
#include <new>

#include "AdapterBindings.h"
#include "AdapterMacAddress.h"
#include "ConfigurationOperations.h"
#include "DeviceIds.h"
#include "Failure.h"
#include "LowerObject.h"
#include "MuxPhysicalAdapter.h"
#include "MuxTeamMiniport.h"
#include "MuxRegistry.h"
#include "NetworkSession.h"
#include "NewMiniport.h"

namespace {

constexpr BYTE kFallsBack = 1;

// A team of that GUID, of which nothing else is known; null when memory runs out.
std::unique_ptr<CMuxTeamMiniport> NewTeam(NetworkComponents& netCfg, REFGUID guid,
                                          DWORD l2Protocol) {
    std::unique_ptr<CMuxTeamMiniport> team(
        new (std::nothrow) CMuxTeamMiniport(netCfg, &guid, nullptr, 0, kFallsBack, l2Protocol));
    if (!team) PrintDiagnostic("new CMuxTeamMiniport failed\n");
    return team;
}

// Finds the team's component and loads the team, whose protocol is known then.
HRESULT LoadTeam(NetworkComponents& netCfg, CMuxTeamMiniport& team, LPCWSTR teamGuid) {
    ScopedReference<INetCfgComponent> component;
    HRESULT result = netCfg.HrFindInstance(team.Guid(), component);
    if (FAILED(result))
        return Stop(result, "HrFindInstance for team failed. hr = 0x%x guid=%ls\n", Code(result),
                    teamGuid);
    if (!component) return Stop(kNotInTree, "Team %ls not found\n", teamGuid);
    result = team.LoadConfiguration();
    if (FAILED(result) && result != kNotInTree)
        return Stop(result, "pTeamMiniport->LoadConfiguration failed. hr = 0x%x\n", Code(result));
    if (team.Protocol() >= eL2_PROTOCOL_INVALID)
        return Stop(ToResult(ERROR_INVALID_DATA),
                    "Team %ls doesn't exist or misconfigured - team's L2-Protocol couldn't be "
                    "determined. hr = 0x%x\n",
                    teamGuid, Code(result));
    return S_OK;
}

// Finds the adapter's component, which must fit into the team.
HRESULT FindMember(NetworkComponents& netCfg, const CMuxTeamMiniport& team, REFGUID guid,
                   LPCWSTR adapterGuid, ScopedReference<INetCfgComponent>& component) {
    HRESULT result = netCfg.HrFindInstance(guid, component);
    if (FAILED(result))
        return Stop(result, "HrFindInstance for adapter failed. hr = 0x%x guid=%ls\n", Code(result),
                    adapterGuid);
    if (!component)
        return Stop(NETCFG_E_ADAPTER_NOT_FOUND, "Illegal instance found guid=%ls\n", adapterGuid);
    ScopedTaskMemory<WCHAR> id;
    result = component->GetId(id.Receive());
    if (FAILED(result))
        return Stop(result, "Failed to read adapter device ID 0x%X guid=%ls\n", Code(result),
                    adapterGuid);
    if (!id || *id.Get() == TEXT('\0'))
        return Stop(kRefused, "Illegal adapter device ID guid=%ls\n", adapterGuid);
    if (!IsPhysicalAdapter(id.Get(), team.Protocol()))
        return Stop(kRefused, "Adapter incompatible with %s team (adapter-device-ID='%S'\n",
                    ProtocolName(team.Protocol()), id.Get());
    return S_OK;
}

HRESULT ReadMacAddress(REFGUID guid, LPCWSTR adapterGuid, BYTE (&mac)[kMacLength]) {
    DWORD length = sizeof(mac);
    const HRESULT result = GetAdapterMacAddress(&length, mac, guid);
    if (FAILED(result))
        return Stop(result, "Failed to get MAC address of adapter '%S'\n", adapterGuid);
    return S_OK;
}

HRESULT Join(CMuxTeamMiniport& team, const CMuxPhysicalAdapter& adapter, REFGUID guid,
             LPCWSTR adapterGuid, bool setTeamMac, bool setPrimary) {
    // An adapter that carries VLANs, or is in a team, can't join.
    if (adapter.MiniportCount() != 0 || adapter.Team()) return E_INVALIDARG;
    (void)team.AddAdapter(guid);
    if (setPrimary) team.SetPrimaryAdapter(guid);
    BYTE mac[kMacLength] = {};
    if (setTeamMac) {
        const HRESULT result = ReadMacAddress(guid, adapterGuid, mac);
        if (result != S_OK) return result;
        team.SetMacAddress(mac);
    }
    const HRESULT result = team.ApplyRegistryChanges(ConfigActionAdd, guid);
    if (FAILED(result))
        return Stop(result, "ApplyRegistryChanges failed. hr = 0x%x\n", Code(result));
    return S_OK;
}

HRESULT Leave(CMuxTeamMiniport& team, const CMuxPhysicalAdapter& adapter, REFGUID guid,
              LPCWSTR adapterGuid) {
    if (!adapter.Team() || !IsEqualGUID(adapter.Team()->Guid(), team.Guid())) return E_INVALIDARG;
    if (team.HasMacAddress()) {
        BYTE mac[kMacLength] = {};
        const HRESULT result = ReadMacAddress(guid, adapterGuid, mac);
        if (result != S_OK) return result;
        if (team.IsMacAddress(mac)) team.ClearMacAddress();
    }
    (void)team.RemoveAdapter(guid);
    const HRESULT result = team.ApplyRegistryChanges(ConfigActionRemove, guid);
    if (FAILED(result))
        return Stop(result, "pTeamMiniport->ApplyRegistryChanges failed. hr = 0x%x\n",
                    Code(result));
    if (team.IsPrimaryAdapter(guid)) team.ClearPrimaryAdapter();
    return S_OK;
}

}  // namespace

HRESULT ConfigureTeamMember(bool add, LPCWSTR teamGuid, LPCWSTR adapterGuid, bool setTeamMac,
                            bool setPrimary) {
    NetworkSession session(kConfigurationSession);
    HRESULT result = OpenConfigurationSession(session);
    if (result != S_OK) return result;
    NetworkComponents& netCfg = session.Components();
    GUID guid = {};
    result = CLSIDFromString(adapterGuid, &guid);
    if (FAILED(result)) return Stop(result, "Invalid adapter GUID '%S'\n", adapterGuid);
    GUID guidOfTeam = {};
    result = CLSIDFromString(teamGuid, &guidOfTeam);
    if (FAILED(result)) return Stop(result, "Cannot parse team GUID. hr = 0x%x\n", Code(result));

    const auto team = NewTeam(netCfg, guidOfTeam, eL2_PROTOCOL_INVALID);
    if (!team) return kRefused;
    result = LoadTeam(netCfg, *team, teamGuid);
    if (result != S_OK) return result;
    result = CLSIDFromString(adapterGuid, &guid);
    if (FAILED(result)) return Stop(result, "Cannot parse adapter GUID. hr = 0x%x\n", Code(result));
    ScopedReference<INetCfgComponent> component;
    result = FindMember(netCfg, *team, guid, adapterGuid, component);
    if (result != S_OK) return result;
    if (add && setPrimary && team->HasPrimaryAdapter() && !team->IsPrimaryAdapter(guid))
        return Stop(kRefused, "Primary adapter for the team already defined\n");

    const std::unique_ptr<CMuxPhysicalAdapter> adapter(new (std::nothrow)
                                                           CMuxPhysicalAdapter(netCfg, guid));
    if (!adapter) return Stop(kRefused, "new CMuxPhysicalAdapter failed\n");
    result = LoadLowerObject(*adapter);
    if (result != S_OK) return result;
    result = add ? Join(*team, *adapter, guid, adapterGuid, setTeamMac, setPrimary)
                 : Leave(*team, *adapter, guid, adapterGuid);
    if (result == S_OK) SetAdapterBindings(*component.Get(), !add);
    return result;
}

HRESULT CreateTeam(LPCWSTR teamName, DWORD teamType, LPWSTR teamGuid, bool fallBackToPrimary,
                   DWORD l2Protocol) {
    NetworkSession session(kConfigurationSession);
    const HRESULT result = OpenConfigurationSession(session);
    if (result != S_OK) return result;
    const std::unique_ptr<CMuxTeamMiniport> team(new (std::nothrow) CMuxTeamMiniport(
        session.Components(), nullptr, teamName, teamType, fallBackToPrimary ? 1 : 0, l2Protocol));
    if (!team) return Stop(kRefused, "new CMuxTeamMiniport failed\n");
    if (team->LoadConfiguration() != CMuxTeamMiniport::kNoSuchTeam)
        return Stop(kRefused, "Team named %S already exists\n", teamName);
    return InstallMiniport(
        *team, teamGuid, "pTeamMiniport->Install failed. hr = 0x%x\n",
        "Team created with Guid = %08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X\n");
}

HRESULT DeleteTeam(LPCWSTR teamGuid, DWORD l2Protocol) {
    HRESULT result = RemoveAllVlans(teamGuid, l2Protocol);
    if (FAILED(result)) return Stop(result, "Removing all vlans failed. hr = 0x%x\n", Code(result));
    NetworkSession session(kConfigurationSession);
    result = OpenConfigurationSession(session);
    if (result != S_OK) return result;
    GUID guid = {};
    result = CLSIDFromString(teamGuid, &guid);
    if (result != S_OK)
        return Stop(result, "Invalid team GUID.hr= 0x%x, guid=%ls\n", Code(result), teamGuid);
    const auto team = NewTeam(session.Components(), guid, l2Protocol);
    if (!team) return kRefused;
    // The team's entry is gone, so this finds the members alone.
    result = team->LoadConfiguration();
    if (FAILED(result) && result != kNotInTree)
        return Stop(result, "pTeamMiniport->LoadConfiguration failed. hr = 0x%x\n", Code(result));
    if (team->AdapterCount() != 0)
        return Stop(E_INVALIDARG,
                    "Cannot delete team. Team contains adapters. Remove all adapters before "
                    "deleting\n");
    result = team->DeInstall();
    return FAILED(result) || result == S_OK ? result : kRefused;
}
