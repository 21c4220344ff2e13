#include "Registry.h"

#include <iterator>
#include <utility>

#include <winerror.h>

namespace platform {
namespace {

constexpr char ledgerKind[] = "registry key";
constexpr std::uintptr_t handleStep = 4;

}  // namespace

void Registry::Replace(RegistryTree tree) {
    tree.ContinueGeneration(m_tree.Generation());
    for (std::size_t i = 0; i < registryRoots; ++i)
        m_tree.Empty(*m_tree.Root(static_cast<RegistryRoot>(i)));
    m_tree = std::move(tree);
}

std::optional<RegistryRoot> Registry::PredefinedRoot(HKEY handle) {
    static const std::pair<HKEY, RegistryRoot> roots[] = {
        {HKEY_CLASSES_ROOT, RegistryRoot::ClassesRoot},
        {HKEY_CURRENT_USER, RegistryRoot::CurrentUser},
        {HKEY_LOCAL_MACHINE, RegistryRoot::LocalMachine},
        {HKEY_USERS, RegistryRoot::Users},
        {HKEY_CURRENT_CONFIG, RegistryRoot::CurrentConfig},
    };
    for (const auto& [predefined, root] : roots) {
        if (predefined == handle) return root;
    }
    return std::nullopt;
}

REGSAM Registry::MapAccess(REGSAM access) {
    static const std::pair<REGSAM, REGSAM> generic[] = {
        {GENERIC_READ, KEY_READ},          {GENERIC_WRITE, KEY_WRITE},
        {GENERIC_EXECUTE, KEY_EXECUTE},    {GENERIC_ALL, KEY_ALL_ACCESS},
        {MAXIMUM_ALLOWED, KEY_ALL_ACCESS},
    };
    REGSAM granted = access & KEY_ALL_ACCESS;
    for (const auto& [right, mapped] : generic) {
        if (access & right) granted |= mapped;
    }
    return granted;
}

Registry::Use Registry::Find(HKEY handle, REGSAM needed) const {
    if (const auto root = PredefinedRoot(handle)) return {m_tree.Root(*root), ERROR_SUCCESS};
    const auto open = m_open.find(handle);
    if (open == m_open.end()) return {nullptr, ERROR_INVALID_HANDLE};
    if ((open->second.access & needed) != needed) return {nullptr, ERROR_ACCESS_DENIED};
    if (open->second.key->IsDeleted()) return {nullptr, ERROR_KEY_DELETED};
    return {open->second.key, ERROR_SUCCESS};
}

HKEY Registry::Open(std::shared_ptr<RegistryKey> key, REGSAM access, const char* call) {
    m_next += handleStep;
    const HKEY handle = reinterpret_cast<HKEY>(m_next);
    m_open.emplace(handle, OpenKey{std::move(key), MapAccess(access)});
    Machine::Current().ledger.Enter(ledgerKind, handle, call);
    return handle;
}

bool Registry::Close(HKEY handle) {
    if (PredefinedRoot(handle)) return true;
    if (m_open.erase(handle) == 0) return false;
    m_cursors.erase(handle);
    Machine::Current().ledger.Strike(ledgerKind, handle);
    return true;
}

const std::u16string* Registry::NthSubkey(HKEY handle, const RegistryKey& key, DWORD index) {
    const RegistryKey::Subkeys& subkeys = key.Children();
    if (index >= subkeys.size()) return nullptr;
    Cursor& cursor = m_cursors[handle];
    if (cursor.key != &key || cursor.generation != Generation() || cursor.index > index)
        cursor = {&key, Generation(), 0, subkeys.begin()};
    std::advance(cursor.at, index - cursor.index);
    cursor.index = index;
    return &cursor.at->second->Name();
}

}  // namespace platform
