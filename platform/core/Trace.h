#pragma once
// The recording of calls: how often, in which order, with which argument and on which thread.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <minwindef.h>

namespace platform {

class Trace {
  public:
    struct Record {
        const char* name;
        std::u16string argument;
        unsigned thread;  // 0 for the machine's first thread
        bool failed;      // a fault was laid over it
    };

    // Keeps records from now on; what was kept before stays.
    void Start() { m_recording = true; }
    void Stop() { m_recording = false; }
    void Clear() { m_records.clear(); }
    bool Recording() const { return m_recording || static_cast<bool>(onCall); }
    void Add(Record record);

    const std::vector<Record>& Records() const { return m_records; }
    std::size_t Count(std::string_view name) const;

    // Called for each counted call, when set.
    std::function<void(const Record&)> onCall;

  private:
    bool m_recording = false;
    std::vector<Record> m_records;
};

}  // namespace platform
