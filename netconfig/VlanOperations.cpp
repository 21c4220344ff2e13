#include <memory>
#include <new>

#include "ConfigurationOperations.h"
#include "DeviceIds.h"
#include "Failure.h"
#include "LowerObject.h"
#include "MuxPhysicalAdapter.h"
#include "MuxRegistry.h"
#include "MuxVlanMiniport.h"
#include "NetworkSession.h"
#include "NewMiniport.h"

namespace {

HRESULT AddVlan(NetworkComponents& netCfg, const CMuxPhysicalAdapter& lower, REFGUID lowerGuid,
                LPWSTR vlanGuid, LPCWSTR vlanId, LPCWSTR vlanName, LPCWSTR priority) {
    if (lower.MiniportCount() >= kMostMiniports)
        return HRESULT_FROM_WIN32(ERROR_NO_SYSTEM_RESOURCES);
    HRESULT result = lower.CheckVlanParameters(vlanId, vlanName, priority);
    if (result != S_OK) return Stop(result, "Cannot add VLAN. Error in VLAN parameters\n");
    const std::unique_ptr<CMuxVlanMiniport> vlan(new (std::nothrow) CMuxVlanMiniport(
        netCfg, nullptr, lowerGuid, vlanId, vlanName, priority));
    if (!vlan) return Stop(kRefused, "new CMuxVirtualMiniport failed\n");
    result = InstallMiniport(
        *vlan, vlanGuid, "pMiniport->Install failed. hr = 0x%x\n",
        "Miniport created with Guid = %08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X\n");
    if (result != S_OK) return result;
    result = vlan->ApplyRegistryChanges(ConfigActionAdd, vlan->LowerGuid());
    if (FAILED(result))
        return Stop(result, "ApplyRegistryChanges failed. hr = 0x%x\n", Code(result));
    return S_OK;
}

HRESULT RemoveVlan(CMuxPhysicalAdapter& lower, LPCWSTR vlanGuid) {
    const GUID guid = ParseGuid(vlanGuid);
    if (lower.MiniportCount() == 0) return Stop(E_INVALIDARG, "There is no adapter to remove\n");
    if (IsEqualGUID(guid, lower.Team() ? lower.Team()->Guid() : GUID{}))
        return Stop(HRESULT_FROM_WIN32(ERROR_BAD_COMMAND),
                    "Trying to remove team, not VLAN. Use \"remove team\" cmd line option\n");
    const HRESULT result = lower.RemoveMiniport(&guid);
    if (result != S_OK)
        return Stop(result, "pMuxPhysicalAdapter->RemoveMiniport failed. hr = 0x%x\n",
                    Code(result));
    PrintDiagnostic("pMuxPhysicalAdapter->RemoveMiniport succeeded\n");
    return lower.ApplyRegistryChanges(ConfigActionNone);
}

}  // namespace

HRESULT ConfigureVlan(LPCWSTR lowerGuid, LPWSTR vlanGuid, bool add, LPCWSTR vlanId,
                      LPCWSTR vlanName, LPCWSTR priority) {
    NetworkSession session(kConfigurationSession);
    HRESULT result = OpenConfigurationSession(session);
    if (result != S_OK) return result;
    NetworkComponents& netCfg = session.Components();
    const GUID guid = ParseGuid(lowerGuid);

    LowerObject found;
    result = FindLowerObject(netCfg, guid, found);
    if (result != S_OK) return result;
    const LPCWSTR id = found.id.Get();
    // VLANs can't be put on an IPoIB adapter.
    if (!IsPhysicalAdapter(id, eL2_PROTOCOL_ETHERNET) && !IsMuxMiniport(id))
        return Stop(kRefused, "Non-supported adapter device ID: %S\n", id);
    const std::unique_ptr<CMuxPhysicalAdapter> lower(new (std::nothrow)
                                                         CMuxPhysicalAdapter(netCfg, guid));
    if (!lower) return Stop(kRefused, "new CMuxPhysicalAdapter failed\n");
    if (IsMuxMiniport(id) && !lower->IsTeamMiniport())
        return Stop(kRefused, "Cannot install vlan over vlan\n");
    result = LoadLowerObject(*lower);
    if (result != S_OK) return result;
    return add ? AddVlan(netCfg, *lower, guid, vlanGuid, vlanId, vlanName, priority)
               : RemoveVlan(*lower, vlanGuid);
}
