#pragma once
// A machine that fits into a process: everything that the stand-in's functions act on.
//
// One machine lives at a time. Each API family keeps its state in a part of its own, made when it
// is first asked for, so that a family knows only itself and the core: ledger, faults, trace,
// scheduler and user. The facts of the machine (version, processors, cards, ...) aren't state: they
// stand in the registry and are read there when they are needed (Facts.h).

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
#include <unordered_map>
#include <vector>

#include "Faults.h"
#include "Ledger.h"
#include "Scheduler.h"
#include "Trace.h"
#include "User.h"

namespace platform {

// Base of what a family keeps in the machine. A part is destroyed with the machine, the one made
// last first; it must not release what the library should have released.
class Part {
  public:
    virtual ~Part() = default;
    // The process ends as ExitProcess ends it.
    virtual void OnExit() {}
};

// Thrown by RaiseException and by a deadlock: the machine stops where it is. The ledger isn't
// checked then.
struct MachineEnded {
    DWORD code;
    std::string reason;
};

class Machine {
  public:
    // seed: 0 lets a thread run until it blocks; any other passes the baton at platform calls, in
    // an order that this seed repeats.
    explicit Machine(std::uint64_t seed = 0);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // The living machine. Ends the process with a message when there is none.
    static Machine& Current();
    // The living machine, or null.
    static Machine* CurrentOrNull();

    template <class T>
    T& Get() {
        std::unique_ptr<Part>*& slot = m_slots[typeid(T)];
        if (!slot) {
            // The order of the vector is the order of making; elements are boxed, so they stay.
            m_parts.push_back(std::make_unique<std::unique_ptr<Part>>(std::make_unique<T>()));
            slot = m_parts.back().get();
        }
        return static_cast<T&>(**slot);
    }

    // Marks the machine as ended, so that its ledger isn't checked.
    void End(const std::string& reason);
    // Ends the process as ExitProcess does: the loaded modules are told, and what is held then, and
    // threads that still wait, go with it.
    void Exit();
    bool Ended() const { return m_ended; }

    const std::uint64_t seed;
    Ledger ledger;
    FaultPlan faults;
    Trace trace;
    Scheduler scheduler;
    // Called before each counted call has had any effect, in its thread and in quiet mode, when
    // set. It may look at the machine, keep what a power failure would leave now (Remains.h), or
    // end the process.
    std::function<void(const char* call, std::u16string_view argument)> beforeCall;
    // Borrowed; null means a machine without a user, on which a message box is an error.
    User* user = nullptr;
    // Receives each entry that is still open when the machine goes; by default it is printed to
    // standard error and ends the process.
    std::function<void(const Ledger::Entry&)> onLeak;

  private:
    std::vector<std::unique_ptr<std::unique_ptr<Part>>> m_parts;
    std::unordered_map<std::type_index, std::unique_ptr<Part>*> m_slots;
    bool m_ended = false;
};

}  // namespace platform
