#pragma once
// What the library holds of the machine: every handle, reference and block, from the call that made
// it to the call that released it. Whatever is open when the machine goes is a leak. Used by the
// baton's holder only.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace platform {

class Ledger {
  public:
    struct Entry {
        const char* kind;  // "registry key", "BSTR", ...
        const char* call;  // the stand-in function that made it
        std::uint64_t serial;
    };

    // kind is a string constant; things of one kind are told apart by their address or number.
    void Enter(const char* kind, const void* thing, const char* call);
    // False when no such thing is open: released twice, or never made.
    bool Strike(const char* kind, const void* thing);
    bool Holds(const char* kind, const void* thing) const;
    // Oldest first.
    std::vector<Entry> Open() const;

  private:
    using Id = std::pair<std::string, const void*>;
    std::map<Id, Entry> m_entries;
    std::uint64_t m_next = 1;
};

}  // namespace platform
