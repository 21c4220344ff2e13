#include "DeviceIdentity.h"

#include <string_view>
#include <utility>

#include "RegistryKey.h"

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
    RegistryKey enumRoot;
    RegistryKey classRoot;
    RegistryKey instance;
};

bool OpenDeviceKeys(LPCWSTR instanceId, DeviceKeys& keys) {
    return keys.enumRoot.Open(kEnumRoot, KEY_READ) == ERROR_SUCCESS &&
           keys.classRoot.Open(kClassRoot, KEY_ALL_ACCESS) == ERROR_SUCCESS &&
           keys.instance.Open(keys.enumRoot.Get(), instanceId, KEY_READ) == ERROR_SUCCESS;
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

// What the registry says of the adapter: its identity and its service.
bool ReadAdapterKeys(LPCWSTR instanceId, AdapterIdentity& identity,
                     WCHAR (&service)[kPathCapacity]) {
    DeviceKeys keys;
    WCHAR driver[kPathCapacity];
    RegistryKey classKey;
    return OpenDeviceKeys(instanceId, keys) &&
           keys.instance.ReadText(TEXT("Service"), service, kAdapterTextLimit) == ERROR_SUCCESS &&
           keys.instance.ReadText(TEXT("Driver"), driver, kAdapterTextLimit) == ERROR_SUCCESS &&
           classKey.Open(keys.classRoot.Get(), driver, KEY_READ) == ERROR_SUCCESS &&
           classKey.ReadText(kNetCfgInstanceId, identity.netCfgInstanceId) == ERROR_SUCCESS &&
           MakeClassKeyPath(identity.classKeyPath, driver);
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

// The adapter's entry in the MUX driver's tree. hasTree: the tree is there.
LONG OpenMuxEntry(LPCWSTR netCfgInstanceId, RegistryKey& entry, bool& hasTree) {
    RegistryKey adapters;
    const LONG error = adapters.Open(kMuxAdaptersRoot, KEY_READ);
    hasTree = error == ERROR_SUCCESS;
    return hasTree ? entry.Open(adapters.Get(), netCfgInstanceId, KEY_READ) : error;
}

bool ClassifyVirtualMiniport(LPCWSTR netCfgInstanceId, AdapterFlags& flags) {
    RegistryKey entry;
    bool hasTree = false;
    LONG error = OpenMuxEntry(netCfgInstanceId, entry, hasTree);
    if (!hasTree) return false;
    DWORD teamType = 0;
    if (error == ERROR_SUCCESS) error = entry.ReadDword(TEXT("TeamType"), teamType);
    // Without an entry or a team type it is a VLAN.
    flags.isTeamMiniport = error == ERROR_SUCCESS;
    flags.isVlanMiniport = error == ERROR_FILE_NOT_FOUND;
    return flags.isTeamMiniport || flags.isVlanMiniport;
}

bool CheckTeamMembership(LPCWSTR netCfgInstanceId, AdapterFlags& flags) {
    RegistryKey entry;
    bool hasTree = false;
    const LONG error = OpenMuxEntry(netCfgInstanceId, entry, hasTree);
    if (!hasTree || error == ERROR_FILE_NOT_FOUND) return true;
    if (error != ERROR_SUCCESS) return false;
    DWORD size = 0;
    flags.isTeamMember =
        entry.QuerySize(TEXT("TeamDeviceName"), size) == ERROR_SUCCESS && size != 0;
    return true;
}

}  // namespace

bool GetDeviceInterfaceDetail(const SP_PROPSHEETPAGE_REQUEST& request,
                              ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W>& interfaceDetail,
                              AdapterIdentity& identity, AdapterFlags& flags) {
    ScopedLocal<WCHAR> instanceId = ReadInstanceId(request);
    if (!instanceId) return false;

    WCHAR service[kPathCapacity];
    if (!ReadAdapterKeys(instanceId.Get(), identity, service)) return false;
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
    flags.isTeamMember = false;
    return isMuxMiniport ? ClassifyVirtualMiniport(identity.netCfgInstanceId, flags)
                         : CheckTeamMembership(identity.netCfgInstanceId, flags);
}

bool IdentifyBusDevice(const SP_PROPSHEETPAGE_REQUEST& request, BusDevice& bus) {
    if (!SetupDiGetDeviceInstanceIdW(request.DeviceInfoSet, request.DeviceInfoData, bus.instanceId,
                                     ARRAYSIZE(bus.instanceId), nullptr))
        return false;
    DeviceKeys keys;
    // One more than the value's limit, for the terminator that it may lack.
    WCHAR driver[kBusDriverLimit / sizeof(WCHAR) + 1];
    return OpenDeviceKeys(bus.instanceId, keys) &&
           keys.instance.ReadText(TEXT("Driver"), driver, kBusDriverLimit) == ERROR_SUCCESS &&
           MakeClassKeyPath(bus.classKeyPath, driver);
}
