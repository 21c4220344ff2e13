#pragma once
// The network component that an operation works on: found by its GUID, with its component id.

#include <windows.h>

#include "AutoClasses.h"
#include "MuxPhysicalAdapter.h"
#include "NetworkComponents.h"

struct LowerObject {
    ScopedReference<INetCfgComponent> component;
    ScopedTaskMemory<WCHAR> id;
};

// Finds the component and reads its id, which isn't empty. NETCFG_E_ADAPTER_NOT_FOUND when there is
// none. Failures print their line.
HRESULT FindLowerObject(NetworkComponents& netCfg, REFGUID guid, LowerObject& found);

// Loads what the MUX tree says of the object; that it says nothing is no failure. Failures print
// their line.
HRESULT LoadLowerObject(CMuxPhysicalAdapter& adapter);
