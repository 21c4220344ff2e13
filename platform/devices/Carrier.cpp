#include "Carrier.h"

#include <map>

#include "Machine.h"

namespace platform {
namespace {

// By the thread's number.
struct Affinities : Part {
    std::map<unsigned, GROUP_AFFINITY> byThread;
};

// Nobody pins a thread but itself.
bool IsCurrent(HANDLE thread) {
    return thread == GetCurrentThread();
}

}  // namespace

DWORD PinThread(HANDLE thread, const GROUP_AFFINITY& affinity) {
    if (!IsCurrent(thread)) return ERROR_INVALID_HANDLE;
    Machine& machine = Machine::Current();
    machine.Get<Affinities>().byThread[machine.scheduler.CurrentThread()] = affinity;
    return ERROR_SUCCESS;
}

std::optional<GROUP_AFFINITY> PinnedTo(HANDLE thread) {
    if (!IsCurrent(thread)) return std::nullopt;
    Machine& machine = Machine::Current();
    const auto& byThread = machine.Get<Affinities>().byThread;
    const auto found = byThread.find(machine.scheduler.CurrentThread());
    return found == byThread.end() ? std::nullopt : std::optional(found->second);
}

void ChargeClock(DWORD milliseconds) {
    Machine::Current().scheduler.Advance(milliseconds);
}

// All nodes of the machine are of the tree.
std::basic_string<WCHAR> ForeignNodeId(DEVINST) {
    return {};
}

}  // namespace platform
