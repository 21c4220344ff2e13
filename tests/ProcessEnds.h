#pragma once
// What is left when the process ends in the middle of an operation, as in a power failure: the
// registry and drive C:, as they are before a call of the library, and nothing else.
//
// Since nothing runs after such an end, one run of the operation shows what an end at each of its
// calls leaves: no run is cut short, and no thread has to be unwound.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Machine.h"

// What is left, and how it comes into a fresh machine.
struct Remains {
    std::string registry;                         // a machine file
    std::map<std::u16string, std::string> files;  // bytes by path

    static Remains Of(platform::Machine& machine);
    void PutInto(platform::Machine& machine) const;
    // The files alone.
    void PutFilesInto(platform::Machine& machine) const;
};

// Watches the counted calls of a machine, which it borrows, from its making on until it goes.
class ProcessEnds {
  public:
    explicit ProcessEnds(platform::Machine& machine);
    ~ProcessEnds();
    ProcessEnds(const ProcessEnds&) = delete;
    ProcessEnds& operator=(const ProcessEnds&) = delete;

    struct End {
        std::string call;  // the one that didn't happen: "NAME ARGUMENT"
        // Shared by ends one after the other between which nothing has changed.
        std::shared_ptr<const Remains> remains;
    };
    // One for each call so far.
    const std::vector<End>& All() const { return m_ends; }

  private:
    std::shared_ptr<const Remains> Take();

    platform::Machine& m_machine;
    std::uint64_t m_generation = 0;
    std::vector<End> m_ends;
};
