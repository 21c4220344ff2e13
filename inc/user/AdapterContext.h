#pragma once
// What a provider call finds out about its adapter. The context lives on as the Performance page's
// object; the flags live for the call only.

#include <windows.h>
#include <setupapi.h>

#include "AutoClasses.h"

inline constexpr size_t kPathCapacity = 260;  // characters, with terminator

// One port to tune.
struct TuningAdapter {
    bool present = false;
    bool isEthernet = false;  // else IP over InfiniBand
    BYTE number = 0;          // 1: the sheet's adapter, 2: its sibling; stays with the record
    ScopedRegKey key;         // class key, for reading, setting values and making subkeys
    WCHAR instanceId[kPathCapacity] = {};
    WCHAR connectionName[kPathCapacity] = {};  // filled when a run asks for it
};

struct AdapterContext {
    ULONG noRegistryChange = 0;  // cleared by the first change of a TCP or AFD setting
    WCHAR netCfgInstanceId[kPathCapacity] = {};  // GUID in braces
    WCHAR classKeyPath[kPathCapacity] = {};      // below HKEY_LOCAL_MACHINE
    TuningAdapter first;
    LONG scenarioControl = 0;  // control id that the stored scenario names, or 0
    TuningAdapter second;
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> interfaceDetail;
};

struct AdapterFlags {
    ScopedLocal<WCHAR> deviceInstanceId;
    bool isVlanMiniport = false;
    bool isTeamMiniport = false;
    bool isTeamMember = false;
    bool isIpoib = false;  // else Ethernet
};
