#include "AdapterBindings.h"

#include <string_view>

#include "AutoClasses.h"
#include "DeviceIds.h"
#include "MuxRegistry.h"
#include "RegistryKey.h"

namespace {

using Text = std::basic_string_view<WCHAR>;

constexpr WCHAR kBackupValue[] = TEXT("AdapterBindingBackup");
constexpr size_t kBackupCapacity = 4096;  // characters
constexpr DWORD kBackupLimit = 4096;      // bytes that are read

// The path tokens of bindings, as a REG_MULTI_SZ holds them.
class BindingBackup {
  public:
    // Reads the backup of an adapter. One that is lost or too long is empty.
    void Read(INetCfgComponent& component) {
        RegistryKey key;
        DWORD size = kBackupLimit;
        if (component.OpenParamKey(key.Receive()) != S_OK ||
            key.ReadBytes(kBackupValue, m_tokens, &size) != ERROR_SUCCESS)
            m_tokens[0] = TEXT('\0');
    }
    bool Contains(LPCWSTR token) const {
        for (LPCWSTR at = m_tokens; *at != TEXT('\0'); at += Text(at).size() + 1)
            if (IsSameText(at, token)) return true;
        return false;
    }
    // False when the token doesn't fit, with the terminator of the list behind it.
    bool Add(Text token) {
        if (token.empty() || m_used + token.size() + 2 > kBackupCapacity) return false;
        token.copy(m_tokens + m_used, token.size());
        m_used += token.size() + 1;
        return true;
    }
    void Write(const RegistryKey& key) const {
        key.WriteBytes(kBackupValue, REG_MULTI_SZ, m_tokens,
                       static_cast<DWORD>((m_used + 1) * sizeof(WCHAR)));
    }

  private:
    WCHAR m_tokens[kBackupCapacity] = {};
    size_t m_used = 0;  // characters
};

bool IsMuxAbove(INetCfgBindingInterface& binding) {
    ScopedReference<INetCfgComponent> upper;
    ScopedTaskMemory<WCHAR> id;
    return binding.GetUpperComponent(upper.Receive()) == S_OK && upper &&
           upper->GetId(id.Receive()) == S_OK && id && IsSameText(id.Get(), kMuxProtocolId);
}

bool GoesThroughMux(INetCfgBindingPath& path) {
    ScopedReference<IEnumNetCfgBindingInterface> bindings;
    if (path.EnumBindingInterfaces(bindings.Receive()) != S_OK) return false;
    ScopedReference<INetCfgBindingInterface> binding;
    ULONG fetched = 0;
    while (bindings->Next(1, binding.Receive(), &fetched) == S_OK && binding)
        if (IsMuxAbove(*binding.Get())) return true;
    return false;
}

void SetPath(INetCfgBindingPath& path, bool restore, BindingBackup& backup) {
    if (GoesThroughMux(path)) {
        (void)path.Enable(!restore);
        return;
    }
    ScopedTaskMemory<WCHAR> token;
    if (path.GetPathToken(token.Receive()) != S_OK || !token) return;
    if (restore) {
        if (backup.Contains(token.Get())) (void)path.Enable(TRUE);
    } else if (path.IsEnabled() == S_OK && backup.Add(token.Get())) {
        (void)path.Enable(FALSE);
    }
}

}  // namespace

void SetAdapterBindings(INetCfgComponent& component, bool restore) {
    BindingBackup backup;
    if (restore) backup.Read(component);
    ScopedReference<INetCfgComponentBindings> bindings;
    if (component.QueryInterface(IID_INetCfgComponentBindings,
                                 reinterpret_cast<void**>(bindings.Receive())) != S_OK)
        return;
    ScopedReference<IEnumNetCfgBindingPath> paths;
    if (bindings->EnumBindingPaths(EBP_ABOVE, paths.Receive()) != S_OK) return;
    ScopedReference<INetCfgBindingPath> path;
    ULONG fetched = 0;
    while (paths->Next(1, path.Receive(), &fetched) == S_OK && path)
        SetPath(*path.Get(), restore, backup);

    RegistryKey key;
    if (component.OpenParamKey(key.Receive()) != S_OK) return;
    if (restore)
        key.DeleteValue(kBackupValue);
    else
        backup.Write(key);
}
