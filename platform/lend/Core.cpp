// The core of the stand-in where it is lent: no thread of its own, no fault, no trace. The threads
// of a real Windows don't pass a baton on; instead one lock is held by whoever works for the
// stand-in.

#include <mutex>

#include "Call.h"
#include "Unlocked.h"

namespace platform {
namespace {

thread_local int t_depth = 0;  // of this thread's Calls

std::recursive_mutex& Lock() {
    static std::recursive_mutex lock;
    return lock;
}

void TakeLock() {
    Lock().lock();
    ++t_depth;
}

void GiveLock() {
    --t_depth;
    Lock().unlock();
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
    TakeLock();
}

Call::~Call() {
    GiveLock();
}

// No call fails by a fault.
HRESULT Call::Result() const {
    return S_OK;
}

void Call::SetLast(DWORD error) {
    SetLastError(error);
}

QuietScope::QuietScope() {
    TakeLock();
}

QuietScope::~QuietScope() {
    GiveLock();
}

UnlockedScope::UnlockedScope() : m_depth(t_depth) {
    while (t_depth > 0)
        GiveLock();
}

UnlockedScope::~UnlockedScope() {
    while (t_depth < m_depth)
        TakeLock();
}

}  // namespace platform
