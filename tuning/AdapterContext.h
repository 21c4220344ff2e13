#pragma once
// The state of the Performance tab: the ports to tune, and what a run needs to know of them.

#include <windows.h>
#include <setupapi.h>

#include "AdapterIdentity.h"
#include "RegistryKey.h"

// One port to tune.
struct TuningAdapter {
    bool present = false;
    bool isEthernet = false;  // else IP over InfiniBand
    BYTE number = 0;          // 1: the sheet's adapter, 2: its sibling; stays with the record
    RegistryKey key;          // class key, for reading, setting values and making subkeys
    WCHAR instanceId[kPathCapacity] = {};
    WCHAR connectionName[kPathCapacity] = {};  // filled when a run asks for it
};

struct AdapterContext {
    ULONG noRegistryChange = 1;  // cleared by the first change of a TCP or AFD setting
    AdapterIdentity identity;
    TuningAdapter first;
    LONG scenarioControl = 0;  // control id that the stored scenario names, or 0
    TuningAdapter second;
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> interfaceDetail;  // held for the tab's life
};
