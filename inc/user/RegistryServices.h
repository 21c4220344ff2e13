#pragma once
// Small registry operations that several tabs need. Any thread. Paths are below HKEY_LOCAL_MACHINE.

#include <windows.h>

// The one reader of text values. Fills `buffer` of `capacity` characters, always terminated, from a
// value of any type and at most `limit` bytes, taken as text up to its first terminator; an odd
// last byte is the low one of a character. Borrows the key. ERROR_MORE_DATA: longer than limit or
// buffer; else the system's error. On failure `buffer` is empty.
LONG ReadRegistryText(HKEY key, LPCWSTR name, LPWSTR buffer, size_t capacity, DWORD limit);

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

inline constexpr WCHAR kVendorKey[] = TEXT("SOFTWARE\\Corvanta");
inline constexpr WCHAR kInstalledPath[] =
    TEXT("InstalledPath");  // a value of it, ends with a backslash
inline constexpr WCHAR kClassRoot[] = TEXT("SYSTEM\\CurrentControlSet\\Control\\Class");
inline constexpr WCHAR kEnumRoot[] = TEXT("SYSTEM\\CurrentControlSet\\Enum");
// Entries of the MUX driver, one a lower object, by GUID text.
inline constexpr WCHAR kMuxAdaptersRoot[] =
    TEXT("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters");
