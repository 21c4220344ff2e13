#pragma once
// The network adapter components of an open engine object, found by their instance GUID.
//
// A search goes on where the last one stopped, and what was passed is kept, so that all searches of
// a session together take each component once. The result is that of a search from the first
// component on: the first match in the engine's order, or the failure of a component before it,
// which is asked again by the next search that gets there. The caller's thread only.

#include <windows.h>
#include <objbase.h>
#include <netcfgx.h>
#include <memory>

#include "AutoClasses.h"

class NetworkComponents {
  public:
    // netCfg: initialised; must live longer.
    explicit NetworkComponents(INetCfg& netCfg) : m_netCfg(netCfg) {}
    NetworkComponents(const NetworkComponents&) = delete;
    NetworkComponents& operator=(const NetworkComponents&) = delete;

    // S_OK with the component; S_FALSE, with `component` as it was, when there is none; else the
    // engine's failure.
    HRESULT HrFindInstance(REFGUID guid, ScopedReference<INetCfgComponent>& component);
    // No longer finds the first component of that GUID, which the session has removed.
    void Forget(REFGUID guid);
    // INetCfg::Apply. The components change with it, so searches begin anew.
    HRESULT Apply();

    // The class of network adapters, and its installer.
    HRESULT QueryClass(ScopedReference<INetCfgClass>& netClass) const;
    HRESULT QueryClassSetup(ScopedReference<INetCfgClassSetup>& setup) const;

  private:
    // A component that a search has passed; null when it was forgotten.
    struct Passed {
        GUID guid = {};
        ScopedReference<INetCfgComponent> component;
        DWORD next = kNone;  // of the same bucket
    };
    static constexpr DWORD kNone = ~DWORD{0};

    Passed* FindPassed(REFGUID guid) const;
    HRESULT PassNext();
    bool MakeRoom();
    void Enter(DWORD place);

    INetCfg& m_netCfg;
    ScopedReference<IEnumNetCfgComponent> m_enumerator;
    ScopedReference<INetCfgComponent> m_reached;  // its GUID couldn't be read yet
    std::unique_ptr<Passed[]> m_passed;           // in the engine's order
    std::unique_ptr<DWORD[]> m_buckets;           // the last place of each; as many as m_capacity
    DWORD m_count = 0;
    DWORD m_capacity = 0;  // a power of two, or 0
};
