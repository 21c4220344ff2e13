#include "RegistryServices.h"

#include <shlwapi.h>
#include <algorithm>
#include <string_view>

#include "../resources/resource.h"
#include "AutoClasses.h"
#include "Messages.h"

#include <strsafe.h>

namespace {

// Ends the text at its first terminator, or after `length` characters. False when there is no room
// for that.
bool Terminate(LPWSTR buffer, size_t capacity, size_t length) {
    const std::basic_string_view<WCHAR> text(buffer, length);
    const size_t end = std::min(text.find(WCHAR{0}), length);
    if (end == capacity) return false;
    buffer[end] = 0;
    return true;
}

bool AdapterEntryHasValue(LPCWSTR adapter, LPCWSTR name) {
    WCHAR path[MAX_PATH];
    if (FAILED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%s\\%s"), kMuxAdaptersRoot, adapter)))
        return false;
    ScopedRegKey entry;
    DWORD size = 0;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, entry.Receive()) == ERROR_SUCCESS &&
           RegQueryValueExW(entry.Get(), name, nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS;
}

bool FileExistsIn(LPCWSTR directory, LPCWSTR file) {
    WCHAR path[MAX_PATH];
    return SUCCEEDED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%s\\%s"), directory, file)) &&
           PathFileExistsW(path);
}

HRESULT SystemFailure(LONG error) {
    return static_cast<HRESULT>(0x80070000u | static_cast<DWORD>(error));
}

}  // namespace

LONG ReadRegistryText(HKEY key, LPCWSTR name, LPWSTR buffer, size_t capacity, DWORD limit) {
    std::fill_n(buffer, capacity, WCHAR{0});
    DWORD size = static_cast<DWORD>(std::min<size_t>(limit, capacity * sizeof(WCHAR)));
    LONG error =
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer), &size);
    if (error == ERROR_SUCCESS && !Terminate(buffer, capacity, (size + 1) / sizeof(WCHAR)))
        error = ERROR_MORE_DATA;
    if (error != ERROR_SUCCESS) buffer[0] = 0;
    return error;
}

bool ReadHklmValue(LPCWSTR subkey, LPCWSTR name, void* buffer, DWORD* size) {
    ScopedRegKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, subkey, 0, KEY_QUERY_VALUE, key.Receive()) ==
               ERROR_SUCCESS &&
           RegQueryValueExW(key.Get(), name, nullptr, nullptr, static_cast<BYTE*>(buffer), size) ==
               ERROR_SUCCESS;
}

bool WriteHklmString(LPCWSTR subkey, LPCWSTR name, const void* data, DWORD size) {
    ScopedRegKey key;
    LONG error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, subkey, 0, KEY_WRITE, key.Receive());
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return false;
    }
    error = RegSetValueExW(key.Get(), name, 0, REG_SZ, static_cast<const BYTE*>(data), size);
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorMessage(IDS_VALUE_SET_FAILED, static_cast<DWORD>(error));
        return false;
    }
    return true;
}

bool DeleteRegistryValue(LPCWSTR subkey, LPCWSTR name) {
    ScopedRegKey key;
    LONG error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, subkey, 0, KEY_ALL_ACCESS, key.Receive());
    if (error == ERROR_SUCCESS) {
        error = RegQueryValueExW(key.Get(), name, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_SUCCESS) error = RegDeleteValueW(key.Get(), name);
        // A value that isn't there is gone already; a key that isn't there is a failure.
        if (error == ERROR_FILE_NOT_FOUND) error = ERROR_SUCCESS;
    }
    if (error != ERROR_SUCCESS)
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
    return error == ERROR_SUCCESS;
}

HRESULT GetMuxInstallDir(LPWSTR buffer, size_t capacity, HWND owner) {
    ScopedRegKey key;
    LONG error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kVendorKey, 0, KEY_QUERY_VALUE, key.Receive());
    if (error != ERROR_SUCCESS) {
        if (owner) ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return SystemFailure(error);
    }
    error = ReadRegistryText(key.Get(), kInstalledPath, buffer, capacity,
                             static_cast<DWORD>(capacity * sizeof(WCHAR)));
    if (error != ERROR_SUCCESS) {
        const LPCWSTR arguments[] = {kInstalledPath};
        ScopedBstr text;
        if (owner && FormatResourceMessage(IDS_QUERY_FAILED, text, arguments))
            MessageBoxW(owner, text.Get(), TEXT("Error"), MB_ICONHAND);
        return SystemFailure(error);
    }
    return StringCchCatW(buffer, capacity, TEXT("Vlan_lbfo"));
}

bool IsMuxPackagePresent() {
    WCHAR directory[MAX_PATH];
    return SUCCEEDED(GetMuxInstallDir(directory, ARRAYSIZE(directory), nullptr)) &&
           FileExistsIn(directory, TEXT("muxp.inf")) && FileExistsIn(directory, TEXT("mux_mp.inf"));
}

bool HasUpperBindings(LPCWSTR adapter) {
    return AdapterEntryHasValue(adapter, TEXT("UpperBindings"));
}

bool HasTeamDeviceName(LPCWSTR adapter) {
    return AdapterEntryHasValue(adapter, TEXT("TeamDeviceName"));
}
