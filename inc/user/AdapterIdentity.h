#pragma once
// Who the adapter of a provider call is. Every tab copies what it needs of it.

#include <windows.h>

#include "AutoClasses.h"
#include "RegistryPaths.h"

struct AdapterIdentity {
    WCHAR netCfgInstanceId[kPathCapacity] = {};  // GUID in braces
    RegistryPath classKeyPath = {};              // below HKEY_LOCAL_MACHINE
};

struct AdapterFlags {
    ScopedLocal<WCHAR> deviceInstanceId;
    bool isVlanMiniport = false;
    bool isTeamMiniport = false;
    bool isTeamMember = false;
    bool isIpoib = false;  // else Ethernet
};
