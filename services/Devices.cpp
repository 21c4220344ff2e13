#include "Devices.h"

#include "AutoClasses.h"

namespace {

bool ChangeDeviceState(HDEVINFO list, SP_DEVINFO_DATA* device, DWORD stateChange, DWORD scope) {
    SP_PROPCHANGE_PARAMS change = {};
    change.ClassInstallHeader.cbSize = sizeof(change.ClassInstallHeader);
    change.ClassInstallHeader.InstallFunction = DIF_PROPERTYCHANGE;
    change.StateChange = stateChange;
    change.Scope = scope;
    return SetupDiSetClassInstallParamsW(list, device, &change.ClassInstallHeader,
                                         sizeof(change)) &&
           SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, list, device);
}

}  // namespace

bool CycleDeviceState(HDEVINFO list, SP_DEVINFO_DATA* device) {
    if (!ChangeDeviceState(list, device, DICS_DISABLE, DICS_FLAG_CONFIGSPECIFIC)) return false;
    // Enabling for all hardware profiles may be refused; enabling for this one is what counts.
    ChangeDeviceState(list, device, DICS_ENABLE, DICS_FLAG_GLOBAL);
    return ChangeDeviceState(list, device, DICS_ENABLE, DICS_FLAG_CONFIGSPECIFIC);
}

bool RestartDevice(LPCWSTR instanceId) {
    const ScopedDeviceInfoList list(
        SetupDiCreateDeviceInfoListExW(nullptr, nullptr, nullptr, nullptr));
    if (!list) return false;
    if (!SetupDiOpenDeviceInfoW(list.Get(), instanceId, nullptr, 0, nullptr)) return false;

    SP_DEVINFO_LIST_DETAIL_DATA_W detail = {};
    detail.cbSize = sizeof(detail);
    if (!SetupDiGetDeviceInfoListDetailW(list.Get(), &detail)) return false;

    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    if (!SetupDiEnumDeviceInfo(list.Get(), 0, &device)) return false;
    return CycleDeviceState(list.Get(), &device);
}
