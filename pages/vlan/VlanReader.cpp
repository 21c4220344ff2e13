#include "VlanReader.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "../../resources/resource.h"
#include "Messages.h"
#include "ParamKeySearch.h"
#include "RegistryServices.h"

#include <strsafe.h>

namespace {

using TextView = std::basic_string_view<WCHAR>;

constexpr size_t kDevicePrefixLength = 8;  // of "\Device\"
constexpr WCHAR kUpperBindings[] = TEXT("UpperBindings");

void ShowQueryFailure(HWND owner, LPCWSTR value) {
    ShowMessage(owner, IDS_QUERY_FAILED, TEXT("Error"), MB_ICONHAND, {value});
}

bool ReadAdapterGuid(HWND owner, VlanAdapter& adapter) {
    RegistryKey key;
    const LONG error = key.Open(adapter.classKeyPath, KEY_QUERY_VALUE);
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return false;
    }
    if (key.ReadText(kNetCfgInstanceId, adapter.guid) == ERROR_SUCCESS) return true;
    ShowQueryFailure(owner, kNetCfgInstanceId);
    return false;
}

// A value that is absent becomes the usual text, which is written. One that can't be read is left
// as it is. False when the text can't be written, which the user is told.
bool ReadOrWriteSetting(const RegistryKey& key, LPCWSTR name, LPCWSTR usual,
                        VlanSettings::Text& text) {
    LONG error = key.ReadText(name, text);
    if (error == ERROR_SUCCESS) return true;
    (void)StringCchCopyW(text, ARRAYSIZE(text), usual);
    if (error != ERROR_FILE_NOT_FOUND) return true;
    error = key.WriteText(name, usual);
    if (error == ERROR_SUCCESS) return true;
    ShowSystemErrorMessage(IDS_VALUE_SET_FAILED, static_cast<DWORD>(error));
    return false;
}

void AddVlan(VlanList& vlans, LPCWSTR guid, ParamKeySearch& search) {
    RegistryKey key = search.Find(guid);
    if (!key) return;
    std::unique_ptr<VlanEntry> entry(new (std::nothrow) VlanEntry);
    if (!entry) return;
    (void)StringCchCopyW(entry->guid, ARRAYSIZE(entry->guid), guid);
    VlanSettings& settings = entry->settings;
    if (key.ReadText(kVlanId, settings.id) != ERROR_SUCCESS ||
        !ReadOrWriteSetting(key, kVlanName, kUsualVlanName, settings.name) ||
        !ReadOrWriteSetting(key, kPriority, kUsualPriority, settings.priority))
        return;
    entry->paramKey = std::move(key);
    vlans.Push(std::move(entry));
}

// The device names of the virtual miniports, to the end of the data: also those behind an empty
// one.
void AddVlans(VlanList& vlans, const MultiText& bindings) {
    ParamKeySearch search;
    TextView rest(reinterpret_cast<const WCHAR*>(bindings.Data()),
                  (bindings.Size() + 1) / sizeof(WCHAR));
    while (rest.size() > 1) {
        const size_t length = std::min(rest.find(WCHAR{0}), rest.size());
        // Zeros follow the data, so that each name has its terminator.
        if (length > kDevicePrefixLength) AddVlan(vlans, rest.data() + kDevicePrefixLength, search);
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
}

}  // namespace

bool ReadVlanConfiguration(HWND owner, VlanAdapter& adapter, VlanList& vlans) {
    if (!ReadAdapterGuid(owner, adapter) ||
        FAILED(GetMuxInstallDir(adapter.muxDirectory, ARRAYSIZE(adapter.muxDirectory), owner)))
        return false;
    RegistryKey key;
    const LONG probed = key.Open(kMuxAdaptersRoot, KEY_QUERY_VALUE);
    // Without the tree of the MUX driver, or an entry of the adapter there, there are no VLANs.
    if (probed != ERROR_SUCCESS) return probed == ERROR_FILE_NOT_FOUND;
    RegistryPath path;
    if (!MakeMuxAdapterPath(path, adapter.guid) || key.Open(path, KEY_READ) != ERROR_SUCCESS)
        return true;
    MultiText bindings;
    switch (key.ReadMultiText(kUpperBindings, bindings)) {
        case ERROR_SUCCESS:
            AddVlans(vlans, bindings);
            return true;
        case ERROR_FILE_NOT_FOUND:
            return true;
        case ERROR_NOT_ENOUGH_MEMORY:
            return false;
        default:
            ShowQueryFailure(owner, kUpperBindings);
            return false;
    }
}
