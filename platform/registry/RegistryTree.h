#pragma once
// The registry's keys and values as a tree in memory, without handles and access rights.
//
// Not synchronized; inside a machine the holder of the baton uses it. Names keep their case and
// compare without it. Subkeys stand in the order of their names, values in the order in which they
// were first set. A copy of a tree is independent and shares the (immutable) values, so it costs
// about as much as the names of the keys.

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <minwindef.h>

namespace platform {

// Limits of Windows: characters in a key's name and a value's name, keys above and with a key, and
// bytes of one value (which has no limit but memory there).
inline constexpr std::size_t maxKeyName = 255;
inline constexpr std::size_t maxValueName = 16383;
inline constexpr std::size_t maxKeyDepth = 512;
inline constexpr std::size_t maxValueData = 0x7FFFFFFF;

bool EqualNames(std::u16string_view a, std::u16string_view b);
struct NameLess {
    bool operator()(std::u16string_view a, std::u16string_view b) const;
};

// The parts of a path between backslashes; empty parts are passed over, as Windows does.
// Takes the next part off the front of rest; empty when there is none left.
std::u16string_view NextPathPart(std::u16string_view& rest);

// The data of a REG_SZ as a text, up to its terminator if it has one.
std::u16string TextOf(std::span<const BYTE> data);

// One value: name (empty: the key's default value), type and data in a single shared block.
class RegistryValue {
  public:
    RegistryValue(std::u16string_view name, DWORD type, std::span<const BYTE> data);
    RegistryValue(const RegistryValue& other);
    RegistryValue(RegistryValue&& other) noexcept;
    RegistryValue& operator=(RegistryValue other) noexcept;
    ~RegistryValue();

    std::u16string_view Name() const;
    DWORD Type() const;
    std::span<const BYTE> Data() const;
    // True for two names of one block, not for two blocks that say the same.
    bool IsSame(const RegistryValue& other) const { return m_block == other.m_block; }

  private:
    struct Block;
    Block* m_block;
};

class RegistryKey {
  public:
    // The names are those of the keys.
    using Subkeys = std::map<std::u16string_view, std::shared_ptr<RegistryKey>, NameLess>;

    RegistryKey(std::u16string_view name, RegistryKey* parent) : m_name(name), m_parent(parent) {}
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    const std::u16string& Name() const { return m_name; }
    const Subkeys& Children() const { return m_children; }
    const std::vector<RegistryValue>& Values() const { return m_values; }
    // Null when there is no such value; good until the key's values change.
    const RegistryValue* FindValue(std::u16string_view name) const;
    bool IsRoot() const { return m_parent == nullptr && !m_deleted; }
    // Taken out of its tree, while somebody still holds it.
    bool IsDeleted() const { return m_deleted; }
    // Stands for another key, to which every path through it leads.
    bool IsLink() const { return m_link; }

  private:
    friend class RegistryTree;

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view name) const;
        std::size_t operator()(const RegistryValue& value) const { return (*this)(value.Name()); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(std::u16string_view a, const RegistryValue& b) const {
            return EqualNames(a, b.Name());
        }
        bool operator()(const RegistryValue& a, const RegistryValue& b) const {
            return EqualNames(a.Name(), b.Name());
        }
    };
    using Index = std::unordered_set<RegistryValue, Hash, Equal>;

    void BuildIndex() const;

    std::u16string m_name;
    RegistryKey* m_parent;
    Subkeys m_children;
    std::vector<RegistryValue> m_values;
    mutable std::unique_ptr<Index> m_index;  // only where a key has many values
    bool m_deleted = false;
    bool m_link = false;
};

// The predefined roots, in the order of their numbers in Windows.
enum class RegistryRoot { ClassesRoot, CurrentUser, LocalMachine, Users, CurrentConfig };
inline constexpr std::size_t registryRoots = 5;
const char16_t* RootName(RegistryRoot root);

class RegistryTree {
  public:
    RegistryTree();
    RegistryTree(const RegistryTree& other);
    RegistryTree& operator=(const RegistryTree&) = delete;
    RegistryTree(RegistryTree&&) = default;
    RegistryTree& operator=(RegistryTree&&) = default;
    ~RegistryTree() = default;

    const std::shared_ptr<RegistryKey>& Root(RegistryRoot root) const {
        return m_roots[static_cast<std::size_t>(root)];
    }
    // The key at a path below another one (that one itself for an empty path), or null. Links are
    // followed at every step.
    std::shared_ptr<RegistryKey> Find(const std::shared_ptr<RegistryKey>& from,
                                      std::u16string_view path) const;
    std::shared_ptr<RegistryKey> Find(RegistryRoot root, std::u16string_view path) const {
        return Find(Root(root), path);
    }
    // The same, but makes what is missing. Null, and nothing made, when a part of the path is
    // longer than maxKeyName or the key would lie deeper than maxKeyDepth. isNew may be null.
    std::shared_ptr<RegistryKey> Create(const std::shared_ptr<RegistryKey>& from,
                                        std::u16string_view path, bool* isNew = nullptr);
    // Takes the key with all below it out of the tree. Not for a root.
    void Delete(const std::shared_ptr<RegistryKey>& key);
    // Takes everything out of the key.
    void Empty(RegistryKey& key);

    void SetValue(RegistryKey& key, std::u16string_view name, DWORD type,
                  std::span<const BYTE> data);
    bool DeleteValue(RegistryKey& key, std::u16string_view name);

    // Makes SYSTEM\CurrentControlSet a link to the control set that SYSTEM\Select names, when there
    // is one. What stands in CurrentControlSet goes over to it, and counts where both have a value.
    void LinkControlSet();

    // Grows with every change.
    std::uint64_t Generation() const { return m_generation; }
    // Goes on counting from there.
    void ContinueGeneration(std::uint64_t generation) { m_generation += generation + 1; }

    // Every key but the links, the upper ones first; path begins with the root's name.
    using Visitor = std::function<void(const std::u16string& path, const RegistryKey& key)>;
    void Walk(const Visitor& visit) const;

  private:
    using KeyPointer = std::shared_ptr<RegistryKey>;
    static KeyPointer Clone(const RegistryKey& key, RegistryKey* parent);
    static std::size_t Depth(const RegistryKey& key);
    static void MarkDeleted(RegistryKey& key);
    static void WalkKey(const RegistryKey& key, std::u16string& path, const Visitor& visit);
    // The subkey of that name, or what it leads to; null when there is none.
    KeyPointer Step(const RegistryKey& key, std::u16string_view name) const;
    void MoveInto(RegistryKey& from, RegistryKey& to);

    std::array<std::shared_ptr<RegistryKey>, registryRoots> m_roots;
    std::u16string m_controlSet;  // the name to which the link leads
    std::uint64_t m_generation = 0;
};

}  // namespace platform
