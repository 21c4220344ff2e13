#include "VlanList.h"

#include <utility>

// One after the other: entries that freed their successors would need a stack as long as the list.
VlanList::~VlanList() {
    while (m_first)
        m_first = std::move(m_first->next);
}

void VlanList::Push(std::unique_ptr<VlanEntry> entry) {
    entry->next = std::move(m_first);
    m_first = std::move(entry);
    ++m_count;
}

void VlanList::Remove(const VlanEntry& entry) {
    std::unique_ptr<VlanEntry>* place = &m_first;
    while (*place && place->get() != &entry)
        place = &(*place)->next;
    if (!*place) return;
    *place = std::move((*place)->next);
    --m_count;
}
