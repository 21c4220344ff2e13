#pragma once
// The clock of a session on Windows. Lent with the rest (--lend), it moves only when the sheet's
// thread and the library's threads have nothing to do, and the session says how far. Otherwise it
// is the computer's. The sheet's thread only.

#include <cstdint>

#include <windows.h>

namespace sheet {

// Takes the clock of a lending DLL from now on; null: the computer's.
void HoldMachineClock(HMODULE lender);
bool IsMachineClockHeld();
// Milliseconds since then.
std::uint64_t MachineClockTime();
// A time at which the user has something to do.
void AddWakingTime(std::uint64_t time);
// True when each thread of the library waits, and has looked just now at what it waits for.
// Without a lent clock nobody can tell: true.
bool LibraryThreadsWait();
// Lets a held clock run to the user's next time, or to the end of a wait of the library before it.
void MoveMachineClock();

}  // namespace sheet
