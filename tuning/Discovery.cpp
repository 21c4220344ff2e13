#include "Discovery.h"

#include <cfgmgr32.h>
#include <string_view>
#include <strsafe.h>

#include "../resources/resource.h"
#include "RegistryServices.h"

namespace {

constexpr WCHAR kAdapterClassKey[] =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\class\\{4D36E972-E325-11CE-BFC1-08002BE10318}");
constexpr WCHAR kNetworkKey[] =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}");
constexpr WCHAR kNetCfgInstanceId[] = TEXT("NetCfgInstanceId");
constexpr WCHAR kPnpInstanceId[] = TEXT("PnpInstanceID");

constexpr REGSAM kAdapterAccess =
    STANDARD_RIGHTS_READ | KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;  // 0x20007
constexpr DWORD kTextLimit = 260;                                                 // bytes
constexpr DWORD kNameLimit = 520;                                                 // bytes
// No key has so many subkeys; an enumeration that only fails ends here.
constexpr DWORD kMaxSubkeys = 0x10000;

bool Contains(LPCWSTR text, LPCWSTR part) {
    return std::basic_string_view<WCHAR>(text).find(part) != std::basic_string_view<WCHAR>::npos;
}

bool EqualNoCase(LPCWSTR a, LPCWSTR b) {
    return CompareStringOrdinal(a, -1, b, -1, TRUE) == CSTR_EQUAL;
}

// Walks the subkeys of `key` by name until `visit` gives true. False when they run out. A subkey
// that can't be enumerated is passed over.
template <class Visit>
bool AnySubkey(HKEY key, Visit visit) {
    for (DWORD index = 0; index < kMaxSubkeys; ++index) {
        WCHAR name[kPathCapacity];
        DWORD length = ARRAYSIZE(name);
        const LONG error =
            RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_NO_MORE_ITEMS) return false;
        if (error == ERROR_SUCCESS && visit(name)) return true;
    }
    return false;
}

LONG OpenSearchRoot(LogStream* log, LPCWSTR operation, LPCWSTR path, ScopedRegKey& root) {
    const LONG error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, root.Receive());
    if (error == ERROR_FILE_NOT_FOUND)
        LogFormatted(log, TEXT("%s: Key not found: %s\n"), operation, path);
    else if (error != ERROR_SUCCESS)
        LogFormatted(log, TEXT("%s: Error opening key: %s\n"), operation, path);
    return error;
}

bool OpenConnectionKey(LPCWSTR guid, REGSAM access, ScopedRegKey& connection) {
    WCHAR path[kPathCapacity];
    return SUCCEEDED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%s\\%s\\Connection"),
                                      kNetworkKey, guid)) &&
           RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, connection.Receive()) ==
               ERROR_SUCCESS;
}

bool ReadIsEthernet(HKEY classKey, bool& isEthernet) {
    WCHAR component[kPathCapacity];
    if (ReadRegistryText(classKey, TEXT("ComponentId"), component, ARRAYSIZE(component),
                         kTextLimit) != ERROR_SUCCESS)
        return false;
    CharLowerBuffW(component,
                   static_cast<DWORD>(std::basic_string_view<WCHAR>(component).length()));
    isEthernet = Contains(component, TEXT("eth"));
    return true;
}

// The control of the stored scenario, 0 for none. False when it is there and can't be read.
bool ReadStoredScenario(HKEY classKey, LONG& control) {
    static const struct {
        LPCWSTR text;
        LONG control;
    } kStored[] = {
        {TEXT("1086"), IDC_SINGLE_PORT},   {TEXT("1087"), IDC_DUAL_PORT},
        {TEXT("1088"), IDC_FORWARDING},    {TEXT("1096"), IDC_MULTICAST},
        {TEXT("1098"), IDC_SINGLE_STREAM},
    };
    WCHAR text[kPathCapacity];
    const LONG error =
        ReadRegistryText(classKey, TEXT("TuningScenario"), text, ARRAYSIZE(text), kTextLimit);
    if (error == ERROR_FILE_NOT_FOUND) return true;
    if (error != ERROR_SUCCESS) return false;
    for (const auto& stored : kStored)
        if (Contains(text, stored.text)) control = stored.control;
    return true;
}

// The device instance id of the adapter's connection.
bool ReadInstanceId(HKEY classKey, LPWSTR instanceId, size_t capacity) {
    WCHAR guid[kPathCapacity];
    ScopedRegKey connection;
    return ReadRegistryText(classKey, kNetCfgInstanceId, guid, ARRAYSIZE(guid), kTextLimit) ==
               ERROR_SUCCESS &&
           OpenConnectionKey(guid, kAdapterAccess, connection) &&
           ReadRegistryText(connection.Get(), kPnpInstanceId, instanceId, capacity, kTextLimit) ==
               ERROR_SUCCESS;
}

// Takes the device for the second adapter if its id says that it is a port. False when the id can't
// be read.
bool TakeIfPort(DEVINST node, TuningAdapter& second, bool& taken) {
    WCHAR id[kPathCapacity] = {};
    if (CM_Get_Device_ID_ExW(node, id, ARRAYSIZE(id), 0, nullptr) != CR_SUCCESS) return false;
    const bool isEthernet = Contains(id, TEXT("ETH"));
    taken = isEthernet || Contains(id, TEXT("IPOIB"));
    if (!taken) return true;
    second.isEthernet = isEthernet;
    return SUCCEEDED(StringCchCopyW(second.instanceId, ARRAYSIZE(second.instanceId), id));
}

// Finds the port beside the device: the next sibling alone decides where there is one; the last
// child of a parent looks at all others from the first on. False when the tree can't be read.
bool FindSibling(DEVINST node, TuningAdapter& second, bool& found) {
    DEVINST sibling = 0;
    if (CM_Get_Sibling_Ex(&sibling, node, 0, nullptr) == CR_SUCCESS)
        return TakeIfPort(sibling, second, found);

    DEVINST parent = 0;
    DEVINST child = 0;
    if (CM_Get_Parent_Ex(&parent, node, 0, nullptr) != CR_SUCCESS) return false;
    if (CM_Get_Child_Ex(&child, parent, 0, nullptr) != CR_SUCCESS) return false;
    do {
        if (child == node) continue;
        if (!TakeIfPort(child, second, found)) return false;
        if (found) return true;
    } while (CM_Get_Sibling_Ex(&child, child, 0, nullptr) == CR_SUCCESS);
    return true;
}

bool OpenSecondKey(TuningAdapter& second) {
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) return false;
    WCHAR guid[kPathCapacity];
    return FindAdapterGuidByNetKey(&log, kPnpInstanceId, second.instanceId, guid,
                                   ARRAYSIZE(guid)) == ERROR_SUCCESS &&
           FindAdapterByGuid(&log, guid, second.key) == ERROR_SUCCESS;
}

bool FillContext(AdapterContext& context) {
    TuningAdapter& first = context.first;
    TuningAdapter& second = context.second;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, context.classKeyPath, 0, kAdapterAccess,
                      first.key.Receive()) != ERROR_SUCCESS)
        return false;
    if (!ReadIsEthernet(first.key.Get(), first.isEthernet)) return false;
    if (!ReadStoredScenario(first.key.Get(), context.scenarioControl)) return false;
    if (!ReadInstanceId(first.key.Get(), first.instanceId, ARRAYSIZE(first.instanceId)))
        return false;
    first.number = 1;
    first.present = true;

    DEVINST node = 0;
    if (CM_Locate_DevNode_ExW(&node, first.instanceId, CM_LOCATE_DEVNODE_NORMAL, nullptr) !=
        CR_SUCCESS)
        return false;
    bool found = false;
    if (!FindSibling(node, second, found)) return false;
    if (!found) return true;
    if (!OpenSecondKey(second)) return false;
    second.number = 2;
    second.present = true;
    return true;
}

}  // namespace

bool GetKeysInfo(AdapterContext& context) {
    context.first.present = false;
    context.second.present = false;
    context.scenarioControl = 0;
    if (FillContext(context)) return true;
    context.first.key.Reset();
    context.second.key.Reset();
    return false;
}

LONG FindAdapterGuidByNetKey(LogStream* log, LPCWSTR valueName, LPCWSTR wanted, LPWSTR guid,
                             size_t capacity) {
    constexpr LPCWSTR operation = TEXT("FindAdapterGuidByNetKey");
    ScopedRegKey network;
    const LONG error = OpenSearchRoot(log, operation, kNetworkKey, network);
    if (error != ERROR_SUCCESS) return error;

    LONG result = ERROR_NO_MORE_ITEMS;
    AnySubkey(network.Get(), [&](LPCWSTR name) {
        ScopedRegKey subkey;
        ScopedRegKey connection;
        WCHAR text[kPathCapacity];
        if (RegOpenKeyExW(network.Get(), name, 0, KEY_READ, subkey.Receive()) != ERROR_SUCCESS ||
            RegOpenKeyExW(subkey.Get(), TEXT("Connection"), 0, KEY_QUERY_VALUE,
                          connection.Receive()) != ERROR_SUCCESS ||
            ReadRegistryText(connection.Get(), valueName, text, ARRAYSIZE(text), kTextLimit) !=
                ERROR_SUCCESS ||
            !EqualNoCase(text, wanted))
            return false;
        result = SUCCEEDED(StringCchCopyW(guid, capacity, name)) ? ERROR_SUCCESS : ERROR_MORE_DATA;
        return true;
    });
    if (result == ERROR_NO_MORE_ITEMS)
        LogFormatted(log, TEXT("%s: Network Adapter with %s = %s not found\n"), operation,
                     valueName, wanted);
    return result;
}

LONG FindAdapterByGuid(LogStream* log, LPCWSTR guid, ScopedRegKey& key) {
    constexpr LPCWSTR operation = TEXT("FindAdapterByGuid");
    key.Reset();
    ScopedRegKey adapters;
    const LONG error = OpenSearchRoot(log, operation, kAdapterClassKey, adapters);
    if (error != ERROR_SUCCESS) return error;

    const bool found = AnySubkey(adapters.Get(), [&](LPCWSTR name) {
        ScopedRegKey subkey;
        WCHAR text[kPathCapacity];
        if (RegOpenKeyExW(adapters.Get(), name, 0, kAdapterAccess, subkey.Receive()) !=
                ERROR_SUCCESS ||
            ReadRegistryText(subkey.Get(), kNetCfgInstanceId, text, ARRAYSIZE(text), kTextLimit) !=
                ERROR_SUCCESS ||
            !EqualNoCase(text, guid))
            return false;
        key.Reset(subkey.Release());
        return true;
    });
    if (found) return ERROR_SUCCESS;
    LogFormatted(log, TEXT("%s: Adapter GUID not found: %s\n"), operation, guid);
    return ERROR_NO_MORE_ITEMS;
}

bool GetAdapterConnectionName(TuningAdapter& adapter) {
    WCHAR guid[kPathCapacity];
    ScopedRegKey connection;
    if (ReadRegistryText(adapter.key.Get(), kNetCfgInstanceId, guid, ARRAYSIZE(guid), kTextLimit) !=
            ERROR_SUCCESS ||
        !OpenConnectionKey(guid, KEY_READ, connection))
        return false;
    WCHAR name[kPathCapacity];
    if (ReadRegistryText(connection.Get(), TEXT("Name"), name, ARRAYSIZE(name), kNameLimit) ==
        ERROR_SUCCESS)
        (void)StringCchCopyW(adapter.connectionName, ARRAYSIZE(adapter.connectionName), name);
    return true;
}
