#include "RegistryTree.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Text.h"

namespace platform {
namespace {

// From so many values on, a key looks them up by hash.
constexpr std::size_t indexedFrom = 65;

constexpr char16_t asciiEnd = 0x80;

char16_t Fold(char16_t unit) {
    if (unit >= asciiEnd) return UpCase(unit);
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - (u'a' - u'A')) : unit;
}

}  // namespace

bool EqualNames(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(),
                      [](char16_t x, char16_t y) { return x == y || Fold(x) == Fold(y); });
}

bool NameLess::operator()(std::u16string_view a, std::u16string_view b) const {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] == b[i]) continue;
        const char16_t x = Fold(a[i]);
        const char16_t y = Fold(b[i]);
        if (x != y) return x < y;
    }
    return a.size() < b.size();
}

std::u16string_view NextPathPart(std::u16string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(u'\\'), rest.size()));
    const std::u16string_view part = rest.substr(0, rest.find(u'\\'));
    rest.remove_prefix(part.size());
    return part;
}

// Followed in memory by the name's units and then the data.
struct RegistryValue::Block {
    std::uint32_t uses;
    DWORD type;
    std::uint32_t dataSize;
    std::uint16_t nameLength;

    char16_t* Name() { return reinterpret_cast<char16_t*>(this + 1); }
    BYTE* Data() { return reinterpret_cast<BYTE*>(Name() + nameLength); }
};

RegistryValue::RegistryValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) {
    void* memory = ::operator new(sizeof(Block) + name.size() * sizeof(char16_t) + data.size());
    m_block = new (memory) Block{1, type, static_cast<std::uint32_t>(data.size()),
                                 static_cast<std::uint16_t>(name.size())};
    std::copy(name.begin(), name.end(), m_block->Name());
    std::copy(data.begin(), data.end(), m_block->Data());
}

RegistryValue::RegistryValue(const RegistryValue& other) : m_block(other.m_block) {
    ++m_block->uses;
}

RegistryValue::RegistryValue(RegistryValue&& other) noexcept
    : m_block(std::exchange(other.m_block, nullptr)) {}

RegistryValue& RegistryValue::operator=(RegistryValue other) noexcept {
    std::swap(m_block, other.m_block);
    return *this;
}

RegistryValue::~RegistryValue() {
    if (m_block != nullptr && --m_block->uses == 0) ::operator delete(m_block);
}

std::u16string_view RegistryValue::Name() const {
    return {m_block->Name(), m_block->nameLength};
}

DWORD RegistryValue::Type() const {
    return m_block->type;
}

std::span<const BYTE> RegistryValue::Data() const {
    return {m_block->Data(), m_block->dataSize};
}

std::size_t RegistryKey::Hash::operator()(std::u16string_view name) const {
    std::size_t hash = 14695981039346656037U;  // FNV-1a
    for (const char16_t unit : name)
        hash = (hash ^ Fold(unit)) * 1099511628211U;
    return hash;
}

void RegistryKey::BuildIndex() const {
    m_index = std::make_unique<Index>(m_values.begin(), m_values.end());
}

const RegistryValue* RegistryKey::FindValue(std::u16string_view name) const {
    if (m_values.size() < indexedFrom) {
        const auto found = std::find_if(m_values.begin(), m_values.end(), [&](const auto& value) {
            return EqualNames(value.Name(), name);
        });
        return found == m_values.end() ? nullptr : &*found;
    }
    if (!m_index) BuildIndex();
    const auto found = m_index->find(name);
    return found == m_index->end() ? nullptr : &*found;
}

}  // namespace platform
