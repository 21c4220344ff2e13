#include "MuxRegistry.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

using Text = std::basic_string_view<WCHAR>;

constexpr WCHAR kDevicePrefix[] = TEXT("\\Device\\");

// Copies the entries that differ from the device name to `kept`, with the terminator of the list.
// Gives the characters written; the buffer has room for all entries and both terminators.
size_t CopyOthers(const MultiText& list, Text deviceName, LPWSTR kept) {
    size_t used = 0;
    for (const LPCWSTR entry : list) {
        const Text text(entry);
        if (text.size() == deviceName.size() && IsSameText(entry, deviceName.data())) continue;
        text.copy(kept + used, text.size());
        used += text.size() + 1;
    }
    return used + 1;
}

}  // namespace

GUID ParseGuid(LPCWSTR text) {
    GUID guid = {};
    if (FAILED(CLSIDFromString(text, &guid))) guid = {};
    return guid;
}

std::unique_ptr<WCHAR[]> MakeDeviceName(LPCWSTR guid) {
    const size_t capacity = ARRAYSIZE(kDevicePrefix) + Text(guid).size();
    std::unique_ptr<WCHAR[]> name(new (std::nothrow) WCHAR[capacity]);
    if (name) (void)StringCchPrintfW(name.get(), capacity, TEXT("%s%s"), kDevicePrefix, guid);
    return name;
}

LPCWSTR GuidStringFromDeviceName(LPCWSTR deviceName) {
    const Text name(deviceName);
    const size_t backslash = name.rfind(TEXT('\\'));
    return backslash == Text::npos ? nullptr : deviceName + backslash + 1;
}

LONG HrPrependUpperBinding(const RegistryKey& entry, LPCWSTR deviceName) {
    constexpr BYTE kEmptyList[sizeof(WCHAR)] = {};
    MultiText list;
    // A list that is there and can't be read must not be lost.
    const LONG error = entry.ReadMultiText(kUpperBindings, list);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return error;
    const DWORD oldSize = list.Size() != 0 ? list.Size() : sizeof(kEmptyList);
    const BYTE* const old = list.Size() != 0 ? list.Data() : kEmptyList;

    const size_t nameSize = (Text(deviceName).size() + 1) * sizeof(WCHAR);
    const std::unique_ptr<BYTE[]> joined(new (std::nothrow) BYTE[nameSize + oldSize]);
    if (!joined) return ERROR_NOT_ENOUGH_MEMORY;
    std::memcpy(joined.get(), deviceName, nameSize);
    std::memcpy(joined.get() + nameSize, old, oldSize);
    return entry.WriteBytes(kUpperBindings, REG_MULTI_SZ, joined.get(),
                            static_cast<DWORD>(nameSize + oldSize));
}

LONG HrRemoveUpperBinding(const RegistryKey& entry, LPCWSTR deviceName) {
    MultiText list;
    const LONG error = entry.ReadMultiText(kUpperBindings, list);
    if (error != ERROR_SUCCESS) return error;
    size_t all = 1;  // characters of the list as it should be stored
    for (const LPCWSTR text : list)
        all += Text(text).size() + 1;
    const size_t capacity = std::max<size_t>(all, list.Size() / sizeof(WCHAR) + 1);
    const std::unique_ptr<WCHAR[]> kept(new (std::nothrow) WCHAR[capacity]());
    if (!kept) return ERROR_NOT_ENOUGH_MEMORY;
    const size_t left = CopyOthers(list, deviceName, kept.get());
    if (left == all) return ERROR_SUCCESS;
    if (left == 1) return entry.DeleteValue(kUpperBindings);
    // One entry makes the value shorter by its own size: zeros stay for what was behind the list.
    DWORD size = static_cast<DWORD>(left * sizeof(WCHAR));
    const size_t entrySize = (Text(deviceName).size() + 1) * sizeof(WCHAR);
    if ((all - left) * sizeof(WCHAR) == entrySize && list.Size() > size + entrySize)
        size = list.Size() - static_cast<DWORD>(entrySize);
    return entry.WriteBytes(kUpperBindings, REG_MULTI_SZ, kept.get(), size);
}

LONG CreateMuxEntry(REFGUID lower, RegistryKey& entry, bool* created) {
    RegistryPath path;
    (void)MakeMuxAdapterPath(path, GuidString(lower).Get());
    return entry.Create(HKEY_LOCAL_MACHINE, path, KEY_ALL_ACCESS, created);
}

LONG OpenMuxEntry(REFGUID lower, RegistryKey& entry) {
    RegistryPath path;
    (void)MakeMuxAdapterPath(path, GuidString(lower).Get());
    return entry.Open(path, KEY_ALL_ACCESS);
}

LONG DeleteMuxEntry(REFGUID lower) {
    RegistryKey adapters;
    const LONG error = adapters.Open(kMuxAdaptersRoot, KEY_ALL_ACCESS);
    return error != ERROR_SUCCESS ? error : adapters.DeleteSubkey(GuidString(lower).Get());
}
