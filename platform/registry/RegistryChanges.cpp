#include "RegistryChanges.h"

#include <algorithm>
#include <vector>

#include "MachineFile.h"
#include "Text.h"

namespace platform {
namespace {

constexpr char header[] = "Windows Registry Editor Version 5.00\n";
constexpr char movedComment[] = "; Set again below, so that the values stand in their order.\n";

bool IsEqual(const RegistryValue& a, const RegistryValue& b) {
    return a.IsSame(b) || (a.Type() == b.Type() && std::ranges::equal(a.Data(), b.Data()));
}

bool HasLink(const RegistryKey& key) {
    return std::ranges::any_of(key.Children(),
                               [](const auto& child) { return child.second->IsLink(); });
}

// Whether the key can't be changed into the other in place. The case of a name stays as it was
// made, and a path through a link leads to another key, so that the link goes only with its parent.
bool MustBeMadeAnew(const RegistryKey& from, const RegistryKey& to) {
    return from.Name() != to.Name() || (HasLink(from) && !HasLink(to));
}

// Which of a key's values stay where they are. A new value goes to the end of its key, so these can
// only be those with which the other key begins, as far as they stand in its order already.
std::vector<bool> Staying(const RegistryKey& from, const RegistryKey& to) {
    std::vector<bool> stays;
    auto next = to.Values().begin();
    for (const RegistryValue& value : from.Values()) {
        stays.push_back(next != to.Values().end() && value.Name() == next->Name());
        if (stays.back()) ++next;
    }
    return stays;
}

class Comparison {
  public:
    explicit Comparison(std::u16string_view leftOut) : m_leftOut(leftOut) {}

    void Compare(const RegistryKey& from, const RegistryKey& to) {
        m_path = from.Name();
        CompareKeys(from, to);
    }
    std::optional<std::string> Text() && {
        if (!m_canBeWritten) return std::nullopt;
        return std::move(m_text);
    }

  private:
    void CompareKeys(const RegistryKey& from, const RegistryKey& to);
    void CompareChildren(const RegistryKey* from, const RegistryKey* to);
    void WriteNew(const RegistryKey& key);
    void WriteChangedValues(const RegistryKey& from, const RegistryKey& to);
    void WriteKeyLine(const char* bracket);
    void WriteValue(const RegistryValue& value);
    void WriteDeletion(const RegistryValue& value);
    void CheckName(std::u16string_view name) {
        if (HasControlCharacter(name) || FromUtf8(ToUtf8(name)) != name) m_canBeWritten = false;
    }
    bool Counts(const RegistryKey& key) const {
        return !key.IsLink() && !EqualNames(m_path, m_leftOut);
    }

    std::u16string_view m_leftOut;
    std::u16string m_path;  // of the key at hand
    std::string m_text = header;
    bool m_canBeWritten = true;
};

void Comparison::CompareKeys(const RegistryKey& from, const RegistryKey& to) {
    WriteChangedValues(from, to);
    const RegistryKey::Subkeys& before = from.Children();
    const RegistryKey::Subkeys& after = to.Children();
    auto old = before.begin();
    auto made = after.begin();
    const NameLess less;
    while (old != before.end() || made != after.end()) {
        const bool isOld =
            made == after.end() || (old != before.end() && !less(made->first, old->first));
        const bool isMade =
            old == before.end() || (made != after.end() && !less(old->first, made->first));
        CompareChildren(isOld ? (old++)->second.get() : nullptr,
                        isMade ? (made++)->second.get() : nullptr);
    }
}

// One name below the key at hand; null: there is no such subkey on that side.
void Comparison::CompareChildren(const RegistryKey* from, const RegistryKey* to) {
    const std::size_t length = m_path.size();
    m_path.append(1, u'\\').append((from != nullptr ? from : to)->Name());
    if (from != nullptr && !Counts(*from)) from = nullptr;
    if (to != nullptr && !Counts(*to)) to = nullptr;
    if (from != nullptr && to != nullptr && !MustBeMadeAnew(*from, *to)) {
        CompareKeys(*from, *to);
    } else {
        if (from != nullptr) WriteKeyLine("[-");
        m_path.resize(length);
        if (to != nullptr) WriteNew(*to);
    }
    m_path.resize(length);
}

// A subkey of the key at hand with all that is in it.
void Comparison::WriteNew(const RegistryKey& key) {
    const std::size_t length = m_path.size();
    m_path.append(1, u'\\').append(key.Name());
    if (Counts(key)) {
        WriteKeyLine("[");
        for (const RegistryValue& value : key.Values())
            WriteValue(value);
        for (const auto& [name, child] : key.Children())
            WriteNew(*child);
    }
    m_path.resize(length);
}

void Comparison::WriteChangedValues(const RegistryKey& from, const RegistryKey& to) {
    const std::vector<bool> stays = Staying(from, to);
    const auto staying = static_cast<std::size_t>(std::ranges::count(stays, true));
    std::vector<const RegistryValue*> gone, moved, set;
    std::size_t place = 0;
    for (std::size_t i = 0; i < stays.size(); ++i) {
        const RegistryValue& value = from.Values()[i];
        if (!stays[i]) {
            (to.FindValue(value.Name()) != nullptr ? moved : gone).push_back(&value);
        } else if (const RegistryValue& wanted = to.Values()[place++]; !IsEqual(value, wanted)) {
            set.push_back(&wanted);
        }
    }
    for (std::size_t i = staying; i < to.Values().size(); ++i)
        set.push_back(&to.Values()[i]);
    if (gone.empty() && moved.empty() && set.empty()) return;

    WriteKeyLine("[");
    for (const RegistryValue* value : gone)
        WriteDeletion(*value);
    if (!moved.empty()) m_text += movedComment;
    for (const RegistryValue* value : moved)
        WriteDeletion(*value);
    for (const RegistryValue* value : set)
        WriteValue(*value);
}

void Comparison::WriteKeyLine(const char* bracket) {
    CheckName(m_path);
    m_text.append("\n").append(bracket).append(ToUtf8(m_path)).append("]\n");
}

void Comparison::WriteValue(const RegistryValue& value) {
    CheckName(value.Name());
    m_text += FormatValue(value.Name(), value.Type(), value.Data());
}

void Comparison::WriteDeletion(const RegistryValue& value) {
    CheckName(value.Name());
    m_text += FormatValueName(value.Name()) + "=-\n";
}

}  // namespace

std::optional<std::string> FormatChanges(const RegistryTree& from, const RegistryTree& to,
                                         std::u16string_view leftOut) {
    Comparison comparison(leftOut);
    for (std::size_t i = 0; i < registryRoots; ++i) {
        const auto root = static_cast<RegistryRoot>(i);
        comparison.Compare(*from.Root(root), *to.Root(root));
    }
    return std::move(comparison).Text();
}

}  // namespace platform
