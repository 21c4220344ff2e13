// The core of the stand-in where it is lent: no thread of its own, no fault, no trace. The threads
// of a real Windows don't pass a baton on; instead one lock is held by whoever works for the
// stand-in.

#include <mutex>

#include "Call.h"

namespace platform {
namespace {

std::recursive_mutex& Lock() {
    static std::recursive_mutex lock;
    return lock;
}

}  // namespace

struct Scheduler::State {};

Scheduler::Scheduler(std::uint64_t) {}
Scheduler::~Scheduler() = default;

Machine::Machine(std::uint64_t startSeed) : seed(startSeed), scheduler(startSeed) {}
Machine::~Machine() = default;

// It lives as long as the process, since the library may call until then.
Machine& Machine::Current() {
    static Machine& machine = *new Machine;
    return machine;
}

Call::Call(const char* name, const WCHAR*, DWORD) : machine(Machine::Current()), m_name(name) {
    Lock().lock();
}

Call::~Call() {
    Lock().unlock();
}

void Call::SetLast(DWORD error) {
    SetLastError(error);
}

QuietScope::QuietScope() {
    Lock().lock();
}

QuietScope::~QuietScope() {
    Lock().unlock();
}

}  // namespace platform
