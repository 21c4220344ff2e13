#include "NetworkSession.h"

#include <utility>

#include "Diagnostics.h"

namespace {

constexpr DWORD kOtherClientPause = 10000;  // ms

}  // namespace

NetworkSession::~NetworkSession() {
    if (!m_netCfg) return;
    if (m_form.appliesAtEnd) (void)m_components->Apply();
    m_components.reset();
    if (SUCCEEDED(m_netCfg->Uninitialize())) GiveUpLock();
}

HRESULT NetworkSession::Open(ScopedTaskMemory<WCHAR>& holder) {
    holder.Reset();
    Scoped<ComTraits> com;
    if (m_form.initialisesCom) {
        const HRESULT result = CoInitialize(nullptr);
        if (FAILED(result) && result != RPC_E_CHANGED_MODE) return result;
        com.Reset(SUCCEEDED(result));
    }
    ScopedReference<INetCfg> netCfg;
    HRESULT result = CoCreateInstance(CLSID_CNetCfg, nullptr, m_form.context, IID_INetCfg,
                                      reinterpret_cast<void**>(netCfg.Receive()));
    if (result != S_OK) return result;
    ScopedReference<INetCfgLock> lock;
    result = netCfg.Query(IID_INetCfgLock, lock);
    if (result != S_OK) return result;
    result = TakeLock(*lock.Get(), holder);
    if (result != S_OK) return result;
    result = netCfg->Initialize(nullptr);
    if (result != S_OK) {
        (void)lock->ReleaseWriteLock();
        return result;
    }
    m_com = std::move(com);
    m_netCfg = std::move(netCfg);
    m_components.emplace(*m_netCfg.Get());
    return S_OK;
}

HRESULT NetworkSession::TakeLock(INetCfgLock& lock, ScopedTaskMemory<WCHAR>& holder) const {
    for (int attempt = 0; attempt < m_form.attempts; ++attempt) {
        const HRESULT result = lock.AcquireWriteLock(kLockTimeout, m_form.client, holder.Receive());
        if (result != S_FALSE) return result;
        if (m_form.pause != 0) Sleep(m_form.pause);
    }
    return NETCFG_E_NO_WRITE_LOCK;
}

void NetworkSession::GiveUpLock() const {
    ScopedReference<INetCfgLock> lock;
    if (FAILED(m_netCfg.Query(IID_INetCfgLock, lock))) return;
    (void)lock->ReleaseWriteLock();
    if (!m_form.letsOthersAhead) return;
    ScopedTaskMemory<WCHAR> holder;
    if (lock->AcquireWriteLock(kLockTimeout, kConfigurationClient, holder.Receive()) == S_FALSE) {
        holder.Reset();
        Sleep(kOtherClientPause);
    } else {
        (void)lock->ReleaseWriteLock();
    }
}

HRESULT OpenConfigurationSession(NetworkSession& session) {
    ScopedTaskMemory<WCHAR> holder;
    const HRESULT result = session.Open(holder);
    if (result == NETCFG_E_NO_WRITE_LOCK && holder)
        PrintDiagnostic("AcquireWriteLock failed. Lock is held by %S\n", holder.Get());
    return result;
}
