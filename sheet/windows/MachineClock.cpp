#include "MachineClock.h"

#include <set>

#include "../Transcript.h"

namespace sheet {

namespace {

// What lend.dll exports for the program that loads it.
struct LentClock {
    void(WINAPI* hold)() = nullptr;
    ULONGLONG(WINAPI* time)() = nullptr;
    BOOL(WINAPI* allThreadsWait)() = nullptr;
    void(WINAPI* move)(ULONGLONG time) = nullptr;
};

LentClock g_lent;
ULONGLONG g_start = 0;
std::set<std::uint64_t> g_wakingTimes;

template <class Function>
void Find(HMODULE lender, const char* name, Function& function) {
    function =
        reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(lender, name)));
    if (function == nullptr) throw Refusal{std::string("the lending DLL has no ") + name};
}

}  // namespace

void HoldMachineClock(HMODULE lender) {
    g_start = GetTickCount64();
    if (lender == nullptr) return;
    Find(lender, "HoldClock", g_lent.hold);
    Find(lender, "ClockTime", g_lent.time);
    Find(lender, "AllThreadsWait", g_lent.allThreadsWait);
    Find(lender, "MoveClock", g_lent.move);
    g_lent.hold();
}

bool IsMachineClockHeld() {
    return g_lent.hold != nullptr;
}

std::uint64_t MachineClockTime() {
    return IsMachineClockHeld() ? g_lent.time() : GetTickCount64() - g_start;
}

void AddWakingTime(std::uint64_t time) {
    g_wakingTimes.insert(time);
}

bool LibraryThreadsWait() {
    return !IsMachineClockHeld() || g_lent.allThreadsWait() != FALSE;
}

void MoveMachineClock() {
    if (!IsMachineClockHeld()) return;
    g_wakingTimes.erase(g_wakingTimes.begin(), g_wakingTimes.upper_bound(MachineClockTime()));
    if (!g_wakingTimes.empty()) g_lent.move(*g_wakingTimes.begin());
}

}  // namespace sheet
