#pragma once
// One session of the network configuration engine: what an INetCfg has found, and what it is going
// to change.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Bindings.h"
#include "NetComponents.h"

namespace platform {

// The results are the engine's. Its objects share the session, which outlives none of its
// components but ends with the INetCfg: then it is neither initialised nor has it the write lock.
// What it is going to change takes effect at an Apply that succeeds, else never.
class NetCfgSession {
  public:
    HRESULT Initialize();
    HRESULT Uninitialize();
    // Waits for the write lock: S_OK, or S_FALSE with the name of its holder.
    HRESULT AcquireLock(const char* call, const WCHAR* client, DWORD timeout, NetText& holder);
    void ReleaseLock();
    void End();

    // S_OK in an initialised session; for a change the write lock is needed, too.
    HRESULT CheckUse() const;
    HRESULT CheckChange() const;

    // Without those that are going to be removed.
    std::vector<NetComponentPtr> Components(const GUID& classGuid);
    // The first of all classes with that id, or null.
    NetComponentPtr Find(const NetText& id);

    // made: the component, which isn't installed yet; one that was there before, unless it is of
    // the class Net.
    HRESULT Install(const GUID& classGuid, const NetText& id, NetComponentPtr& made);
    HRESULT DeInstall(const NetComponentPtr& component);
    std::vector<BindingPath> PathsAbove(const NetComponent& component) const;
    void Enable(BindingPath& path, bool enable);
    // What the fact ApplyResult says.
    HRESULT Apply();

  private:
    struct NewComponent {
        NetComponentPtr component;
        NetText description;
    };
    // What the registry said at that generation, by class.
    struct Snapshot {
        std::uint64_t generation;
        std::map<NetText, std::vector<NetComponentPtr>> classes;
    };

    void Forget();

    bool m_isInitialised = false;
    std::optional<Snapshot> m_snapshot;
    std::vector<NewComponent> m_installs;
    std::map<NetText, NetComponentPtr> m_removals;               // by key
    std::map<std::pair<NetText, NetText>, BindingPath> m_paths;  // by lower component and token
};

}  // namespace platform
