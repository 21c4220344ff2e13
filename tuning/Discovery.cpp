#include "Discovery.h"

#include <cfgmgr32.h>
#include <cstdarg>
#include <string_view>
#include <utility>

#include "Scenarios.h"

#include <strsafe.h>

namespace {

constexpr REGSAM kAdapterAccess =
    STANDARD_RIGHTS_READ | KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;  // 0x20007
constexpr DWORD kTextLimit = 260;                                                 // bytes
constexpr DWORD kNameLimit = 520;                                                 // bytes
constexpr WCHAR kOperation[] = TEXT("GetKeysInfo");
// No key has so many subkeys; an enumeration that only fails ends here.
constexpr DWORD kMaxSubkeys = 0x10000;

bool Contains(LPCWSTR text, LPCWSTR part) {
    return std::basic_string_view<WCHAR>(text).find(part) != std::basic_string_view<WCHAR>::npos;
}

bool EqualNoCase(LPCWSTR a, LPCWSTR b) {
    return CompareStringOrdinal(a, -1, b, -1, TRUE) == CSTR_EQUAL;
}

// Notes why the discovery fails; for `return Fail(...)`.
bool Fail(DiscoveryFailure& failure, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    (void)StringCchVPrintfW(failure.text, ARRAYSIZE(failure.text), format, arguments);
    va_end(arguments);
    return false;
}

// Reads a text whose absence is a failure too.
bool ReadRequired(const RegistryKey& key, LPCWSTR name, WCHAR (&text)[kPathCapacity],
                  DiscoveryFailure& failure) {
    const LONG error = key.ReadText(name, text, kTextLimit);
    return error == ERROR_SUCCESS || Fail(failure, TEXT("%s: Reading %s failed: %x\n"), kOperation,
                                          name, static_cast<unsigned>(error));
}

// Walks the subkeys of `key` by name until `visit` gives true. False when they run out. A subkey
// that can't be enumerated is passed over.
template <class Visit>
bool AnySubkey(const RegistryKey& key, Visit visit) {
    for (DWORD index = 0; index < kMaxSubkeys; ++index) {
        WCHAR name[kPathCapacity];
        const LONG error = key.SubkeyName(index, name, ARRAYSIZE(name));
        if (error == ERROR_NO_MORE_ITEMS) return false;
        if (error == ERROR_SUCCESS && visit(name)) return true;
    }
    return false;
}

LONG OpenSearchRoot(LogStream* log, LPCWSTR operation, LPCWSTR path, RegistryKey& root) {
    const LONG error = root.Open(path, KEY_READ);
    if (error == ERROR_FILE_NOT_FOUND)
        LogFormatted(log, TEXT("%s: Key not found: %s\n"), operation, path);
    else if (error != ERROR_SUCCESS)
        LogFormatted(log, TEXT("%s: Error opening key: %s\n"), operation, path);
    return error;
}

bool ReadIsEthernet(const RegistryKey& classKey, bool& isEthernet, DiscoveryFailure& failure) {
    WCHAR component[kPathCapacity];
    if (!ReadRequired(classKey, TEXT("ComponentId"), component, failure)) return false;
    CharLowerBuffW(component,
                   static_cast<DWORD>(std::basic_string_view<WCHAR>(component).length()));
    isEthernet = Contains(component, TEXT("eth"));
    return true;
}

// The control of the stored scenario, 0 for none. False when it is there and can't be read.
bool ReadStoredScenario(const RegistryKey& classKey, LONG& control, DiscoveryFailure& failure) {
    WCHAR text[kPathCapacity];
    const LONG error = classKey.ReadText(TEXT("TuningScenario"), text, kTextLimit);
    if (error == ERROR_FILE_NOT_FOUND) return true;
    if (error != ERROR_SUCCESS)
        return Fail(failure, TEXT("%s: Reading %s failed: %x\n"), kOperation,
                    TEXT("TuningScenario"), static_cast<unsigned>(error));
    for (const ScenarioRow& scenario : TunedScenarios())
        if (Contains(text, scenario.stored)) control = scenario.control;
    return true;
}

// The device instance id of the adapter's connection.
bool ReadInstanceId(const RegistryKey& classKey, WCHAR (&instanceId)[kPathCapacity],
                    DiscoveryFailure& failure) {
    WCHAR guid[kPathCapacity];
    RegistryPath path;
    RegistryKey connection;
    if (!ReadRequired(classKey, kNetCfgInstanceId, guid, failure)) return false;
    if (!MakeConnectionPath(path, guid) || connection.Open(path, kAdapterAccess) != ERROR_SUCCESS)
        return Fail(failure, TEXT("%s: Error opening key of connection: %s\n"), kOperation, guid);
    return ReadRequired(connection, kPnpInstanceId, instanceId, failure);
}

// Takes the device for the second adapter if its id says that it is a port. False when the id can't
// be read.
bool TakeIfPort(DEVINST node, const TuningAdapter& first, TuningAdapter& second, bool& taken,
                DiscoveryFailure& failure) {
    WCHAR id[kPathCapacity] = {};
    if (CM_Get_Device_ID_ExW(node, id, ARRAYSIZE(id), 0, nullptr) != CR_SUCCESS)
        return Fail(failure,
                    TEXT("%s: CM_Get_Device_ID_Ex failed for sibling of DeviceInstanceID %s\n"),
                    kOperation, first.instanceId);
    const bool isEthernet = Contains(id, TEXT("ETH"));
    taken = isEthernet || Contains(id, TEXT("IPOIB"));
    if (!taken) return true;
    second.isEthernet = isEthernet;
    return SUCCEEDED(StringCchCopyW(second.instanceId, ARRAYSIZE(second.instanceId), id));
}

// Finds the port beside the device: the next sibling alone decides where there is one; the last
// child of a parent looks at all others from the first on. False when the tree can't be read.
bool FindSibling(const TuningAdapter& first, TuningAdapter& second, bool& found,
                 DiscoveryFailure& failure) {
    DEVINST node = 0;
    // The interface takes the id as a text that it may change, and doesn't.
    if (CM_Locate_DevNode_ExW(&node, const_cast<LPWSTR>(first.instanceId), CM_LOCATE_DEVNODE_NORMAL,
                              nullptr) != CR_SUCCESS)
        return Fail(failure, TEXT("%s: CM_Locate_DevNode_Ex failed for DeviceInstanceID %s\n"),
                    kOperation, first.instanceId);
    DEVINST sibling = 0;
    if (CM_Get_Sibling_Ex(&sibling, node, 0, nullptr) == CR_SUCCESS)
        return TakeIfPort(sibling, first, second, found, failure);

    DEVINST parent = 0;
    DEVINST child = 0;
    if (CM_Get_Parent_Ex(&parent, node, 0, nullptr) != CR_SUCCESS)
        return Fail(failure, TEXT("%s: CM_Get_Parent_Ex failed for DeviceInstanceID %s\n"),
                    kOperation, first.instanceId);
    if (CM_Get_Child_Ex(&child, parent, 0, nullptr) != CR_SUCCESS)
        return Fail(failure, TEXT("%s: CM_Get_Child_Ex failed for DeviceInstanceID %s parent\n"),
                    kOperation, first.instanceId);
    do {
        if (child == node) continue;
        if (!TakeIfPort(child, first, second, found, failure)) return false;
        if (found) return true;
    } while (CM_Get_Sibling_Ex(&child, child, 0, nullptr) == CR_SUCCESS);
    return true;
}

bool OpenSecondKey(TuningAdapter& second, DiscoveryFailure& failure) {
    WCHAR path[kPathCapacity] = {};
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) return Fail(failure, TEXT("%s: Error opening the log: %s\n"), kOperation, path);
    WCHAR guid[kPathCapacity];
    LONG error =
        FindAdapterGuidByNetKey(&log, kPnpInstanceId, second.instanceId, guid, ARRAYSIZE(guid));
    if (error != ERROR_SUCCESS)
        return Fail(failure,
                    TEXT("%s: FindAdapterGuidByNetKey failed for PnpInstanceID = %s: %x\n"),
                    kOperation, second.instanceId, static_cast<unsigned>(error));
    error = FindAdapterByGuid(&log, guid, second.key);
    return error == ERROR_SUCCESS ||
           Fail(failure, TEXT("%s: FindAdapterByGuid failed for guid \"%s\": %x\n"), kOperation,
                guid, static_cast<unsigned>(error));
}

bool FillContext(AdapterContext& context, DiscoveryFailure& failure) {
    TuningAdapter& first = context.first;
    TuningAdapter& second = context.second;
    const LONG error = first.key.Open(context.identity.classKeyPath, kAdapterAccess);
    if (error != ERROR_SUCCESS)
        return Fail(failure, TEXT("%s: Error opening key: %s: %x\n"), kOperation,
                    context.identity.classKeyPath, static_cast<unsigned>(error));
    if (!ReadIsEthernet(first.key, first.isEthernet, failure) ||
        !ReadStoredScenario(first.key, context.scenarioControl, failure) ||
        !ReadInstanceId(first.key, first.instanceId, failure))
        return false;
    first.number = 1;
    first.present = true;

    bool found = false;
    if (!FindSibling(first, second, found, failure)) return false;
    if (!found) return true;
    if (!OpenSecondKey(second, failure)) return false;
    second.number = 2;
    second.present = true;
    return true;
}

}  // namespace

bool GetKeysInfo(AdapterContext& context, DiscoveryFailure& failure) {
    context.first.present = false;
    context.second.present = false;
    context.scenarioControl = 0;
    if (FillContext(context, failure)) return true;
    context.first.key.Close();
    context.second.key.Close();
    return false;
}

LONG FindAdapterGuidByNetKey(LogStream* log, LPCWSTR valueName, LPCWSTR wanted, LPWSTR guid,
                             size_t capacity) {
    constexpr LPCWSTR operation = TEXT("FindAdapterGuidByNetKey");
    RegistryKey network;
    const LONG error = OpenSearchRoot(log, operation, kNetworkKey, network);
    if (error != ERROR_SUCCESS) return error;

    LONG result = ERROR_NO_MORE_ITEMS;
    AnySubkey(network, [&](LPCWSTR name) {
        RegistryKey subkey;
        RegistryKey connection;
        WCHAR text[kPathCapacity];
        if (subkey.Open(network.Get(), name, KEY_READ) != ERROR_SUCCESS ||
            connection.Open(subkey.Get(), TEXT("Connection"), KEY_QUERY_VALUE) != ERROR_SUCCESS ||
            connection.ReadText(valueName, text, kTextLimit) != ERROR_SUCCESS ||
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

LONG FindAdapterByGuid(LogStream* log, LPCWSTR guid, RegistryKey& key) {
    constexpr LPCWSTR operation = TEXT("FindAdapterByGuid");
    key.Close();
    RegistryKey adapters;
    const LONG error = OpenSearchRoot(log, operation, kAdapterClassKey, adapters);
    if (error != ERROR_SUCCESS) return error;

    const bool found = AnySubkey(adapters, [&](LPCWSTR name) {
        RegistryKey subkey;
        WCHAR text[kPathCapacity];
        if (subkey.Open(adapters.Get(), name, kAdapterAccess) != ERROR_SUCCESS ||
            subkey.ReadText(kNetCfgInstanceId, text, kTextLimit) != ERROR_SUCCESS ||
            !EqualNoCase(text, guid))
            return false;
        key = std::move(subkey);
        return true;
    });
    if (found) return ERROR_SUCCESS;
    LogFormatted(log, TEXT("%s: Adapter GUID not found: %s\n"), operation, guid);
    return ERROR_NO_MORE_ITEMS;
}

bool GetAdapterConnectionName(TuningAdapter& adapter) {
    WCHAR guid[kPathCapacity];
    RegistryPath path;
    RegistryKey connection;
    if (adapter.key.ReadText(kNetCfgInstanceId, guid, kTextLimit) != ERROR_SUCCESS ||
        !MakeConnectionPath(path, guid) || connection.Open(path, KEY_READ) != ERROR_SUCCESS)
        return false;
    connection.ReadText(TEXT("Name"), adapter.connectionName, kNameLimit);
    return true;
}
