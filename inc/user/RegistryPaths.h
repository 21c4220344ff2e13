#pragma once
// The paths of the registry keys that several subsystems use, all below HKEY_LOCAL_MACHINE. Any
// thread. A function that builds a path gives false when it is longer than the buffer.

#include <windows.h>
#include <cstddef>

inline constexpr size_t kPathCapacity = 260;  // characters, with terminator
using RegistryPath = WCHAR[kPathCapacity];

inline constexpr WCHAR kVendorKey[] = TEXT("SOFTWARE\\Corvanta");
inline constexpr WCHAR kInstalledPath[] =
    TEXT("InstalledPath");  // a value of it, ends with a backslash
inline constexpr WCHAR kEnumRoot[] = TEXT("SYSTEM\\CurrentControlSet\\Enum");
inline constexpr WCHAR kClassRoot[] = TEXT("SYSTEM\\CurrentControlSet\\Control\\Class");
// The class keys of network adapters, and the keys of their connections by GUID text.
inline constexpr WCHAR kAdapterClassKey[] =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\class\\{4D36E972-E325-11CE-BFC1-08002BE10318}");
inline constexpr WCHAR kNetworkKey[] =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}");
// Entries of the MUX driver, one a lower object, by GUID text.
inline constexpr WCHAR kMuxAdaptersRoot[] =
    TEXT("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters");

// Values by which the keys of one adapter are found.
inline constexpr WCHAR kNetCfgInstanceId[] = TEXT("NetCfgInstanceId");
inline constexpr WCHAR kPnpInstanceId[] = TEXT("PnpInstanceID");

// The class key that a device's `Driver` text names.
bool MakeClassKeyPath(RegistryPath& path, LPCWSTR driver);
// The key of a network connection. adapter: its GUID text.
bool MakeConnectionPath(RegistryPath& path, LPCWSTR adapter);
// The entry of a lower object in the MUX driver's tree. adapter: its GUID text.
bool MakeMuxAdapterPath(RegistryPath& path, LPCWSTR adapter);
