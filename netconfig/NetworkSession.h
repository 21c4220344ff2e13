#pragma once
// A session with the network configuration engine under its write lock: opened, used, and closed in
// the engine's order when the object goes. The calling thread has COM initialised.

#include <windows.h>
#include <netcfgx.h>
#include <optional>

#include "AutoClasses.h"
#include "NetworkComponents.h"

inline constexpr WCHAR kConfigurationClient[] = TEXT("cvt_vlan_config");
inline constexpr DWORD kLockTimeout = 5000;  // ms

// How a session is opened and closed.
struct NetworkSessionForm {
    LPCWSTR client;        // the name that other clients are shown
    DWORD context;         // CLSCTX_...
    int attempts;          // at the lock, of kLockTimeout each
    DWORD pause;           // ms after an attempt that another client's lock has refused
    bool initialisesCom;   // on its thread, for as long as it is open
    bool appliesAtEnd;     // whatever came of the work
    bool letsOthersAhead;  // after giving up the lock, waits for another client that takes it
};
inline constexpr NetworkSessionForm kConfigurationSession = {
    kConfigurationClient, CLSCTX_INPROC_SERVER, 3, 1000, false, true, true};
inline constexpr NetworkSessionForm kInstallSession = {
    TEXT("VlanInstall"), CLSCTX_INPROC_SERVER, 1, 0, true, false, false};
inline constexpr NetworkSessionForm kRenameSession = {
    TEXT("MY CLIENT"), CLSCTX_SERVER, 3, 1000, false, false, false};

class NetworkSession {
  public:
    explicit NetworkSession(const NetworkSessionForm& form) : m_form(form) {}
    NetworkSession(const NetworkSession&) = delete;
    NetworkSession& operator=(const NetworkSession&) = delete;
    // Closes an open session, which may wait for another client. Objects built on it are gone by
    // then. A session that can't be uninitialised gives up the lock with its engine object.
    ~NetworkSession();

    // Once. On failure nothing is held; NETCFG_E_NO_WRITE_LOCK after all attempts, with the name of
    // the client that has the lock in `holder`.
    HRESULT Open(ScopedTaskMemory<WCHAR>& holder);

    // Of an open session.
    INetCfg& NetCfg() const { return *m_netCfg.Get(); }
    NetworkComponents& Components() { return *m_components; }

  private:
    HRESULT TakeLock(INetCfgLock& lock, ScopedTaskMemory<WCHAR>& holder) const;
    void GiveUpLock() const;

    struct ComTraits {
        using Handle = bool;
        static constexpr Handle none = false;
        static void Close(Handle) { CoUninitialize(); }
    };

    const NetworkSessionForm& m_form;
    Scoped<ComTraits> m_com;
    ScopedReference<INetCfg> m_netCfg;  // null: not open
    std::optional<NetworkComponents> m_components;
};

// Opens a configuration session; prints the line of a lock that another client holds.
HRESULT OpenConfigurationSession(NetworkSession& session);
