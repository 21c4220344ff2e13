#pragma once
// Small registry operations that several tabs need. Any thread. Paths are below HKEY_LOCAL_MACHINE.

#include <windows.h>
#include <cstddef>

// Reads a value of any type into `buffer` of `*size` bytes; on success `*size` is its length in
// bytes. Nothing is terminated.
bool ReadHklmValue(LPCWSTR subkey, LPCWSTR name, void* buffer, DWORD* size);
// Writes a REG_SZ of `size` bytes. A failure is shown to the user.
bool WriteHklmString(LPCWSTR subkey, LPCWSTR name, const void* data, DWORD size);
// Deletes a value. True when it is gone, also when it wasn't there; a failure is shown to the user.
bool DeleteRegistryValue(LPCWSTR subkey, LPCWSTR name);

// The MUX package's directory, "<InstalledPath>Vlan_lbfo", into `buffer` of `capacity` characters.
// 0 or the failure. `owner`: the window for messages of a failure; null for none.
HRESULT GetMuxInstallDir(LPWSTR buffer, size_t capacity, HWND owner);
// True when muxp.inf and mux_mp.inf both lie there.
bool IsMuxPackagePresent();

// Whether the adapter's entry in the MUX tree has that value, even an empty one. `adapter`: its
// GUID text.
bool HasUpperBindings(LPCWSTR adapter);
bool HasTeamDeviceName(LPCWSTR adapter);
