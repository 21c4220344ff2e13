#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

bool Join(RegistryPath& path, LPCWSTR root, LPCWSTR name, LPCWSTR tail) {
    return SUCCEEDED(StringCchPrintfW(path, kPathCapacity, TEXT("%s\\%s%s"), root, name, tail));
}

}  // namespace

bool MakeClassKeyPath(RegistryPath& path, LPCWSTR driver) {
    return Join(path, kClassRoot, driver, TEXT(""));
}

bool MakeConnectionPath(RegistryPath& path, LPCWSTR adapter) {
    return Join(path, kNetworkKey, adapter, TEXT("\\Connection"));
}

bool MakeMuxAdapterPath(RegistryPath& path, LPCWSTR adapter) {
    return Join(path, kMuxAdaptersRoot, adapter, TEXT(""));
}
