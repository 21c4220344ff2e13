// Binding paths and the interfaces along them, as the engine gives them out.

#include <algorithm>

#include "NetCfgEnumerator.h"
#include "NetCfgStubs.h"

namespace platform {
namespace {

constexpr auto kBindingFailure = static_cast<DWORD>(E_FAIL);

// The interface below a component of the path.
class NetCfgBindingInterface final
    : public NetCfgObject<ComInterface<NetCfgBindingInterfaceStub, IID_INetCfgBindingInterface>> {
  public:
    NetCfgBindingInterface(const char* call, const NetCfgSessionPtr& session, NetText upper)
        : NetCfgObject(call, "INetCfgBindingInterface::QueryInterface", session),
          m_upper(std::move(upper)) {}

    HRESULT STDMETHODCALLTYPE GetUpperComponent(INetCfgComponent** component) override {
        const Call call("INetCfgBindingInterface::GetUpperComponent", nullptr, kBindingFailure);
        const HRESULT begun = BeginUse(call, component);
        if (begun != S_OK) return begun;
        NetComponentPtr found = Session()->Find(m_upper);
        if (!found) {
            found = std::make_shared<NetComponent>();
            found->id = m_upper;
        }
        *component = CreateComponent(call.Name(), Session(), std::move(found));
        return S_OK;
    }

  private:
    const NetText m_upper;
};

struct InterfaceKind {
    using Enum = IEnumNetCfgBindingInterface;
    using Item = INetCfgBindingInterface;
    using Source = NetText;
    static constexpr const IID& id = IID_IEnumNetCfgBindingInterface;
    static constexpr const char* query = "IEnumNetCfgBindingInterface::QueryInterface";
    static constexpr const char* next = "IEnumNetCfgBindingInterface::Next";
    static constexpr const char* reset = "IEnumNetCfgBindingInterface::Reset";
    static Item* Make(const char* call, const NetCfgSessionPtr& session, const Source& upper) {
        return new NetCfgBindingInterface(call, session, upper);
    }
};

class NetCfgBindingPath final
    : public NetCfgObject<ComInterface<NetCfgBindingPathStub, IID_INetCfgBindingPath>> {
  public:
    NetCfgBindingPath(const char* call, const NetCfgSessionPtr& session, BindingPath path)
        : NetCfgObject(call, "INetCfgBindingPath::QueryInterface", session),
          m_path(std::move(path)) {}

    HRESULT STDMETHODCALLTYPE IsEnabled() override {
        const Call call("INetCfgBindingPath::IsEnabled", nullptr, kBindingFailure);
        if (call.Failed()) return call.Result();
        if (const HRESULT refused = Session()->CheckUse()) return refused;
        return m_path.isEnabled ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Enable(BOOL enable) override {
        const Call call("INetCfgBindingPath::Enable", nullptr, kBindingFailure);
        const HRESULT begun = BeginChange(call);
        if (begun == S_OK) Session()->Enable(m_path, enable != FALSE);
        return begun;
    }
    HRESULT STDMETHODCALLTYPE GetPathToken(LPWSTR* token) override {
        const Call call("INetCfgBindingPath::GetPathToken", nullptr, kBindingFailure);
        const HRESULT begun = BeginUse(call, token);
        return begun != S_OK ? begun : GiveTaskText(m_path.token, token);
    }
    HRESULT STDMETHODCALLTYPE
    EnumBindingInterfaces(IEnumNetCfgBindingInterface** interfaces) override {
        const Call call("INetCfgBindingPath::EnumBindingInterfaces", nullptr, kBindingFailure);
        const HRESULT begun = BeginUse(call, interfaces);
        if (begun != S_OK) return begun;
        *interfaces = new NetCfgEnumerator<InterfaceKind>(call.Name(), Session(), m_path.uppers);
        return S_OK;
    }

  private:
    BindingPath m_path;
};

struct PathKind {
    using Enum = IEnumNetCfgBindingPath;
    using Item = INetCfgBindingPath;
    using Source = BindingPath;
    static constexpr const IID& id = IID_IEnumNetCfgBindingPath;
    static constexpr const char* query = "IEnumNetCfgBindingPath::QueryInterface";
    static constexpr const char* next = "IEnumNetCfgBindingPath::Next";
    static constexpr const char* reset = "IEnumNetCfgBindingPath::Reset";
    static Item* Make(const char* call, const NetCfgSessionPtr& session, const Source& path) {
        return new NetCfgBindingPath(call, session, path);
    }
};

}  // namespace

IEnumNetCfgBindingPath* EnumeratePaths(const char* call, const NetCfgSessionPtr& session,
                                       std::vector<BindingPath> paths) {
    return new NetCfgEnumerator<PathKind>(call, session, std::move(paths));
}

}  // namespace platform
