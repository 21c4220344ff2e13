#include "PortBindings.h"

#include "../resources/resource.h"
#include "RegistryPaths.h"
#include "RegistryServices.h"

namespace {

constexpr DWORD kDriverLimit = 260;  // bytes
constexpr DWORD kGuidLimit = 80;

constexpr struct {
    bool (*holds)(LPCWSTR adapter);
    UINT message;
} kRefusals[] = {
    {HasUpperBindings, IDS_UPPER_VLANS_DETECTED},
    {HasTeamDeviceName, IDS_TEAM_MEMBERS_DETECTED},
};

// The GUID text of the network adapter whose class key the driver text names.
bool ReadAdapterGuid(LPCWSTR driver, LPWSTR guid) {
    RegistryPath path;
    DWORD size = kGuidLimit;
    return MakeClassKeyPath(path, driver) && ReadHklmValue(path, kNetCfgInstanceId, guid, &size);
}

}  // namespace

UINT FindUpperBindingsOrTeams(DEVINST card) {
    DEVINST port = 0;
    for (CONFIGRET found = CM_Get_Child(&port, card, 0); found == CR_SUCCESS;
         found = CM_Get_Sibling(&port, port, 0)) {
        // Zeroed, and one more than each limit, for the terminator that a text may lack.
        WCHAR driver[kDriverLimit / sizeof(WCHAR) + 1] = {};
        WCHAR guid[kGuidLimit / sizeof(WCHAR) + 1] = {};
        ULONG size = kDriverLimit;
        if (CM_Get_DevNode_Registry_PropertyW(port, CM_DRP_DRIVER, nullptr, driver, &size, 0) !=
            CR_SUCCESS)
            return 0;
        if (!ReadAdapterGuid(driver, guid)) continue;
        for (const auto& refusal : kRefusals)
            if (refusal.holds(guid)) return refusal.message;
    }
    return 0;
}
