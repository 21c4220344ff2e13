#pragma once
// The MUX driver's registry tree: one entry (subkey) a lower object, in which `UpperBindings` lists
// the device names of the virtual miniports over it. Only while the engine's write lock is held.
// Results are Windows error codes, 0 for success.

#include <windows.h>
#include <objbase.h>
#include <memory>

#include "RegistryKey.h"

// Values of an entry.
inline constexpr WCHAR kUpperBindings[] = TEXT("UpperBindings");
inline constexpr WCHAR kTeamDeviceName[] = TEXT("TeamDeviceName");
inline constexpr WCHAR kTeamName[] = TEXT("TeamName");
inline constexpr WCHAR kTeamType[] = TEXT("TeamType");
inline constexpr WCHAR kTeamGuid[] = TEXT("TeamGuid");
inline constexpr WCHAR kPrimaryAdapterGuid[] = TEXT("PrimaryAdapterGuid");
inline constexpr WCHAR kFallBackToPrimary[] = TEXT("FallBackToPrimary");
inline constexpr WCHAR kL2Protocol[] = TEXT("L2Protocol");
inline constexpr WCHAR kTeamMacAddress[] = TEXT("TeamMacAddress");

// A GUID as text: 38 characters in braces, in a field whose rest is zero.
class GuidString {
  public:
    explicit GuidString(REFGUID guid) { StringFromGUID2(guid, m_text, ARRAYSIZE(m_text)); }
    LPCWSTR Get() const { return m_text; }
    // The whole field as a REG_SZ.
    LONG WriteTo(const RegistryKey& key, LPCWSTR name) const {
        return key.WriteBytes(name, REG_SZ, m_text, sizeof(m_text));
    }

  private:
    WCHAR m_text[64] = {};
};

// The GUID that the text names; zero when it is none.
GUID ParseGuid(LPCWSTR text);

// "\Device\" and the GUID text; null when memory runs out.
std::unique_ptr<WCHAR[]> MakeDeviceName(LPCWSTR guid);
// What follows the last backslash of a device name; null when it has none. Points into the name.
LPCWSTR GuidStringFromDeviceName(LPCWSTR deviceName);

// Adds the device name at the front of `UpperBindings`, whether it is there or not. On failure the
// value is as it was.
LONG HrPrependUpperBinding(const RegistryKey& entry, LPCWSTR deviceName);
// Takes the device name, in whatever case, out of `UpperBindings`, and the value away when nothing
// is left. Without such a name the value stays as it is. ERROR_FILE_NOT_FOUND without the value; on
// failure it is as it was.
LONG HrRemoveUpperBinding(const RegistryKey& entry, LPCWSTR deviceName);

// Opens the entry of a lower object, or makes it, with all rights. `created` (may be null) tells
// which.
LONG CreateMuxEntry(REFGUID lower, RegistryKey& entry, bool* created = nullptr);
LONG OpenMuxEntry(REFGUID lower, RegistryKey& entry);
// Deletes the entry. The tree must be there.
LONG DeleteMuxEntry(REFGUID lower);

// A Windows error code as an HRESULT.
inline HRESULT ToResult(LONG error) {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

// Whether two texts are equal without regard to case.
inline bool IsSameText(LPCWSTR a, LPCWSTR b) {
    return CompareStringOrdinal(a, -1, b, -1, TRUE) == CSTR_EQUAL;
}
