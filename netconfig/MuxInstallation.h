#pragma once
// Installation and removal of the MUX driver's own network component, which VLANs and teams need,
// and of its INF files in the system's store. The calling thread has COM initialised; the engine's
// write lock is held meanwhile. Failures print diagnostic lines; nothing is shown.

#include <windows.h>

// The class of the component to install.
enum MuxComponentClass : DWORD {
    eMUX_CLASS_CLIENT = 0,
    eMUX_CLASS_SERVICE = 1,
    eMUX_CLASS_PROTOCOL = 2,
    eMUX_CLASS_ADAPTER = 3,
};

// Installs the component that muxp.inf names unless it is there, and copies mux_mp.inf to the
// store. directory: of the two INF files, without a backslash at its end. 0 or NETCFG_S_REBOOT on
// success; NETCFG_E_NO_WRITE_LOCK when another program holds the lock; 0x80070002 when an INF file
// is missing.
HRESULT InstallMuxComponent(LPCWSTR directory, DWORD classIndex);

// Removes muxp.inf from the store and the component.
HRESULT UninstallMuxComponent();

// UninstallMuxComponent when the system counts no virtual miniport. Does nothing when that count's
// key can't be opened.
void UninstallMuxIfUnused();
