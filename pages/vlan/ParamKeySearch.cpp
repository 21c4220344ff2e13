#include "ParamKeySearch.h"

#include <new>
#include <string_view>
#include <utility>

#include "../../resources/resource.h"
#include "Messages.h"
#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

constexpr DWORD kSubkeyNameCapacity = 260;  // characters

}  // namespace

RegistryKey ParamKeySearch::Find(LPCWSTR guid) {
    // What couldn't be read may be readable now.
    if (m_isUncertain) *this = {};
    if (!Begin()) return {};
    size_t place = 0;
    while (!m_index.Find(guid, place))
        if (m_read == m_count || !ReadNext()) return {};
    Subkey& found = m_subkeys[place];
    return found.key ? std::move(found.key) : OpenSubkey(static_cast<DWORD>(place));
}

bool ParamKeySearch::Begin() {
    if (m_subkeys) return true;
    const LONG error = m_classKey.Open(kAdapterClassKey, KEY_READ);
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return false;
    }
    DWORD longestName = 0;
    m_classKey.QuerySubkeys(m_count, longestName);
    if (m_count == 0 || !m_index.Reserve(m_count)) return false;
    m_subkeys.reset(new (std::nothrow) Subkey[m_count]);
    return m_subkeys != nullptr;
}

// A closed key when that fails.
RegistryKey ParamKeySearch::OpenSubkey(DWORD place) const {
    WCHAR name[kSubkeyNameCapacity];
    WCHAR path[ARRAYSIZE(kAdapterClassKey) + kSubkeyNameCapacity];
    RegistryKey subkey;
    if (m_classKey.SubkeyName(place, name, ARRAYSIZE(name)) == ERROR_SUCCESS &&
        SUCCEEDED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%s\\%s"), kAdapterClassKey, name)))
        subkey.Open(path, KEY_ALL_ACCESS);
    return subkey;
}

// Reads the next subkey, and keeps it open only if it has a GUID. False when it can't be opened.
bool ParamKeySearch::ReadNext() {
    RegistryKey key = OpenSubkey(m_read);
    if (!key) return false;
    Subkey& subkey = m_subkeys[m_read];
    const LONG error = key.ReadText(kNetCfgInstanceId, subkey.guid);
    if (error == ERROR_SUCCESS) {
        subkey.key = std::move(key);
        m_index.Add(subkey.guid, m_read);
    } else if (error != ERROR_FILE_NOT_FOUND && error != ERROR_MORE_DATA) {
        m_isUncertain = true;
    }
    ++m_read;
    return true;
}
