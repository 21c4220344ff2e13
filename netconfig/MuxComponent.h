#pragma once
// The MUX driver's own component in an open install session, and what its INF file says. Results
// are HRESULTs; failures print their line unless it is said.

#include <windows.h>
#include <netcfgx.h>
#include <setupapi.h>

#include "AutoClasses.h"
#include "NetworkComponents.h"

// The MUX component among the network adapters: its GUID, and the component when asked for (may be
// null). Prints what it knows of each component that it looks at. S_OK with `guid` as it was when
// there is none.
HRESULT GetOurGuid(const NetworkComponents& netCfg, GUID& guid,
                   ScopedReference<INetCfgComponent>* component = nullptr);

// Copies the INF file to the store and installs the component from it, unless it is there. 0 or
// NETCFG_S_REBOOT on success; prints no line when the user has cancelled it.
HRESULT InstallSpecifiedComponent(INetCfg& netCfg, LPCWSTR infPath, LPCWSTR componentId,
                                  REFGUID classGuid);
// Removes the MUX component. S_OK or S_FALSE also when there is none. Prints no line.
HRESULT RemoveMuxComponent(INetCfg& netCfg);

// The field of the first line of a section; field 0 is the line's key. Prints no line.
HRESULT GetInfField(HINF inf, LPCWSTR section, DWORD field, ScopedTaskMemory<WCHAR>& text);

// Of the INF functions: the last failure of the thread.
inline HRESULT LastFailure() {
    return HRESULT_FROM_WIN32(GetLastError());
}
