// Changes of the state of the system's devices, in the system's lists.

#include <map>

#include "Call.h"
#include "DeviceStates.h"

using namespace platform;

namespace {

// The class install parameters of a device in a list; they stay until others are set.
struct StateChanges : Part {
    std::map<std::pair<HDEVINFO, DeviceId>, SP_PROPCHANGE_PARAMS> open;
};

// Empty, with the system's last error, when the list has no such device.
DeviceId IdOf(HDEVINFO list, PSP_DEVINFO_DATA device) {
    WCHAR id[MAX_DEVICE_ID_LEN] = {};
    return SetupDiGetDeviceInstanceIdW(list, device, id, MAX_DEVICE_ID_LEN, nullptr) ? id
                                                                                     : DeviceId();
}

BOOL Fail(DWORD error) {
    Call::SetLast(error);
    return FALSE;
}

}  // namespace

extern "C" BOOL WINAPI LentSetupDiSetClassInstallParamsW(HDEVINFO list, PSP_DEVINFO_DATA device,
                                                         PSP_CLASSINSTALL_HEADER parameters,
                                                         DWORD size) {
    const Call call("SetupDiSetClassInstallParamsW");
    const DeviceId id = IdOf(list, device);
    if (id.empty()) return FALSE;
    auto& open = call.machine.Get<StateChanges>().open;
    if (parameters == nullptr) {
        if (size != 0) return Fail(ERROR_INVALID_PARAMETER);
        open.erase({list, id});
        return TRUE;
    }
    DWORD error = 0;
    const auto change = ReadStateChange(parameters, size, error);
    if (!change) return Fail(error);
    open.insert_or_assign({list, id}, *change);
    return TRUE;
}

extern "C" BOOL WINAPI LentSetupDiCallClassInstaller(DI_FUNCTION function, HDEVINFO list,
                                                     PSP_DEVINFO_DATA device) {
    if (function != DIF_PROPERTYCHANGE) return SetupDiCallClassInstaller(function, list, device);
    const Call call("SetupDiCallClassInstaller");
    const DeviceId id = IdOf(list, device);
    if (id.empty()) return FALSE;
    const auto& open = call.machine.Get<StateChanges>().open;
    const auto change = open.find({list, id});
    if (change == open.end()) return Fail(ERROR_NO_CLASSINSTALL_PARAMS);
    // Wine gives ids in capitals; restarts are counted under the registry's own spelling.
    DeviceTree& tree = call.machine.Get<DeviceTree>();
    const DeviceId spelled = tree.Id(tree.Locate(id));
    call.machine.Get<DeviceStates>().Change(spelled.empty() ? id : spelled, change->second);
    return TRUE;
}
