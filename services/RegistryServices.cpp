#include "RegistryServices.h"

#include <shlwapi.h>

#include "../resources/resource.h"
#include "Messages.h"
#include "RegistryKey.h"
#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

bool AdapterEntryHasValue(LPCWSTR adapter, LPCWSTR name) {
    RegistryPath path;
    RegistryKey entry;
    DWORD size = 0;
    return MakeMuxAdapterPath(path, adapter) && entry.Open(path, KEY_READ) == ERROR_SUCCESS &&
           entry.QuerySize(name, size) == ERROR_SUCCESS;
}

bool FileExistsIn(LPCWSTR directory, LPCWSTR file) {
    WCHAR path[MAX_PATH];
    return SUCCEEDED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%s\\%s"), directory, file)) &&
           PathFileExistsW(path);
}

}  // namespace

bool ReadHklmValue(LPCWSTR subkey, LPCWSTR name, void* buffer, DWORD* size) {
    RegistryKey key;
    return key.Open(subkey, KEY_QUERY_VALUE) == ERROR_SUCCESS &&
           key.ReadBytes(name, buffer, size) == ERROR_SUCCESS;
}

bool WriteHklmString(LPCWSTR subkey, LPCWSTR name, const void* data, DWORD size) {
    RegistryKey key;
    LONG error = key.Open(subkey, KEY_WRITE);
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return false;
    }
    error = key.WriteBytes(name, REG_SZ, data, size);
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorMessage(IDS_VALUE_SET_FAILED, static_cast<DWORD>(error));
        return false;
    }
    return true;
}

bool DeleteRegistryValue(LPCWSTR subkey, LPCWSTR name) {
    RegistryKey key;
    LONG error = key.Open(subkey, KEY_ALL_ACCESS);
    if (error == ERROR_SUCCESS) {
        DWORD size = 0;
        error = key.QuerySize(name, size);
        if (error == ERROR_SUCCESS) error = key.DeleteValue(name);
        // A value that isn't there is gone already; a key that isn't there is a failure.
        if (error == ERROR_FILE_NOT_FOUND) error = ERROR_SUCCESS;
    }
    if (error != ERROR_SUCCESS)
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
    return error == ERROR_SUCCESS;
}

HRESULT GetMuxInstallDir(LPWSTR buffer, size_t capacity, HWND owner) {
    RegistryKey key;
    LONG error = key.Open(kVendorKey, KEY_QUERY_VALUE);
    if (error != ERROR_SUCCESS) {
        if (owner) ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, static_cast<DWORD>(error));
        return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
    }
    error = key.ReadText(kInstalledPath, buffer, capacity,
                         static_cast<DWORD>(capacity * sizeof(WCHAR)));
    if (error != ERROR_SUCCESS) {
        if (owner)
            ShowMessage(owner, IDS_QUERY_FAILED, TEXT("Error"), MB_ICONHAND, {kInstalledPath});
        return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
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
