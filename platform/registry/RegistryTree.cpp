#include "RegistryTree.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include <winnt.h>

namespace platform {
namespace {

constexpr std::u16string_view currentControlSet = u"CurrentControlSet";

// "ControlSet001" for 1.
std::u16string ControlSetName(DWORD number) {
    std::u16string digits;
    for (; number != 0 || digits.size() < 3; number /= 10)
        digits.insert(digits.begin(), static_cast<char16_t>(u'0' + number % 10));
    return u"ControlSet" + digits;
}

std::optional<DWORD> NumberOf(const RegistryValue* value) {
    DWORD number;
    if (value == nullptr || value->Type() != REG_DWORD || value->Data().size() != sizeof number)
        return std::nullopt;
    std::memcpy(&number, value->Data().data(), sizeof number);
    return number;
}

}  // namespace

std::u16string TextOf(std::span<const BYTE> data) {
    std::u16string text(data.size() / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * sizeof(char16_t));
    return text.substr(0, text.find(u'\0'));
}

const char16_t* RootName(RegistryRoot root) {
    static const char16_t* const names[registryRoots] = {u"HKEY_CLASSES_ROOT", u"HKEY_CURRENT_USER",
                                                         u"HKEY_LOCAL_MACHINE", u"HKEY_USERS",
                                                         u"HKEY_CURRENT_CONFIG"};
    return names[static_cast<std::size_t>(root)];
}

RegistryTree::RegistryTree() {
    for (std::size_t i = 0; i < registryRoots; ++i)
        m_roots[i] = std::make_shared<RegistryKey>(RootName(static_cast<RegistryRoot>(i)), nullptr);
}

RegistryTree::RegistryTree(const RegistryTree& other)
    : m_controlSet(other.m_controlSet), m_generation(other.m_generation) {
    std::transform(other.m_roots.begin(), other.m_roots.end(), m_roots.begin(),
                   [](const KeyPointer& root) { return Clone(*root, nullptr); });
}

RegistryTree::KeyPointer RegistryTree::Clone(const RegistryKey& key, RegistryKey* parent) {
    auto clone = std::make_shared<RegistryKey>(key.m_name, parent);
    clone->m_values = key.m_values;
    clone->m_link = key.m_link;
    for (const auto& [name, child] : key.m_children) {
        KeyPointer copy = Clone(*child, clone.get());
        clone->m_children.emplace_hint(clone->m_children.end(), copy->Name(), copy);
    }
    return clone;
}

std::size_t RegistryTree::Depth(const RegistryKey& key) {
    std::size_t depth = 1;
    for (const RegistryKey* at = key.m_parent; at != nullptr; at = at->m_parent)
        ++depth;
    return depth;
}

void RegistryTree::MarkDeleted(RegistryKey& key) {
    key.m_deleted = true;
    key.m_parent = nullptr;
    for (const auto& [name, child] : key.m_children)
        MarkDeleted(*child);
}

RegistryTree::KeyPointer RegistryTree::Step(const RegistryKey& key,
                                            std::u16string_view name) const {
    const auto found = key.m_children.find(name);
    if (found == key.m_children.end()) return nullptr;
    return found->second->m_link ? Step(key, m_controlSet) : found->second;
}

std::shared_ptr<RegistryKey> RegistryTree::Find(const KeyPointer& from,
                                                std::u16string_view path) const {
    KeyPointer key = from;
    for (auto part = NextPathPart(path); key && !part.empty(); part = NextPathPart(path))
        key = Step(*key, part);
    return key;
}

std::shared_ptr<RegistryKey> RegistryTree::Create(const KeyPointer& from, std::u16string_view path,
                                                  bool* isNew) {
    std::size_t depth = Depth(*from);
    std::u16string_view rest = path;
    for (auto part = NextPathPart(rest); !part.empty(); part = NextPathPart(rest)) {
        if (part.size() > maxKeyName || ++depth > maxKeyDepth) return nullptr;
    }

    if (isNew) *isNew = false;
    KeyPointer key = from;
    for (auto part = NextPathPart(path); !part.empty(); part = NextPathPart(path)) {
        KeyPointer child = Step(*key, part);
        if (!child) {
            // A dangling link stands for the key that it names.
            const bool dangling = key->m_children.contains(part);
            child = std::make_shared<RegistryKey>(dangling ? m_controlSet : part, key.get());
            key->m_children.emplace(child->Name(), child);
            ++m_generation;
            if (isNew) *isNew = true;
        }
        key = std::move(child);
    }
    return key;
}

void RegistryTree::Delete(const KeyPointer& key) {
    RegistryKey& parent = *key->m_parent;
    MarkDeleted(*key);
    parent.m_children.erase(key->m_name);
    ++m_generation;
}

void RegistryTree::Empty(RegistryKey& key) {
    for (const auto& [name, child] : key.m_children)
        MarkDeleted(*child);
    key.m_children.clear();
    key.m_index.reset();
    key.m_values.clear();
    ++m_generation;
}

void RegistryTree::SetValue(RegistryKey& key, std::u16string_view name, DWORD type,
                            std::span<const BYTE> data) {
    ++m_generation;
    const RegistryValue* old = key.FindValue(name);
    if (old == nullptr) {
        key.m_values.emplace_back(name, type, data);
        if (key.m_index) key.m_index->insert(key.m_values.back());
        return;
    }
    // The name keeps its case.
    const RegistryValue kept = *old;
    RegistryValue changed(kept.Name(), type, data);
    const auto place = std::find_if(key.m_values.begin(), key.m_values.end(),
                                    [&](const RegistryValue& value) { return value.IsSame(kept); });
    if (key.m_index) {
        key.m_index->erase(kept);
        key.m_index->insert(changed);
    }
    *place = std::move(changed);
}

bool RegistryTree::DeleteValue(RegistryKey& key, std::u16string_view name) {
    const RegistryValue* found = key.FindValue(name);
    if (found == nullptr) return false;
    const RegistryValue value = *found;
    if (key.m_index) key.m_index->erase(value);
    std::erase_if(key.m_values, [&](const RegistryValue& other) { return other.IsSame(value); });
    ++m_generation;
    return true;
}

void RegistryTree::MoveInto(RegistryKey& from, RegistryKey& to) {
    for (const RegistryValue& value : from.m_values)
        SetValue(to, value.Name(), value.Type(), value.Data());
    for (const auto& [name, child] : from.m_children) {
        const auto there = to.m_children.find(name);
        if (there != to.m_children.end()) {
            MoveInto(*child, *there->second);
            continue;
        }
        child->m_parent = &to;
        to.m_children.emplace(child->Name(), child);
    }
    from.m_children.clear();
}

void RegistryTree::LinkControlSet() {
    const KeyPointer system = Find(RegistryRoot::LocalMachine, u"SYSTEM");
    const KeyPointer select = system ? Step(*system, u"Select") : nullptr;
    const auto current = select ? NumberOf(select->FindValue(u"Current")) : std::nullopt;
    const KeyPointer target = current ? Step(*system, ControlSetName(*current)) : nullptr;
    if (!target) return;

    m_controlSet = target->Name();
    const auto old = system->m_children.find(currentControlSet);
    if (old != system->m_children.end()) {
        MoveInto(*old->second, *target);
        system->m_children.erase(old);
    }
    auto link = std::make_shared<RegistryKey>(currentControlSet, system.get());
    link->m_link = true;
    system->m_children.emplace(link->Name(), link);
    ++m_generation;
}

void RegistryTree::WalkKey(const RegistryKey& key, std::u16string& path, const Visitor& visit) {
    visit(path, key);
    const std::size_t length = path.size();
    for (const auto& [name, child] : key.m_children) {
        if (child->m_link) continue;
        path.append(1, u'\\').append(name);
        WalkKey(*child, path, visit);
        path.resize(length);
    }
}

void RegistryTree::Walk(const Visitor& visit) const {
    for (const KeyPointer& root : m_roots) {
        std::u16string path = root->Name();
        WalkKey(*root, path, visit);
    }
}

}  // namespace platform
