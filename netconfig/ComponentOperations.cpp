#include "ComponentOperations.h"

#include <netcfgx.h>

#include "AutoClasses.h"
#include "MuxRegistry.h"
#include "NetworkSession.h"
#include "NetworkComponents.h"

#include <strsafe.h>

namespace {

constexpr DWORD kShortLockTimeout = 5;  // ms

// The engine, not yet initialised; null when it can't be had.
ScopedReference<INetCfg> NewNetCfg() {
    ScopedReference<INetCfg> netCfg;
    if (FAILED(CoCreateInstance(CLSID_CNetCfg, nullptr, CLSCTX_SERVER, IID_INetCfg,
                                reinterpret_cast<void**>(netCfg.Receive()))))
        return {};
    return netCfg;
}

ScopedReference<INetCfgComponent> FindComponentOf(NetworkComponents& components, LPCWSTR guid) {
    ScopedReference<INetCfgComponent> component;
    (void)components.HrFindInstance(ParseGuid(guid), component);
    return component;
}

}  // namespace

HRESULT RenameComponent(LPCWSTR guid, LPCWSTR displayName) {
    NetworkSession session(kRenameSession);
    ScopedTaskMemory<WCHAR> holder;
    HRESULT result = session.Open(holder);
    if (result != S_OK) return result;
    GUID wanted = {};
    result = CLSIDFromString(guid, &wanted);
    if (FAILED(result)) return result;
    ScopedReference<INetCfgComponent> component;
    result = session.Components().HrFindInstance(wanted, component);
    if (component) result = component->SetDisplayName(displayName);
    if (FAILED(result)) return result;
    const HRESULT applied = session.Components().Apply();
    return FAILED(applied) ? applied : result;
}

void GetAdapterDevNodeId(LPCWSTR guid, LPWSTR buffer, size_t capacity) {
    const ScopedReference<INetCfg> netCfg = NewNetCfg();
    ScopedReference<INetCfgLock> lock;
    if (!netCfg || FAILED(netCfg.Query(IID_INetCfgLock, lock))) return;
    // The id is read whether the lock can be had or not.
    ScopedTaskMemory<WCHAR> holder;
    (void)lock->AcquireWriteLock(kShortLockTimeout, kRenameSession.client, holder.Receive());
    (void)netCfg->Initialize(nullptr);
    {
        NetworkComponents components(*netCfg.Get());
        if (const auto component = FindComponentOf(components, guid)) {
            ScopedTaskMemory<WCHAR> nodeId;
            (void)component->GetPnpDevNodeId(nodeId.Receive());
            if (nodeId) (void)StringCchCopyW(buffer, capacity, nodeId.Get());
        }
        (void)components.Apply();
    }
    (void)netCfg->Uninitialize();
    (void)lock->ReleaseWriteLock();
}

bool IsComponentUsable(LPCWSTR guid) {
    const ScopedReference<INetCfg> netCfg = NewNetCfg();
    if (!netCfg || FAILED(netCfg->Initialize(nullptr))) return false;
    bool isUsable = false;
    {
        NetworkComponents components(*netCfg.Get());
        ULONG status = 0;
        const auto component = FindComponentOf(components, guid);
        isUsable = component && SUCCEEDED(component->GetDeviceStatus(&status));
    }
    (void)netCfg->Uninitialize();
    return isUsable;
}
