#include "TabRules.h"

#include "RegistryServices.h"
#include "WindowsVersion.h"

namespace {

bool IsPhysical(const AdapterFlags& adapter) {
    return !adapter.isVlanMiniport && !adapter.isTeamMiniport;
}

}  // namespace

MachineFacts GetMachineFacts() {
    return {IsMuxPackagePresent(), IsServerOfRelease4OrLater()};
}

bool InformationTabApplies(const AdapterFlags& adapter) {
    return IsPhysical(adapter);
}

bool PerformanceTabApplies(const AdapterFlags& adapter) {
    return IsPhysical(adapter);
}

bool VlanTabApplies(const AdapterFlags& adapter, const MachineFacts& machine) {
    return machine.hasMuxPackage && !machine.isServerOfRelease4OrLater && !adapter.isVlanMiniport &&
           !adapter.isTeamMember && !adapter.isIpoib;
}

bool TeamingTabApplies(const AdapterFlags& adapter, const MachineFacts& machine) {
    return machine.hasMuxPackage && IsPhysical(adapter) &&
           (adapter.isIpoib || !machine.isServerOfRelease4OrLater);
}
