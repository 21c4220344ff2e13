#pragma once
// What list boxes and combo boxes share.

#include <optional>
#include <string>
#include <vector>

#include <minwindef.h>

#include "Text.h"

namespace platform {

// The entries of a list, sorted or in the order of insertion. Indexes are those of the messages.
class StringList {
  public:
    struct Entry {
        std::u16string text;
        LPARAM data = 0;
        bool selected = false;
    };

    // Where the text went. at: nothing for the place that the order gives, a negative for the end.
    int Insert(const char16_t* text, bool sorted, std::optional<int> at);
    // The first entry after `start` that begins with the text, or is it, without regard to case;
    // goes around. -1 when there is none, and for an empty text.
    int Find(std::u16string_view text, int start, bool whole) const;
    bool Has(LONG_PTR index) const;
    int Count() const { return static_cast<int>(entries.size()); }
    // Copies the text with its terminator and gives its length; the buffer is large enough by
    // contract. -1 for a wrong index.
    LRESULT Copy(LONG_PTR index, char16_t* buffer) const;
    Entry& operator[](LONG_PTR index) { return entries[static_cast<std::size_t>(index)]; }
    const Entry& operator[](LONG_PTR index) const {
        return entries[static_cast<std::size_t>(index)];
    }

    std::vector<Entry> entries;
};

}  // namespace platform
