#include "AdapterIdentity.h"

#include <string_view>
#include <utility>

#include "RegistryServices.h"

#include <strsafe.h>

namespace {

using Text = std::basic_string_view<WCHAR>;

constexpr Text kMuxService = TEXT("MUXMP");
constexpr Text kIpoibService = TEXT("ipoib6x");  // how the service's name begins

// Limits of what is read, in bytes.
constexpr DWORD kAdapterTextLimit = 260;  // Service and Driver of an adapter
constexpr DWORD kBusDriverLimit = 520;

bool EqualNoCase(Text a, Text b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

struct DeviceKeys {
    ScopedRegKey enumRoot;
    ScopedRegKey classRoot;
    ScopedRegKey instance;
};

bool OpenDeviceKeys(LPCWSTR instanceId, DeviceKeys& keys) {
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, kEnumRoot, 0, KEY_READ, keys.enumRoot.Receive()) ==
               ERROR_SUCCESS &&
           RegOpenKeyExW(HKEY_LOCAL_MACHINE, kClassRoot, 0, KEY_ALL_ACCESS,
                         keys.classRoot.Receive()) == ERROR_SUCCESS &&
           RegOpenKeyExW(keys.enumRoot.Get(), instanceId, 0, KEY_READ, keys.instance.Receive()) ==
               ERROR_SUCCESS;
}

bool MakeClassKeyPath(WCHAR (&path)[kPathCapacity], LPCWSTR driver) {
    return SUCCEEDED(StringCchPrintfW(path, kPathCapacity, TEXT("%s\\%s"), kClassRoot, driver));
}

// The instance id in a block of its own, or null.
ScopedLocal<WCHAR> ReadInstanceId(const SP_PROPSHEETPAGE_REQUEST& request) {
    DWORD size = 0;  // characters
    if (SetupDiGetDeviceInstanceIdW(request.DeviceInfoSet, request.DeviceInfoData, nullptr, 0,
                                    &size) ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER || size == 0)
        return {};
    ScopedLocal<WCHAR> id(static_cast<WCHAR*>(LocalAlloc(LPTR, size * sizeof(WCHAR))));
    if (!id || !SetupDiGetDeviceInstanceIdW(request.DeviceInfoSet, request.DeviceInfoData, id.Get(),
                                            size, nullptr))
        return {};
    return id;
}

// What the registry says of the adapter: the two texts of the context, and its service.
bool ReadAdapterKeys(LPCWSTR instanceId, AdapterContext& context, WCHAR (&service)[kPathCapacity]) {
    DeviceKeys keys;
    WCHAR driver[kPathCapacity];
    ScopedRegKey classKey;
    return OpenDeviceKeys(instanceId, keys) &&
           ReadRegistryText(keys.instance.Get(), TEXT("Service"), service, ARRAYSIZE(service),
                            kAdapterTextLimit) == ERROR_SUCCESS &&
           ReadRegistryText(keys.instance.Get(), TEXT("Driver"), driver, ARRAYSIZE(driver),
                            kAdapterTextLimit) == ERROR_SUCCESS &&
           RegOpenKeyExW(keys.classRoot.Get(), driver, 0, KEY_READ, classKey.Receive()) ==
               ERROR_SUCCESS &&
           ReadRegistryText(classKey.Get(), TEXT("NetCfgInstanceId"), context.netCfgInstanceId,
                            ARRAYSIZE(context.netCfgInstanceId),
                            sizeof(context.netCfgInstanceId)) == ERROR_SUCCESS &&
           MakeClassKeyPath(context.classKeyPath, driver);
}

// The detail of the device's interface of its own class, in a block of its own, or null.
ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> ReadInterfaceDetail(
    const SP_PROPSHEETPAGE_REQUEST& request) {
    SP_DEVICE_INTERFACE_DATA deviceInterface = {};
    deviceInterface.cbSize = sizeof(deviceInterface);
    if (!SetupDiCreateDeviceInterfaceW(request.DeviceInfoSet, request.DeviceInfoData,
                                       &request.DeviceInfoData->ClassGuid, nullptr, 0,
                                       &deviceInterface))
        return {};
    DWORD size = 0;  // bytes
    if (SetupDiGetDeviceInterfaceDetailW(request.DeviceInfoSet, &deviceInterface, nullptr, 0, &size,
                                         nullptr) ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER || size == 0)
        return {};
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> detail(
        static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(LocalAlloc(LPTR, size)));
    if (!detail) return {};
    detail.Get()->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
    if (!SetupDiGetDeviceInterfaceDetailW(request.DeviceInfoSet, &deviceInterface, detail.Get(),
                                          size, nullptr, nullptr))
        return {};
    return detail;
}

bool ClassifyVirtualMiniport(LPCWSTR netCfgInstanceId, AdapterFlags& flags) {
    ScopedRegKey adapters;
    ScopedRegKey entry;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kMuxAdaptersRoot, 0, KEY_READ, adapters.Receive()) !=
        ERROR_SUCCESS)
        return false;
    LONG error = RegOpenKeyExW(adapters.Get(), netCfgInstanceId, 0, KEY_READ, entry.Receive());
    if (error == ERROR_SUCCESS) {
        DWORD teamType = 0;
        DWORD size = sizeof(teamType);
        error = RegQueryValueExW(entry.Get(), TEXT("TeamType"), nullptr, nullptr,
                                 reinterpret_cast<BYTE*>(&teamType), &size);
    }
    // Without an entry or a team type it is a VLAN.
    flags.isTeamMiniport = error == ERROR_SUCCESS;
    flags.isVlanMiniport = error == ERROR_FILE_NOT_FOUND;
    return flags.isTeamMiniport || flags.isVlanMiniport;
}

bool CheckTeamMembership(LPCWSTR netCfgInstanceId, AdapterFlags& flags) {
    flags.isTeamMember = false;
    ScopedRegKey adapters;
    ScopedRegKey entry;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kMuxAdaptersRoot, 0, KEY_READ, adapters.Receive()) !=
        ERROR_SUCCESS)
        return true;
    const LONG error =
        RegOpenKeyExW(adapters.Get(), netCfgInstanceId, 0, KEY_READ, entry.Receive());
    if (error == ERROR_FILE_NOT_FOUND) return true;
    if (error != ERROR_SUCCESS) return false;
    DWORD size = 0;
    flags.isTeamMember = RegQueryValueExW(entry.Get(), TEXT("TeamDeviceName"), nullptr, nullptr,
                                          nullptr, &size) == ERROR_SUCCESS &&
                         size != 0;
    return true;
}

}  // namespace

bool GetDeviceInterfaceDetail(const SP_PROPSHEETPAGE_REQUEST& request,
                              ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W>& interfaceDetail,
                              AdapterContext& context, AdapterFlags& flags) {
    ScopedLocal<WCHAR> instanceId = ReadInstanceId(request);
    if (!instanceId) return false;

    WCHAR service[kPathCapacity];
    if (!ReadAdapterKeys(instanceId.Get(), context, service)) return false;
    const bool isMuxMiniport = EqualNoCase(service, kMuxService);
    flags.isIpoib = EqualNoCase(Text(service).substr(0, kIpoibService.size()), kIpoibService);

    const ScopedDeviceInfoList present(SetupDiGetClassDevsW(&request.DeviceInfoData->ClassGuid,
                                                            instanceId.Get(), nullptr,
                                                            DIGCF_PRESENT | DIGCF_DEVICEINTERFACE));
    if (!present) return false;
    flags.deviceInstanceId = std::move(instanceId);

    interfaceDetail = ReadInterfaceDetail(request);
    if (!interfaceDetail) return false;

    flags.isVlanMiniport = false;
    flags.isTeamMiniport = false;
    return isMuxMiniport ? ClassifyVirtualMiniport(context.netCfgInstanceId, flags)
                         : CheckTeamMembership(context.netCfgInstanceId, flags);
}

bool IdentifyBusDevice(const SP_PROPSHEETPAGE_REQUEST& request, BusDevice& bus) {
    if (!SetupDiGetDeviceInstanceIdW(request.DeviceInfoSet, request.DeviceInfoData, bus.instanceId,
                                     ARRAYSIZE(bus.instanceId), nullptr))
        return false;
    DeviceKeys keys;
    // One more than the value's limit, for the terminator that it may lack.
    WCHAR driver[kBusDriverLimit / sizeof(WCHAR) + 1];
    return OpenDeviceKeys(bus.instanceId, keys) &&
           ReadRegistryText(keys.instance.Get(), TEXT("Driver"), driver, ARRAYSIZE(driver),
                            kBusDriverLimit) == ERROR_SUCCESS &&
           MakeClassKeyPath(bus.classKeyPath, driver);
}
