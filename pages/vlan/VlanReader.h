#pragma once
// How the VLANs of an adapter are found in the registry. The sheet's thread; failures that the user
// is due are shown.

#include <windows.h>

#include "RegistryPaths.h"
#include "VlanList.h"

// The adapter or team whose VLANs a tab shows.
struct VlanAdapter {
    RegistryPath classKeyPath = {};  // below HKEY_LOCAL_MACHINE
    WCHAR guid[kGuidCapacity] = {};
    WCHAR muxDirectory[MAX_PATH] = {};  // of the MUX driver's INF files
};

// Fills the rest of an adapter of which the class key is known, and its list of VLANs. `owner`: for
// message boxes. False when the tab can't work; an adapter without VLANs is no failure.
bool ReadVlanConfiguration(HWND owner, VlanAdapter& adapter, VlanList& vlans);
