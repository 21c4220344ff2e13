#pragma once
// Finds out what the Performance tab needs to know of its adapter and of the sibling port on the
// same card, from the registry and the device tree. The sheet's thread.

#include "AdapterContext.h"
#include "TuningLog.h"

// Why a discovery failed, as a line for the log.
struct DiscoveryFailure {
    WCHAR text[kLogTextCapacity] = {};
};

// Fills `first`, `second` and `scenarioControl` of a context whose identity is set, and
// leaves the class keys open in them. True also when there is no sibling; `second.present` tells.
// On failure no key stays open; go by the result, not by `first.present`.
bool GetKeysInfo(AdapterContext& context, DiscoveryFailure& failure);

// Searches the network connections for the one whose value `valueName` equals `wanted`, without
// regard to case. 0 with its network GUID in `guid` of `capacity` characters; ERROR_NO_MORE_ITEMS
// when there is none, else the error that ended the search. Failures are logged.
LONG FindAdapterGuidByNetKey(LogStream* log, LPCWSTR valueName, LPCWSTR wanted, LPWSTR guid,
                             size_t capacity);
// Searches the adapters' class keys for the one of that network GUID, without regard to case. 0
// with the key open for reading, setting values and making subkeys; ERROR_NO_MORE_ITEMS when there
// is none, else the error that ended the search, with no key. Failures are logged.
LONG FindAdapterByGuid(LogStream* log, LPCWSTR guid, RegistryKey& key);

// Fills `connectionName` from the adapter's connection. False when the connection isn't found; a
// connection without a name leaves the field as it was and gives true.
bool GetAdapterConnectionName(TuningAdapter& adapter);
