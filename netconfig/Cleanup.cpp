#include "Cleanup.h"

#include <memory>
#include <new>

#include "AdapterBindings.h"
#include "ConfigurationOperations.h"
#include "DeviceIds.h"
#include "Failure.h"
#include "LowerObject.h"
#include "MuxPhysicalAdapter.h"
#include "MuxRegistry.h"
#include "NetworkSession.h"

namespace {

// A team is above an adapter and nothing above a team, but the tree can say anything.
constexpr int kMostLevels = 8;

// An object whose cleanup has begun, and the one whose team it is.
struct CleanupLevel {
    GUID guid;
    const CleanupLevel* below;
    int depth;

    bool Contains(REFGUID other) const {
        for (const CleanupLevel* level = this; level; level = level->below)
            if (IsEqualGUID(level->guid, other)) return true;
        return false;
    }
};

HRESULT CleanLevel(const CleanupLevel& level, NetworkComponents& netCfg, DWORD l2Protocol);

// Cleans up the team of an object. A team that is gone, or whose cleanup has begun, is no failure.
HRESULT CleanTeam(REFGUID team, const CleanupLevel& member, NetworkComponents& netCfg,
                  DWORD l2Protocol) {
    HRESULT result = NETCFG_E_ADAPTER_NOT_FOUND;
    if (member.depth == kMostLevels)
        result = kRefused;
    else if (!member.Contains(team))
        result = CleanLevel({team, &member, member.depth + 1}, netCfg, l2Protocol);
    if (result == NETCFG_E_ADAPTER_NOT_FOUND) {
        PrintDiagnostic("Illegal instance was of team handled by a previous adapter\n");
        PrintDiagnostic("Allowing use case\n");
    } else if (FAILED(result)) {
        return Stop(result, "Team recursive Cleanup failed. hr = 0x%x\n", Code(result));
    }
    return S_OK;
}

HRESULT CleanObject(const CleanupLevel& level, NetworkComponents& netCfg, DWORD l2Protocol) {
    LowerObject found;
    HRESULT result = FindLowerObject(netCfg, level.guid, found);
    if (result != S_OK) return result;
    const LPCWSTR id = found.id.Get();
    const bool isPhysical = IsPhysicalAdapter(id, l2Protocol);
    if (!isPhysical && !IsMuxMiniport(id))
        return Stop(kRefused, "Non-supported adapter device ID: %S\n", id);
    const std::unique_ptr<CMuxPhysicalAdapter> lower(new (std::nothrow)
                                                         CMuxPhysicalAdapter(netCfg, level.guid));
    if (!lower) return Stop(kRefused, "new CMuxPhysicalAdapter failed\n");
    result = LoadLowerObject(*lower);
    if (result != S_OK) return result;
    if (const CMuxTeamMiniport* const team = lower->Team()) {
        result = CleanTeam(team->Guid(), level, netCfg, l2Protocol);
        if (result != S_OK) return result;
    }
    lower->RemoveAllMiniports();
    (void)lower->ApplyRegistryChanges(ConfigActionRemove);
    if (isPhysical) SetAdapterBindings(*found.component.Get(), true);
    return S_OK;
}

HRESULT CleanLevel(const CleanupLevel& level, NetworkComponents& netCfg, DWORD l2Protocol) {
    const HRESULT result = CleanObject(level, netCfg, l2Protocol);
    (void)netCfg.Apply();
    return result;
}

}  // namespace

HRESULT RecursiveCleanup(REFGUID guid, NetworkComponents& netCfg, DWORD l2Protocol) {
    return CleanLevel({guid, nullptr, 1}, netCfg, l2Protocol);
}

HRESULT RemoveAllVlans(LPCWSTR guid, DWORD l2Protocol) {
    NetworkSession session(kConfigurationSession);
    const HRESULT result = OpenConfigurationSession(session);
    if (result != S_OK) return result;
    return RecursiveCleanup(ParseGuid(guid), session.Components(), l2Protocol);
}
