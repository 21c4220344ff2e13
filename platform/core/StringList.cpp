#include "StringList.h"

#include <algorithm>

namespace platform {

int StringList::Insert(const char16_t* text, bool sorted, std::optional<int> at) {
    Entry entry{text ? text : u"", 0, false};
    auto place = entries.end();
    if (at && *at >= 0) {
        if (*at > Count()) return -1;
        place = entries.begin() + *at;
    } else if (!at && sorted) {
        place = std::upper_bound(entries.begin(), entries.end(), entry.text,
                                 [](const std::u16string& value, const Entry& other) {
                                     return CompareNoCase(value, other.text) < 0;
                                 });
    }
    place = entries.insert(place, std::move(entry));
    return static_cast<int>(place - entries.begin());
}

int StringList::Find(std::u16string_view text, int start, bool whole) const {
    if (text.empty()) return -1;
    for (int step = 1; step <= Count(); ++step) {
        const int index = (std::clamp(start, -1, Count() - 1) + step) % Count();
        std::u16string_view candidate = entries[static_cast<std::size_t>(index)].text;
        if (!whole) candidate = candidate.substr(0, text.size());
        if (EqualNoCase(candidate, text)) return index;
    }
    return -1;
}

bool StringList::Has(LONG_PTR index) const {
    return index >= 0 && index < Count();
}

LRESULT StringList::Copy(LONG_PTR index, char16_t* buffer) const {
    if (!Has(index)) return -1;
    const std::u16string& text = (*this)[index].text;
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<LRESULT>(text.size());
}

}  // namespace platform
