// The registry's functions, with the checks and error codes of Windows.
//
// Rights count where Windows checks them: reading, setting and enumerating need the handle to have
// been opened for it; opening, creating and deleting a subkey depend on the key's own security,
// which lets an administrator do everything here.

#include <winreg.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include <winerror.h>

#include "Call.h"
#include "Registry.h"

using platform::Call;
using platform::Registry;
using platform::RegistryKey;
using platform::RegistryTree;
using platform::RegistryValue;

namespace {

std::u16string_view TextOf(LPCWSTR text) {
    return text ? std::u16string_view(text) : std::u16string_view();
}

// What Windows has against a subkey's path before it looks for the key.
LSTATUS CheckPath(std::u16string_view path) {
    if (!path.empty() && path.front() == u'\\') return ERROR_BAD_PATHNAME;
    for (auto part = platform::NextPathPart(path); !part.empty();
         part = platform::NextPathPart(path)) {
        if (part.size() > platform::maxKeyName) return ERROR_INVALID_PARAMETER;
    }
    return ERROR_SUCCESS;
}

// Gives out a name with its terminator. length: in, the buffer's capacity with the terminator; out,
// what was written without it; kept when the buffer is too short.
LSTATUS GiveName(std::u16string_view name, LPWSTR buffer, LPDWORD length) {
    if (*length <= name.size()) return ERROR_MORE_DATA;
    std::copy(name.begin(), name.end(), buffer);
    buffer[name.size()] = u'\0';
    *length = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

// Keys have no class here, which reads as an empty one.
LSTATUS GiveClass(LPWSTR buffer, LPDWORD length) {
    if (buffer != nullptr) return GiveName({}, buffer, length);
    if (length != nullptr) *length = 0;
    return ERROR_SUCCESS;
}

// Any of type, data and size may be null; size comes with data.
LSTATUS GiveData(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) {
    if (type != nullptr) *type = value.Type();
    if (size == nullptr) return ERROR_SUCCESS;
    const auto bytes = value.Data();
    const DWORD capacity = *size;
    *size = static_cast<DWORD>(bytes.size());
    if (data == nullptr) return ERROR_SUCCESS;
    if (capacity < bytes.size()) return ERROR_MORE_DATA;
    std::copy(bytes.begin(), bytes.end(), data);
    return ERROR_SUCCESS;
}

template <class T>
void Give(T* place, T number) {
    if (place != nullptr) *place = number;
}

template <class Range, class Measure>
DWORD Longest(const Range& range, Measure measure) {
    std::size_t longest = 0;
    for (const auto& item : range)
        longest = std::max<std::size_t>(longest, measure(item));
    return static_cast<DWORD>(longest);
}

}  // namespace

LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY result) {
    Call call("RegOpenKeyExW", subkey, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.Status();
    if (result == nullptr || options != 0) return ERROR_INVALID_PARAMETER;
    Registry& registry = call.machine.Get<Registry>();
    *result = nullptr;
    const Registry::Use parent = registry.Find(key, 0);
    if (parent.status != ERROR_SUCCESS) return parent.status;
    const std::u16string_view path = TextOf(subkey);
    if (path.empty() && Registry::PredefinedRoot(key)) {
        *result = key;
        return ERROR_SUCCESS;
    }
    if (const LSTATUS bad = CheckPath(path)) return bad;
    auto found = registry.Tree().Find(parent.key, path);
    if (!found) return ERROR_FILE_NOT_FOUND;
    if (Registry::MapAccess(access) == 0) return ERROR_ACCESS_DENIED;
    *result = registry.Open(std::move(found), access, call.Name());
    return ERROR_SUCCESS;
}

LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR keyClass,
                               DWORD options, REGSAM access, const LPSECURITY_ATTRIBUTES attributes,
                               PHKEY result, LPDWORD disposition) {
    (void)keyClass;
    (void)attributes;
    Call call("RegCreateKeyExW", subkey, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.Status();
    if (subkey == nullptr) return ERROR_BADKEY;
    if (result == nullptr || reserved != 0 || options != REG_OPTION_NON_VOLATILE)
        return ERROR_INVALID_PARAMETER;
    Registry& registry = call.machine.Get<Registry>();
    *result = nullptr;
    const Registry::Use parent = registry.Find(key, 0);
    if (parent.status != ERROR_SUCCESS) return parent.status;
    if (const LSTATUS bad = CheckPath(subkey)) return bad;
    if (Registry::MapAccess(access) == 0) return ERROR_ACCESS_DENIED;
    bool isNew = false;
    auto made = registry.Tree().Create(parent.key, subkey, &isNew);
    if (!made) return ERROR_INVALID_PARAMETER;
    *result = registry.Open(std::move(made), access, call.Name());
    Give<DWORD>(disposition, isNew ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI RegCloseKey(HKEY key) {
    Call call("RegCloseKey");
    return call.machine.Get<Registry>().Close(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR value, LPDWORD reserved, LPDWORD type,
                                LPBYTE data, LPDWORD size) {
    Call call("RegQueryValueExW", value);
    if (call.Failed()) return call.Status();
    if (reserved != nullptr || (data != nullptr && size == nullptr)) return ERROR_INVALID_PARAMETER;
    Registry& registry = call.machine.Get<Registry>();
    const Registry::Use use = registry.Find(key, KEY_QUERY_VALUE);
    if (use.status != ERROR_SUCCESS) return use.status;
    if (registry.onQuery) registry.onQuery(*use.key, TextOf(value));
    const RegistryValue* found = use.key->FindValue(TextOf(value));
    return found ? GiveData(*found, type, data, size) : ERROR_FILE_NOT_FOUND;
}

LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR value, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
    Call call("RegSetValueExW", value, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.Status();
    if (reserved != 0) return ERROR_INVALID_PARAMETER;
    if (data == nullptr && size != 0) return ERROR_NOACCESS;
    Registry& registry = call.machine.Get<Registry>();
    const Registry::Use use = registry.Find(key, KEY_SET_VALUE);
    if (use.status != ERROR_SUCCESS) return use.status;
    const std::u16string_view name = TextOf(value);
    if (name.size() > platform::maxValueName || size > platform::maxValueData)
        return ERROR_INVALID_PARAMETER;
    registry.Tree().SetValue(*use.key, name, type, {data, size});
    return ERROR_SUCCESS;
}

LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR value) {
    Call call("RegDeleteValueW", value, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.Status();
    Registry& registry = call.machine.Get<Registry>();
    const Registry::Use use = registry.Find(key, KEY_SET_VALUE);
    if (use.status != ERROR_SUCCESS) return use.status;
    return registry.Tree().DeleteValue(*use.key, TextOf(value)) ? ERROR_SUCCESS
                                                                : ERROR_FILE_NOT_FOUND;
}

LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subkey) {
    Call call("RegDeleteKeyW", subkey, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.Status();
    if (subkey == nullptr) return ERROR_INVALID_PARAMETER;
    Registry& registry = call.machine.Get<Registry>();
    const Registry::Use parent = registry.Find(key, 0);
    if (parent.status != ERROR_SUCCESS) return parent.status;
    if (const LSTATUS bad = CheckPath(subkey)) return bad;
    const auto found = registry.Tree().Find(parent.key, subkey);
    if (!found) return ERROR_FILE_NOT_FOUND;
    if (found->IsRoot() || !found->Children().empty()) return ERROR_ACCESS_DENIED;
    registry.Tree().Delete(found);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR subkey) {
    Call call("RegDeleteTreeW", subkey, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.Status();
    Registry& registry = call.machine.Get<Registry>();
    const std::u16string_view path = TextOf(subkey);
    constexpr REGSAM emptying = KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE;
    const Registry::Use use = registry.Find(key, path.empty() ? emptying : 0);
    if (use.status != ERROR_SUCCESS) return use.status;
    if (path.empty()) {
        registry.Tree().Empty(*use.key);
        return ERROR_SUCCESS;
    }
    if (const LSTATUS bad = CheckPath(path)) return bad;
    const auto found = registry.Tree().Find(use.key, path);
    if (!found) return ERROR_FILE_NOT_FOUND;
    if (found->IsRoot()) return ERROR_ACCESS_DENIED;
    registry.Tree().Delete(found);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                             LPWSTR keyClass, LPDWORD classLength, PFILETIME lastWrite) {
    Call call("RegEnumKeyExW");
    if (call.Failed()) return call.Status();
    if (name == nullptr || length == nullptr || reserved != nullptr ||
        (keyClass != nullptr && classLength == nullptr))
        return ERROR_INVALID_PARAMETER;
    Registry& registry = call.machine.Get<Registry>();
    const Registry::Use use = registry.Find(key, KEY_ENUMERATE_SUB_KEYS);
    if (use.status != ERROR_SUCCESS) return use.status;
    const std::u16string* subkey = registry.NthSubkey(key, *use.key, index);
    if (subkey == nullptr) return ERROR_NO_MORE_ITEMS;
    if (const LSTATUS tooShort = GiveName(*subkey, name, length)) return tooShort;
    Give(lastWrite, FILETIME{});
    return GiveClass(keyClass, classLength);
}

LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                             LPDWORD type, LPBYTE data, LPDWORD size) {
    Call call("RegEnumValueW");
    if (call.Failed()) return call.Status();
    if (name == nullptr || length == nullptr || reserved != nullptr ||
        (data != nullptr && size == nullptr))
        return ERROR_INVALID_PARAMETER;
    const Registry::Use use = call.machine.Get<Registry>().Find(key, KEY_QUERY_VALUE);
    if (use.status != ERROR_SUCCESS) return use.status;
    if (index >= use.key->Values().size()) return ERROR_NO_MORE_ITEMS;
    const RegistryValue& value = use.key->Values()[index];
    if (*length <= value.Name().size()) return ERROR_MORE_DATA;
    if (const LSTATUS tooShort = GiveData(value, type, data, size)) return tooShort;
    return GiveName(value.Name(), name, length);
}

LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                                LPDWORD subkeys, LPDWORD longestSubkey, LPDWORD longestClass,
                                LPDWORD values, LPDWORD longestValueName, LPDWORD longestData,
                                LPDWORD securitySize, PFILETIME lastWrite) {
    Call call("RegQueryInfoKeyW");
    if (call.Failed()) return call.Status();
    if (reserved != nullptr || (keyClass != nullptr && classLength == nullptr))
        return ERROR_INVALID_PARAMETER;
    const Registry::Use use = call.machine.Get<Registry>().Find(key, KEY_QUERY_VALUE);
    if (use.status != ERROR_SUCCESS) return use.status;
    const RegistryKey& found = *use.key;
    Give(subkeys, static_cast<DWORD>(found.Children().size()));
    Give(longestSubkey,
         Longest(found.Children(), [](const auto& child) { return child.first.size(); }));
    Give<DWORD>(longestClass, 0);
    Give(values, static_cast<DWORD>(found.Values().size()));
    Give(longestValueName,
         Longest(found.Values(), [](const RegistryValue& value) { return value.Name().size(); }));
    Give(longestData,
         Longest(found.Values(), [](const RegistryValue& value) { return value.Data().size(); }));
    Give<DWORD>(securitySize, 0);
    Give(lastWrite, FILETIME{});
    return GiveClass(keyClass, classLength);
}
