#include "GeneralTuning.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "../resources/resource.h"
#include "Messages.h"

namespace {

constexpr REGSAM kServiceAccess = KEY_READ | KEY_WRITE;  // 0x2001F
constexpr int kLastLaunchError = 31;  // WinExec gives more than that when it has succeeded

constexpr WCHAR kTcpipPath[] = TEXT("SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters");
constexpr WCHAR kAfdPath[] = TEXT("SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters");

const RegistrySetting kTcpipDeleted[] = {{TEXT("GlobalMaxTcpWindowSize"), REG_DWORD, 0}};
const RegistrySetting kTcpipTargets[] = {{TEXT("SackOpts"), REG_DWORD, 0}};
const RegistrySetting kAfdTargets[] = {{TEXT("FastSendDatagramThreshold"), REG_DWORD, 0x10000}};

constexpr LPCSTR kCommands[] = {
    "netsh int tcp set global rss = enabled",
    "netsh int tcp set global timestamps=disabled",
};

void RunCommands(LogStream* log) {
    int results[ARRAYSIZE(kCommands)];
    for (const LPCSTR command : kCommands)
        LogFormatted(log, TEXT("Executing: %S\n"), command);
    for (size_t i = 0; i < ARRAYSIZE(kCommands); ++i)
        results[i] = static_cast<int>(WinExec(kCommands[i], SW_HIDE));
    for (size_t i = 0; i < ARRAYSIZE(kCommands); ++i) {
        if (results[i] == -1)
            LogFormatted(log, TEXT("netsh command %S failed\n"), kCommands[i]);
        else if (results[i] <= kLastLaunchError)
            LogFormatted(log, TEXT("netsh command %S failed with error %8d\n"), kCommands[i],
                         results[i]);
    }
}

bool OpenServiceKey(LPCWSTR path, RegistryKey& key) {
    const LONG error = key.Open(path, kServiceAccess);
    if (error == ERROR_SUCCESS) return true;
    ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
    return false;
}

// Saves the value that the key holds: of any type, the first 32 bits. False, after a message,
// when it is there and can't be read.
bool SaveSetting(const RegistryKey& key, const RegistrySetting& row, SavedSetting& saved) {
    DWORD size = 0;
    const LONG error = key.QuerySize(row.name, size);
    if (error == ERROR_FILE_NOT_FOUND) return true;
    if (error != ERROR_SUCCESS || size == 0) {
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return false;
    }
    // More than was asked for, in case the value grows meanwhile.
    const auto capacity =
        static_cast<DWORD>(std::min<ULONGLONG>(ULONGLONG{row.type} * size, static_cast<DWORD>(-1)));
    const std::unique_ptr<BYTE[]> data(new (std::nothrow) BYTE[capacity]());
    if (!data) return false;
    size = capacity;
    if (key.ReadBytes(row.name, data.get(), &size) != ERROR_SUCCESS) {
        ShowMessage(GetForegroundWindow(), IDS_QUERY_FAILED, TEXT("Error"), MB_OK, {row.name});
        return false;
    }
    saved.name = row.name;
    saved.type = row.type;
    std::memcpy(&saved.value, data.get(), std::min<size_t>(capacity, sizeof(saved.value)));
    return true;
}

// The first change of a run needs consent; further ones are covered by it.
bool MayChange(AdapterContext& context, HWND page) {
    if (context.noRegistryChange == 0) return true;
    if (MessageBoxW(page,
                    TEXT("This feature will tune the Tessaron driver and TCP Registry parameters "
                         "to improve performance. For the changes to take effect, you will be "
                         "asked to reboot your machine.\n\nClick OK to continue, or Cancel to "
                         "abort."),
                    TEXT("GeneralTuning"), MB_OKCANCEL | MB_ICONINFORMATION) != IDOK)
        return false;
    context.noRegistryChange = 0;
    return true;
}

bool ApplySetting(LogStream* log, const RegistrySetting& row, const SavedSetting& saved,
                  const RegistryKey& key, LPCWSTR path) {
    if (key.WriteBytes(row.name, row.type, &row.value, row.type) != ERROR_SUCCESS) return false;
    if (*saved.name)
        LogFormatted(log, TEXT("Change Registry value %s\\%s from 0x%x to 0x%x"), path, row.name,
                     static_cast<unsigned>(saved.value), static_cast<unsigned>(row.value));
    else
        LogFormatted(log, TEXT("New Registry entry %s\\%s added with value 0x%x"), path, row.name,
                     static_cast<unsigned>(row.value));
    return true;
}

bool TuneSetting(LogStream* log, const RegistrySetting& row, SavedSetting& saved,
                 const RegistryKey& key, AdapterContext& context, HWND page, LPCWSTR path) {
    if (!SaveSetting(key, row, saved)) return false;
    if (*saved.name && saved.value == row.value) return true;
    return MayChange(context, page) && ApplySetting(log, row, saved, key, path);
}

}  // namespace

bool RunGeneralTuning(AdapterContext& context, HWND page) {
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) return false;
    LogLine(&log, context.first.isEthernet
                      ? TEXT("Start Corvanta Tessaron Ethernet general performance tuning.")
                      : TEXT("Start Corvanta Tessaron IPoIB general performance tuning."));
    RunCommands(&log);

    context.noRegistryChange = 1;
    RegistryKey key;
    if (!OpenServiceKey(kTcpipPath, key)) return false;
    DeleteRegistryKeys(key, kTcpipDeleted, &log, kTcpipPath);
    if (!SetRegistryKeys(&log, kTcpipTargets, key, context, page, kTcpipPath)) return false;
    return OpenServiceKey(kAfdPath, key) &&
           SetRegistryKeys(&log, kAfdTargets, key, context, page, kAfdPath);
}

bool SetRegistryKeys(LogStream* log, std::span<const RegistrySetting> table, const RegistryKey& key,
                     AdapterContext& context, HWND page, LPCWSTR path) {
    const std::unique_ptr<SavedSetting[]> saved(new (std::nothrow) SavedSetting[table.size()]);
    size_t finished = 0;
    while (saved && finished < table.size() &&
           TuneSetting(log, table[finished], saved[finished], key, context, page, path))
        ++finished;

    if (saved && finished == table.size()) {
        if (context.noRegistryChange != 0)
            LogFormatted(log, TEXT("No Registry Change Needed for %s"), path);
        return true;
    }
    if (!RevertRegistryKeys(log, {saved.get(), finished}, key))
        LogFormatted(log, TEXT("%s: Reverting Failed, Registry Keys indeterminate."), path);
    LogFormatted(log, TEXT("%s: Registry Tuning Failed"), path);
    return false;
}

bool RevertRegistryKeys(LogStream* log, std::span<const SavedSetting> saved,
                        const RegistryKey& key) {
    for (const SavedSetting& row : saved) {
        if (!*row.name) continue;
        if (key.WriteBytes(row.name, row.type, &row.value, row.type) != ERROR_SUCCESS) return false;
        LogFormatted(log, TEXT("Reverting %s to %x"), row.name, static_cast<unsigned>(row.value));
    }
    return true;
}

void DeleteRegistryKeys(const RegistryKey& key, std::span<const RegistrySetting> table,
                        LogStream* log, LPCWSTR path) {
    for (const RegistrySetting& row : table)
        if (key.DeleteValue(row.name) == ERROR_SUCCESS)
            LogFormatted(log, TEXT("Delete Registry value %s\\%s"), path, row.name);
}
