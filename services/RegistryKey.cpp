#include "RegistryKey.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace {

using TextView = std::basic_string_view<WCHAR>;

HRESULT ToHresult(LONG error) {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

}  // namespace

MultiText::Iterator& MultiText::Iterator::operator++() {
    m_text += TextView(m_text).size() + 1;
    return *this;
}

LONG RegistryKey::Open(HKEY parent, LPCWSTR path, REGSAM access, DWORD options) {
    return RegOpenKeyExW(parent, path, options, access, m_key.Receive());
}

LONG RegistryKey::Create(HKEY parent, LPCWSTR path, REGSAM access, bool* created) {
    DWORD disposition = 0;
    const LONG error = RegCreateKeyExW(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                       nullptr, m_key.Receive(), &disposition);
    if (error == ERROR_SUCCESS && created) *created = disposition == REG_CREATED_NEW_KEY;
    return error;
}

LONG RegistryKey::QuerySize(LPCWSTR name, DWORD& size) const {
    DWORD found = 0;
    const LONG error = RegQueryValueExW(m_key.Get(), name, nullptr, nullptr, nullptr, &found);
    if (error == ERROR_SUCCESS) size = found;
    return error;
}

LONG RegistryKey::ReadText(LPCWSTR name, LPWSTR buffer, size_t capacity, DWORD limit) const {
    WCHAR data[kLongestText / sizeof(WCHAR)] = {};
    DWORD size = std::min(limit, kLongestText);
    const LONG error = ReadBytes(name, data, &size);
    if (error != ERROR_SUCCESS) return error;
    TextView text(data, (size + 1) / sizeof(WCHAR));
    text = text.substr(0, text.find(WCHAR{0}));
    if (text.size() >= capacity) return ERROR_MORE_DATA;
    text.copy(buffer, text.size());
    buffer[text.size()] = 0;
    return ERROR_SUCCESS;
}

LONG RegistryKey::ReadDword(LPCWSTR name, DWORD& number) const {
    DWORD found = 0;
    DWORD size = sizeof(found);
    const LONG error = ReadBytes(name, &found, &size);
    if (error == ERROR_SUCCESS) number = found;
    return error;
}

LONG RegistryKey::ReadBytes(LPCWSTR name, void* buffer, DWORD* size) const {
    DWORD length = *size;
    const LONG error =
        RegQueryValueExW(m_key.Get(), name, nullptr, nullptr, static_cast<BYTE*>(buffer), &length);
    if (error == ERROR_SUCCESS) *size = length;
    return error;
}

LONG RegistryKey::ReadMultiText(LPCWSTR name, MultiText& list) const {
    DWORD size = 0;
    LONG error = QuerySize(name, size);
    if (error != ERROR_SUCCESS) return error;
    // Room for an odd last byte, and for both terminators that the data may lack.
    const size_t characters = size / sizeof(WCHAR) + 3;
    std::unique_ptr<WCHAR[]> text(new (std::nothrow) WCHAR[characters]());
    if (!text) return ERROR_NOT_ENOUGH_MEMORY;
    error = ReadBytes(name, text.get(), &size);
    if (error != ERROR_SUCCESS) return error;
    list.m_text = std::move(text);
    list.m_size = size;
    return ERROR_SUCCESS;
}

LONG RegistryKey::WriteText(LPCWSTR name, LPCWSTR text) const {
    return WriteBytes(name, REG_SZ, text,
                      static_cast<DWORD>((TextView(text).size() + 1) * sizeof(WCHAR)));
}

LONG RegistryKey::WriteDword(LPCWSTR name, DWORD number) const {
    return WriteBytes(name, REG_DWORD, &number, sizeof(number));
}

LONG RegistryKey::WriteBytes(LPCWSTR name, DWORD type, const void* data, DWORD size) const {
    return RegSetValueExW(m_key.Get(), name, 0, type, static_cast<const BYTE*>(data), size);
}

LONG RegistryKey::DeleteValue(LPCWSTR name) const {
    return RegDeleteValueW(m_key.Get(), name);
}

LONG RegistryKey::DeleteSubkey(LPCWSTR name) const {
    return RegDeleteKeyW(m_key.Get(), name);
}

LONG RegistryKey::SubkeyName(DWORD index, LPWSTR name, DWORD capacity) const {
    return RegEnumKeyExW(m_key.Get(), index, name, &capacity, nullptr, nullptr, nullptr, nullptr);
}

LONG RegistryKey::QuerySubkeys(DWORD& count, DWORD& longestName) const {
    DWORD subkeys = 0;
    DWORD longest = 0;
    const LONG error = RegQueryInfoKeyW(m_key.Get(), nullptr, nullptr, nullptr, &subkeys, &longest,
                                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (error == ERROR_SUCCESS) {
        count = subkeys;
        longestName = longest;
    }
    return error;
}

HRESULT RegistryKeyEnumerator::Start(HKEY parentKey, LPCWSTR subkeyPath, DWORD options,
                                     REGSAM access) {
    *this = {};
    m_options = options;
    m_access = access;
    LONG error = m_key.Open(parentKey, subkeyPath, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS);
    if (error == ERROR_FILE_NOT_FOUND) return S_FALSE;
    DWORD longestName = 0;
    if (error == ERROR_SUCCESS) error = m_key.QuerySubkeys(m_count, longestName);
    if (error != ERROR_SUCCESS) return ToHresult(error);
    m_capacity = longestName + 1;
    m_name.reset(new (std::nothrow) WCHAR[m_capacity]());
    if (!m_name) {
        m_count = 0;
        return E_OUTOFMEMORY;
    }
    return Next();
}

HRESULT RegistryKeyEnumerator::Next() {
    m_subkey.Close();
    if (m_index >= m_count) return S_FALSE;
    LONG error = m_key.SubkeyName(m_index++, m_name.get(), m_capacity);
    if (error == ERROR_NO_MORE_ITEMS) return S_FALSE;
    if (error == ERROR_SUCCESS && m_access != 0)
        error = m_subkey.Open(m_key.Get(), m_name.get(), m_access, m_options);
    return error == ERROR_SUCCESS ? S_OK : ToHresult(error);
}
