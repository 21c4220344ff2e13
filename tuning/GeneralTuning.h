#pragma once
// Prepares the machine's TCP settings for any scenario: two netsh commands and three values of the
// Tcpip and AFD services. They take effect after a reboot, so `noRegistryChange` of the context
// tells afterwards whether one is due. The sheet's thread.

#include <windows.h>
#include <span>

#include "AdapterContext.h"
#include "TuningLog.h"

struct RegistrySetting {
    LPCWSTR name;
    DWORD type;   // registry type, and the same number is the length of the data: REG_DWORD
    DWORD value;  // target
};

// A value as it was before a change.
struct SavedSetting {
    LPCWSTR name = TEXT("");  // empty: there was no such value
    DWORD type = 0;
    DWORD value = 0;
};

// The whole of it, with a log of its own. The first change of a setting needs the user's consent,
// asked over `page`. False when a step failed or the user declined.
bool RunGeneralTuning(AdapterContext& context, HWND page);

// Brings each value of the open key to its target. `path` names the key in the log. On failure the
// changes made so far are taken back and the result is false.
bool SetRegistryKeys(LogStream* log, std::span<const RegistrySetting> table, const RegistryKey& key,
                     AdapterContext& context, HWND page, LPCWSTR path);
// Writes the saved values back; one that didn't exist stays. False at the first that can't be.
bool RevertRegistryKeys(LogStream* log, std::span<const SavedSetting> saved,
                        const RegistryKey& key);
// Deletes the values and logs each that was there.
void DeleteRegistryKeys(const RegistryKey& key, std::span<const RegistrySetting> table,
                        LogStream* log, LPCWSTR path);
