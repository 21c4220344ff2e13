#include "WindowsVersion.h"

namespace {

bool QueryVersion(OSVERSIONINFOEXW& version) {
    version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    return GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)) != FALSE;
}

}  // namespace

bool IsVistaOrLater() {
    OSVERSIONINFOEXW version;
    return QueryVersion(version) && version.dwMajorVersion >= 6;
}

int GetWindowsRelease() {
    OSVERSIONINFOEXW version;
    if (!QueryVersion(version)) return 0;
    if (version.dwMajorVersion > 6) return 6;
    if (version.dwMajorVersion == 6)
        return version.dwMinorVersion > 3 ? 6 : static_cast<int>(version.dwMinorVersion) + 2;
    return version.dwMajorVersion == 5 && version.dwMinorVersion == 2 ? 1 : 0;
}

BYTE GetProductType() {
    OSVERSIONINFOEXW version;
    return QueryVersion(version) ? version.wProductType : BYTE{0};
}

bool IsServerOfRelease4OrLater() {
    return GetWindowsRelease() > 3 && GetProductType() != VER_NT_WORKSTATION;
}
