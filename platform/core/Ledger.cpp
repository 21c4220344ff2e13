#include "Ledger.h"

#include <algorithm>

namespace platform {

void Ledger::Enter(const char* kind, const void* thing, const char* call) {
    m_entries.insert_or_assign(Id(kind, thing), Entry{kind, call, m_next++});
}

bool Ledger::Strike(const char* kind, const void* thing) {
    return m_entries.erase(Id(kind, thing)) != 0;
}

bool Ledger::Holds(const char* kind, const void* thing) const {
    return m_entries.contains(Id(kind, thing));
}

std::vector<Ledger::Entry> Ledger::Open() const {
    std::vector<Entry> open;
    for (const auto& [id, entry] : m_entries)
        open.push_back(entry);
    std::sort(open.begin(), open.end(),
              [](const Entry& a, const Entry& b) { return a.serial < b.serial; });
    return open;
}

}  // namespace platform
