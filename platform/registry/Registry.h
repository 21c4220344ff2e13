#pragma once
// The machine's registry: the tree and the open handles. The functions of <winreg.h> act on it.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>

#include <winreg.h>

#include "Machine.h"
#include "RegistryTree.h"

namespace platform {

class Registry : public Part {
  public:
    const RegistryTree& Tree() const { return m_tree; }
    // For changes that come from outside a handle (an import).
    RegistryTree& Tree() { return m_tree; }
    // The state as it is now, for a later comparison.
    RegistryTree Snapshot() const { return m_tree; }
    // Takes another tree in the place of the present one, whose keys count as deleted.
    void Replace(RegistryTree tree);
    // Grows with every change of the registry.
    std::uint64_t Generation() const { return m_tree.Generation(); }

    // A key as one call sees it.
    struct Use {
        std::shared_ptr<RegistryKey> key;
        LSTATUS status;  // 0, 6: no such handle, 5: opened without that access, 1018: deleted
    };
    // The key behind a predefined or open handle that was opened with all of those rights.
    Use Find(HKEY handle, REGSAM needed) const;

    // Gives a new handle with those (unmapped) rights; call: the function that made it.
    HKEY Open(std::shared_ptr<RegistryKey> key, REGSAM access, const char* call);
    // True also for a predefined handle, which stays open. False: no such handle.
    bool Close(HKEY handle);

    // The index-th subkey's name in the handle's key; walking upward by ones is cheap. Null behind
    // the last one. key: what Find gave for the handle.
    const std::u16string* NthSubkey(HKEY handle, const RegistryKey& key, DWORD index);

    // Told of each value that RegQueryValueExW looks for, found or not, when set. Also of those
    // that the stand-in looks for, on somebody's behalf.
    std::function<void(const RegistryKey& key, std::u16string_view name)> onQuery;

    static std::optional<RegistryRoot> PredefinedRoot(HKEY handle);
    // Rights as granted: the generic ones mapped, those of other things dropped.
    static REGSAM MapAccess(REGSAM access);

  private:
    // Where an enumeration stands; good for one generation.
    struct Cursor {
        const RegistryKey* key = nullptr;
        std::uint64_t generation = 0;
        DWORD index = 0;
        RegistryKey::Subkeys::const_iterator at;
    };
    struct OpenKey {
        std::shared_ptr<RegistryKey> key;
        REGSAM access;
    };

    RegistryTree m_tree;
    std::unordered_map<HKEY, OpenKey> m_open;
    std::unordered_map<HKEY, Cursor> m_cursors;
    std::uintptr_t m_next = 0x1000;
};

}  // namespace platform
