#include "TextIndex.h"

#include <bit>
#include <functional>
#include <new>
#include <string_view>

namespace {

using TextView = std::basic_string_view<WCHAR>;

}  // namespace

bool TextIndex::Reserve(size_t capacity) {
    const size_t count = std::bit_ceil(2 * capacity + 1);
    m_slots.reset(new (std::nothrow) Slot[count]);
    m_mask = count - 1;
    return m_slots != nullptr;
}

TextIndex::Slot& TextIndex::SlotOf(LPCWSTR text) const {
    size_t place = std::hash<TextView>()(text) & m_mask;
    while (m_slots[place].text && TextView(m_slots[place].text) != text)
        place = (place + 1) & m_mask;
    return m_slots[place];
}

void TextIndex::Add(LPCWSTR text, size_t number) {
    Slot& slot = SlotOf(text);
    if (!slot.text) slot = {text, number};
}

bool TextIndex::Find(LPCWSTR text, size_t& number) const {
    if (!m_slots) return false;
    const Slot& slot = SlotOf(text);
    if (!slot.text) return false;
    number = slot.number;
    return true;
}
