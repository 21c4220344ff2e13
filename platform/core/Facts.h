#pragma once
// The facts of the machine, read through the registry's API alone, so that they also serve a real
// Windows whose registry holds them. Reading is quiet.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

namespace platform {

// A REG_SZ below HKEY_LOCAL_MACHINE up to its terminator, or nothing.
std::optional<std::basic_string<WCHAR>> MachineText(const std::basic_string<WCHAR>& path,
                                                    const WCHAR* value);
std::optional<DWORD> MachineNumber(const std::basic_string<WCHAR>& path, const WCHAR* value);
std::optional<std::vector<BYTE>> MachineBytes(const std::basic_string<WCHAR>& path,
                                              const WCHAR* value);
bool MachineKeyExists(const std::basic_string<WCHAR>& path);
// Names of the subkeys in the registry's order; empty when the key isn't there.
std::vector<std::basic_string<WCHAR>> MachineSubkeys(const std::basic_string<WCHAR>& path);
// Names of the values in the registry's order.
std::vector<std::basic_string<WCHAR>> MachineValues(const std::basic_string<WCHAR>& path);
// Writes below HKEY_LOCAL_MACHINE, making the key.
bool WriteMachineNumber(const std::basic_string<WCHAR>& path, const WCHAR* value, DWORD number);
bool WriteMachineText(const std::basic_string<WCHAR>& path, const WCHAR* value,
                      const std::basic_string<WCHAR>& text);
// False when there is no such value or key. A key goes with all below it.
bool DeleteMachineValue(const std::basic_string<WCHAR>& path, const WCHAR* value);
bool DeleteMachineKey(const std::basic_string<WCHAR>& path);

// The same below HKEY_LOCAL_MACHINE\SOFTWARE\StandIn; key may be empty.
std::optional<std::basic_string<WCHAR>> FactText(const std::basic_string<WCHAR>& key,
                                                 const WCHAR* value);
std::optional<DWORD> FactNumber(const std::basic_string<WCHAR>& key, const WCHAR* value);
std::optional<std::vector<BYTE>> FactBytes(const std::basic_string<WCHAR>& key, const WCHAR* value);
std::basic_string<WCHAR> FactPath(const std::basic_string<WCHAR>& key);

// The fields of a text parted by a separator, blanks around each dropped; none for a blank text.
std::vector<std::basic_string<WCHAR>> SplitFields(std::basic_string_view<WCHAR> text,
                                                  WCHAR separator);
// Decimal or, with 0x, hexadecimal; a leading minus is allowed. Nothing when it isn't all digits.
std::optional<long long> ParseNumber(std::basic_string_view<WCHAR> text);
// Decimal, with at least so many digits.
std::basic_string<WCHAR> NumberText(unsigned long long number, std::size_t digits = 1);

}  // namespace platform
