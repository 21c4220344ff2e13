#pragma once
// Finds the numbers of texts in constant time. Borrows the texts, which stay as they are as long as
// the index is used. Not for use by two threads at a time.

#include <windows.h>
#include <cstddef>
#include <memory>

class TextIndex {
  public:
    // Makes an empty index for at most so many texts. False when memory runs out.
    bool Reserve(size_t capacity);
    // Of equal texts the first one added counts. Within the capacity.
    void Add(LPCWSTR text, size_t number);
    // Compares exactly. False, and `number` as it was, without such a text.
    bool Find(LPCWSTR text, size_t& number) const;

  private:
    struct Slot {
        LPCWSTR text = nullptr;  // null: free
        size_t number = 0;
    };
    // The slot of that text, or the free one that it would take.
    Slot& SlotOf(LPCWSTR text) const;

    std::unique_ptr<Slot[]> m_slots;  // at most half of them taken
    size_t m_mask = 0;                // their number, a power of two, less one
};
