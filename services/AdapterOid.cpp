#include "AdapterOid.h"

#include <strsafe.h>

#include "AutoClasses.h"

namespace {

// IOCTL_NDIS_QUERY_GLOBAL_STATS of ntddndis.h.
constexpr DWORD kQueryGlobalStats = 0x170002;

}  // namespace

DWORD QueryAdapterOid(LPCWSTR deviceName, DWORD oid, void* buffer, DWORD size, DWORD* returned) {
    *returned = 0;
    WCHAR path[512];
    if (FAILED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("\\\\.\\%s"), deviceName)))
        return ERROR_INVALID_NAME;
    const ScopedFile device(
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!device) return GetLastError();
    if (!DeviceIoControl(device.Get(), kQueryGlobalStats, &oid, sizeof(oid), buffer, size, returned,
                         nullptr))
        return GetLastError();
    return ERROR_SUCCESS;
}
