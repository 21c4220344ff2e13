// Lists of devices, their interfaces and changes of their state (setupapi.h).

#include "DeviceInstall.h"

#include <algorithm>
#include <cstddef>

#include "DeviceStates.h"

using namespace platform;

namespace {

BOOL Fail(DWORD error) {
    Call::SetLast(error);
    return FALSE;
}

DeviceLists& Lists() {
    return Machine::Current().Get<DeviceLists>();
}

// The error of a caller's record whose size isn't right; 0 for a null, which is for the caller to
// judge.
template <class Record>
DWORD SizeError(const Record* record) {
    return record == nullptr || record->cbSize == sizeof *record ? 0U : ERROR_INVALID_USER_BUFFER;
}

ULONG_PTR ElementNumber(const SP_DEVINFO_DATA& device) {
    return device.Reserved;
}
ULONG_PTR ElementNumber(const SP_DEVICE_INTERFACE_DATA& deviceInterface) {
    return deviceInterface.Reserved >> 16;
}

// The element that a caller's record stands for, or null and the error.
template <class Record>
DeviceElement* FindElement(HDEVINFO handle, const Record* record, DWORD& error) {
    DeviceList* list = Lists().Find(handle);
    error = list == nullptr ? ERROR_INVALID_HANDLE : SizeError(record);
    if (error != 0) return nullptr;
    DeviceElement* element = record != nullptr ? list->At(ElementNumber(*record)) : nullptr;
    if (element == nullptr) error = ERROR_INVALID_PARAMETER;
    return element;
}

// The text by which a call that concerns this device is told from others. A copy, since the Call
// may let another thread run first.
template <class Record>
DeviceId NameOf(HDEVINFO handle, const Record* record) {
    DWORD error = 0;
    const DeviceElement* element = FindElement(handle, record, error);
    return element != nullptr ? element->id : DeviceId();
}

}  // namespace

HDEVINFO WINAPI SetupDiCreateDeviceInfoList(const GUID* classGuid, HWND) {
    Call call("SetupDiCreateDeviceInfoList", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    return Lists().Open(classGuid, call);
}

HDEVINFO WINAPI SetupDiCreateDeviceInfoListExW(const GUID* classGuid, HWND, PCWSTR machineName,
                                               PVOID reserved) {
    Call call("SetupDiCreateDeviceInfoListExW", machineName, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    if (machineName != nullptr || reserved != nullptr) {
        Call::SetLast(machineName != nullptr ? ERROR_NOT_SUPPORTED : ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    return Lists().Open(classGuid, call);
}

// Devices have no registered interfaces, so a list by interface is empty; its enumerator is a
// device.
HDEVINFO WINAPI SetupDiGetClassDevsW(const GUID* classGuid, PCWSTR enumerator, HWND, DWORD flags) {
    Call call("SetupDiGetClassDevsW", enumerator, ERROR_NO_SUCH_DEVINST);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    const bool byInterface = (flags & DIGCF_DEVICEINTERFACE) != 0;
    const bool allClasses = (flags & DIGCF_ALLCLASSES) != 0;
    DWORD error = ERROR_SUCCESS;
    if (classGuid == nullptr && !allClasses)
        error = ERROR_INVALID_PARAMETER;
    else if (!byInterface)
        error = ERROR_NOT_SUPPORTED;
    else if (enumerator != nullptr && call.machine.Get<DeviceTree>().Locate(enumerator) == 0)
        error = ERROR_NO_SUCH_DEVINST;
    if (error != ERROR_SUCCESS) {
        Call::SetLast(error);
        return INVALID_HANDLE_VALUE;
    }
    return Lists().Open(nullptr, call);
}

BOOL WINAPI SetupDiDestroyDeviceInfoList(HDEVINFO list) {
    Call call("SetupDiDestroyDeviceInfoList");
    return Lists().Close(list, call) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

BOOL WINAPI SetupDiGetDeviceInfoListDetailW(HDEVINFO list, PSP_DEVINFO_LIST_DETAIL_DATA_W detail) {
    Call call("SetupDiGetDeviceInfoListDetailW", nullptr, ERROR_INVALID_HANDLE);
    if (call.Failed()) return call.With(FALSE);
    const DeviceList* found = Lists().Find(list);
    if (found == nullptr) return Fail(ERROR_INVALID_HANDLE);
    if (detail == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (detail->cbSize != sizeof *detail) return Fail(ERROR_INVALID_USER_BUFFER);
    detail->ClassGuid = found->classGuid.value_or(GUID{});
    detail->RemoteMachineHandle = nullptr;
    detail->RemoteMachineName[0] = 0;
    return TRUE;
}

BOOL WINAPI SetupDiOpenDeviceInfoW(HDEVINFO list, PCWSTR instanceId, HWND, DWORD,
                                   PSP_DEVINFO_DATA device) {
    Call call("SetupDiOpenDeviceInfoW", instanceId, ERROR_NO_SUCH_DEVINST);
    if (call.Failed()) return call.With(FALSE);
    DeviceList* found = Lists().Find(list);
    if (found == nullptr) return Fail(ERROR_INVALID_HANDLE);
    if (instanceId == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    DWORD error = SizeError(device);
    if (error != 0) return Fail(error);
    const DeviceElement* element = Lists().Add(*found, instanceId, error);
    if (element == nullptr) return Fail(error);
    if (device != nullptr) found->Describe(*element, *device);
    return TRUE;
}

BOOL WINAPI SetupDiEnumDeviceInfo(HDEVINFO list, DWORD index, PSP_DEVINFO_DATA device) {
    Call call("SetupDiEnumDeviceInfo", nullptr, ERROR_NO_MORE_ITEMS);
    if (call.Failed()) return call.With(FALSE);
    const DeviceList* found = Lists().Find(list);
    if (found == nullptr) return Fail(ERROR_INVALID_HANDLE);
    if (device == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (device->cbSize != sizeof *device) return Fail(ERROR_INVALID_USER_BUFFER);
    if (index >= found->elements.size()) return Fail(ERROR_NO_MORE_ITEMS);
    found->Describe(found->elements[index], *device);
    return TRUE;
}

BOOL WINAPI SetupDiGetDeviceInstanceIdW(HDEVINFO list, PSP_DEVINFO_DATA device, PWSTR instanceId,
                                        DWORD instanceIdSize, PDWORD requiredSize) {
    const DeviceId name = NameOf(list, device);
    Call call("SetupDiGetDeviceInstanceIdW", name.c_str(), ERROR_NO_SUCH_DEVINST);
    if (call.Failed()) return call.With(FALSE);
    DWORD error = 0;
    const DeviceElement* element = FindElement(list, device, error);
    if (element == nullptr) return Fail(error);
    if (instanceId == nullptr && instanceIdSize != 0) return Fail(ERROR_INVALID_PARAMETER);
    const DWORD needed = static_cast<DWORD>(element->id.size() + 1);
    if (requiredSize != nullptr) *requiredSize = needed;
    if (instanceIdSize < needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::copy_n(element->id.c_str(), needed, instanceId);
    return TRUE;
}

BOOL WINAPI SetupDiCreateDeviceInterfaceW(HDEVINFO list, PSP_DEVINFO_DATA device,
                                          const GUID* interfaceClass, PCWSTR referenceString, DWORD,
                                          PSP_DEVICE_INTERFACE_DATA deviceInterface) {
    const DeviceId name = NameOf(list, device);
    Call call("SetupDiCreateDeviceInterfaceW", name.c_str(), ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    DWORD error = 0;
    DeviceElement* element = FindElement(list, device, error);
    if (element == nullptr) return Fail(error);
    if (interfaceClass == nullptr || referenceString != nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    error = SizeError(deviceInterface);
    if (error != 0) return Fail(error);
    auto& interfaces = element->interfaces;
    auto place = std::find(interfaces.begin(), interfaces.end(), *interfaceClass);
    if (place == interfaces.end()) place = interfaces.insert(place, *interfaceClass);
    if (deviceInterface != nullptr) {
        deviceInterface->InterfaceClassGuid = *interfaceClass;
        deviceInterface->Flags = 0;
        deviceInterface->Reserved =
            device->Reserved << 16 | static_cast<ULONG_PTR>(place - interfaces.begin());
    }
    return TRUE;
}

BOOL WINAPI SetupDiGetDeviceInterfaceDetailW(HDEVINFO list,
                                             PSP_DEVICE_INTERFACE_DATA deviceInterface,
                                             PSP_DEVICE_INTERFACE_DETAIL_DATA_W detail,
                                             DWORD detailSize, PDWORD requiredSize,
                                             PSP_DEVINFO_DATA device) {
    const DeviceId name = NameOf(list, deviceInterface);
    Call call("SetupDiGetDeviceInterfaceDetailW", name.c_str(), ERROR_NO_SUCH_DEVICE_INTERFACE);
    if (call.Failed()) return call.With(FALSE);
    DWORD error = 0;
    const DeviceElement* element = FindElement(list, deviceInterface, error);
    if (element == nullptr) return Fail(error);
    // A detail's size is the structure's as the compiler counts it, although its text begins
    // before the structure's end.
    const bool sizesRight =
        SizeError(detail) == 0 && SizeError(device) == 0 && (detail != nullptr || detailSize == 0);
    if (!sizesRight) return Fail(ERROR_INVALID_USER_BUFFER);
    const std::size_t index = deviceInterface->Reserved & 0xFFFF;
    if (index >= element->interfaces.size()) return Fail(ERROR_NO_SUCH_DEVICE_INTERFACE);

    const DeviceId path = InterfacePath(element->id, element->interfaces[index]);
    const std::size_t bytes = (path.size() + 1) * sizeof(WCHAR);
    const std::size_t begin = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath);
    if (requiredSize != nullptr) *requiredSize = static_cast<DWORD>(begin + bytes);
    if (detailSize < begin + bytes) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(reinterpret_cast<BYTE*>(detail) + begin, path.c_str(), bytes);
    if (device != nullptr) Lists().Find(list)->Describe(*element, *device);
    return TRUE;
}

BOOL WINAPI SetupDiSetClassInstallParamsW(HDEVINFO list, PSP_DEVINFO_DATA device,
                                          PSP_CLASSINSTALL_HEADER parameters, DWORD size) {
    const DeviceId name = NameOf(list, device);
    Call call("SetupDiSetClassInstallParamsW", name.c_str(), ERROR_INVALID_PARAMETER);
    if (call.Failed()) return call.With(FALSE);
    DWORD error = 0;
    DeviceElement* element = FindElement(list, device, error);
    if (element == nullptr) return Fail(error);
    if (parameters == nullptr) {
        if (size != 0) return Fail(ERROR_INVALID_PARAMETER);
        element->change.reset();
        return TRUE;
    }
    const auto change = ReadStateChange(parameters, size, error);
    if (!change) return Fail(error);
    element->change = change;
    return TRUE;
}

BOOL WINAPI SetupDiCallClassInstaller(DI_FUNCTION function, HDEVINFO list,
                                      PSP_DEVINFO_DATA device) {
    const DeviceId name = NameOf(list, device);
    Call call("SetupDiCallClassInstaller", name.c_str(), ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    DWORD error = 0;
    const DeviceElement* element = FindElement(list, device, error);
    if (element == nullptr) return Fail(error);
    if (function != DIF_PROPERTYCHANGE) return Fail(ERROR_CALL_NOT_IMPLEMENTED);
    if (!element->change) return Fail(ERROR_NO_CLASSINSTALL_PARAMS);
    call.machine.Get<DeviceStates>().Change(element->id, *element->change);
    return TRUE;
}
