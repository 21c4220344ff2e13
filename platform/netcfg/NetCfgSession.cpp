#include "NetCfgSession.h"

#include <algorithm>

#include <devguid.h>
#include <netcfgx.h>

#include "Facts.h"
#include "InfFile.h"
#include "Installation.h"
#include "RegistryGeneration.h"
#include "Text.h"
#include "WriteLock.h"

namespace platform {
namespace {

constexpr auto kNoDriverSelected = static_cast<HRESULT>(0x800F0203);

WriteLock& Lock() {
    return Machine::Current().Get<WriteLock>();
}

std::optional<InfModel> FindModel(const NetText& id) {
    for (InfModel& model : StoredModels()) {
        if (!id.empty() && EqualNoCase(model.componentId, id)) return std::move(model);
    }
    return std::nullopt;
}

}  // namespace

HRESULT NetCfgSession::Initialize() {
    if (m_isInitialised) return NETCFG_E_ALREADY_INITIALIZED;
    m_isInitialised = true;
    return S_OK;
}

HRESULT NetCfgSession::Uninitialize() {
    if (!m_isInitialised) return NETCFG_E_NOT_INITIALIZED;
    Forget();
    m_isInitialised = false;
    return S_OK;
}

HRESULT NetCfgSession::AcquireLock(const char* call, const WCHAR* client, DWORD timeout,
                                   NetText& holder) {
    if (m_isInitialised) return NETCFG_E_ALREADY_INITIALIZED;
    auto other = Lock().Acquire(call, this, client != nullptr ? client : TEXT(""), timeout);
    if (!other) return S_OK;
    holder = std::move(*other);
    return S_FALSE;
}

void NetCfgSession::ReleaseLock() {
    Lock().Release(this);
}

void NetCfgSession::End() {
    Forget();
    m_isInitialised = false;
    ReleaseLock();
}

void NetCfgSession::Forget() {
    m_snapshot.reset();
    m_installs.clear();
    m_removals.clear();
    m_paths.clear();
}

HRESULT NetCfgSession::CheckUse() const {
    return m_isInitialised ? S_OK : NETCFG_E_NOT_INITIALIZED;
}

HRESULT NetCfgSession::CheckChange() const {
    if (!m_isInitialised) return NETCFG_E_NOT_INITIALIZED;
    return Lock().IsHeldBy(this) ? S_OK : NETCFG_E_NO_WRITE_LOCK;
}

std::vector<NetComponentPtr> NetCfgSession::Components(const GUID& classGuid) {
    const std::uint64_t generation = RegistryGeneration();
    if (!m_snapshot || m_snapshot->generation != generation) m_snapshot = Snapshot{generation, {}};
    const auto [place, isNew] = m_snapshot->classes.try_emplace(NetGuidText(classGuid));
    if (isNew) place->second = ReadComponents(classGuid);
    std::vector<NetComponentPtr> components = place->second;
    if (!m_removals.empty()) {
        std::erase_if(components,
                      [&](const auto& component) { return m_removals.contains(component->key); });
    }
    return components;
}

NetComponentPtr NetCfgSession::Find(const NetText& id) {
    for (const GUID& classGuid : ComponentClasses()) {
        for (NetComponentPtr& component : Components(classGuid)) {
            if (EqualNoCase(component->id, id)) return std::move(component);
        }
    }
    return nullptr;
}

HRESULT NetCfgSession::Install(const GUID& classGuid, const NetText& id, NetComponentPtr& made) {
    auto model = FindModel(id);
    if (!model) return kNoDriverSelected;
    if (classGuid != GUID_DEVCLASS_NET) {
        for (const auto& [component, description] : m_installs) {
            if (component->classGuid == classGuid && EqualNoCase(component->id, id))
                made = component;
        }
        for (const NetComponentPtr& component : Components(classGuid)) {
            if (EqualNoCase(component->id, id)) made = component;
        }
        if (made) return S_OK;
    }
    made = std::make_shared<NetComponent>(NetComponent{classGuid, id, {}, {}});
    m_installs.push_back({made, std::move(model->description)});
    return S_OK;
}

HRESULT NetCfgSession::DeInstall(const NetComponentPtr& component) {
    const std::size_t dropped = std::erase_if(
        m_installs, [&](const NewComponent& other) { return other.component == component; });
    if (dropped != 0) return S_OK;
    if (!component->IsInstalled() || !MachineKeyExists(component->key))
        return NETCFG_E_ADAPTER_NOT_FOUND;
    const bool isNew = m_removals.emplace(component->key, component).second;
    return isNew ? S_OK : NETCFG_E_ADAPTER_NOT_FOUND;
}

std::vector<BindingPath> NetCfgSession::PathsAbove(const NetComponent& component) const {
    std::vector<BindingPath> paths = ReadPathsAbove(component.guid);
    for (BindingPath& path : paths) {
        const auto changed = m_paths.find({path.lower, path.token});
        if (changed != m_paths.end()) path.isEnabled = changed->second.isEnabled;
    }
    return paths;
}

void NetCfgSession::Enable(BindingPath& path, bool enable) {
    path.isEnabled = enable;
    m_paths.insert_or_assign({path.lower, path.token}, path);
}

HRESULT NetCfgSession::Apply() {
    const auto result =
        static_cast<HRESULT>(FactNumber(TEXT("NetCfg"), TEXT("ApplyResult")).value_or(S_OK));
    if (FAILED(result)) return result;
    std::vector<NetComponentPtr> removed;
    for (const auto& [key, component] : m_removals)
        removed.push_back(component);
    if (!removed.empty()) RemoveComponents(removed);
    bool isInstalled = true;
    for (const auto& [component, description] : m_installs)
        isInstalled = isInstalled && InstallComponent(*component, description);
    for (const auto& [place, path] : m_paths)
        WritePath(path);
    Forget();
    return isInstalled ? result : E_FAIL;
}

}  // namespace platform
