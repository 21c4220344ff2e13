#pragma once
// The engine's COM objects. Each is made with one reference, which its receiver releases. call: the
// function or method that makes it, for the ledger.

#include <memory>
#include <vector>

#include <windows.h>
#include <netcfgx.h>

#include "Com.h"
#include "NetCfgSession.h"

namespace platform {

using NetCfgSessionPtr = std::shared_ptr<NetCfgSession>;

// A new engine: an INetCfg that is its INetCfgLock, too.
HRESULT CreateNetCfg(REFIID id, void** object);
// A class of components, as INetCfgClass or INetCfgClassSetup.
HRESULT CreateClass(const char* call, const NetCfgSessionPtr& session, const GUID& classGuid,
                    REFIID id, void** object);
INetCfgComponent* CreateComponent(const char* call, const NetCfgSessionPtr& session,
                                  NetComponentPtr component);
IEnumNetCfgComponent* EnumerateComponents(const char* call, const NetCfgSessionPtr& session,
                                          std::vector<NetComponentPtr> components);
IEnumNetCfgBindingPath* EnumeratePaths(const char* call, const NetCfgSessionPtr& session,
                                       std::vector<BindingPath> paths);

// The component behind an object of the engine; null when it is somebody else's object.
NetComponentPtr ComponentOf(INetCfgComponent* object);

// An object of a session. Asking it for an interface counts, under `query`.
template <class... Interfaces>
class NetCfgObject : public ComObject<Interfaces...> {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        const Call call(m_query, nullptr, static_cast<DWORD>(E_NOINTERFACE));
        const HRESULT begun = BeginOut(call, object);
        return begun != S_OK ? begun : ComObject<Interfaces...>::QueryInterface(id, object);
    }

  protected:
    NetCfgObject(const char* call, const char* query, NetCfgSessionPtr session)
        : ComObject<Interfaces...>(call), m_query(query), m_session(std::move(session)) {}

    const NetCfgSessionPtr& Session() const { return m_session; }
    // Begins a method that needs an initialised session. S_OK, or what the method returns at once.
    template <class T>
    HRESULT BeginUse(const Call& call, T* out) const {
        const HRESULT begun = BeginOut(call, out);
        return begun != S_OK ? begun : m_session->CheckUse();
    }
    // The same for a change, without an out-value.
    HRESULT BeginChange(const Call& call) const {
        return call.Failed() ? call.Result() : m_session->CheckChange();
    }

  private:
    const char* m_query;
    NetCfgSessionPtr m_session;
};

// Gives a text as a block that the receiver frees with CoTaskMemFree.
HRESULT GiveTaskText(const NetText& text, LPWSTR* given);

}  // namespace platform
