#include "Trace.h"

#include <algorithm>
#include <utility>

namespace platform {

void Trace::Add(Record record) {
    if (onCall) onCall(record);
    if (m_recording) m_records.push_back(std::move(record));
}

std::size_t Trace::Count(std::string_view name) const {
    return static_cast<std::size_t>(std::count_if(m_records.begin(), m_records.end(),
                                                  [&](const Record& r) { return name == r.name; }));
}

}  // namespace platform
