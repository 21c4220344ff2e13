#pragma once
// What the processors and the access layer ask of whatever carries them. Here that is the machine;
// where they are lent to a real Windows it is that Windows.

#include <optional>

#include <windows.h>

namespace platform {

// Lets the thread run on those processors only. Gives 0 or the system's error. The affinity is
// valid on this machine.
DWORD PinThread(HANDLE thread, const GROUP_AFFINITY& affinity);
// The affinity last set for the thread, or nothing.
std::optional<GROUP_AFFINITY> PinnedTo(HANDLE thread);
// Lets time pass.
void ChargeClock(DWORD milliseconds);

}  // namespace platform
