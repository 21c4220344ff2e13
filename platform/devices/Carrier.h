#pragma once
// What the processors, the access layer and the device tree ask of whatever carries them. Here that
// is the machine; where they are lent to a real Windows it is that Windows.

#include <optional>
#include <string>

#include <windows.h>
#include <cfgmgr32.h>

namespace platform {

// Lets the thread run on those processors only. Gives 0 or the system's error. The affinity is
// valid on this machine.
DWORD PinThread(HANDLE thread, const GROUP_AFFINITY& affinity);
// The affinity last set for the thread, or nothing.
std::optional<GROUP_AFFINITY> PinnedTo(HANDLE thread);
// Lets time pass.
void ChargeClock(DWORD milliseconds);
// The instance id of a device node that isn't of the tree, but was numbered elsewhere; else empty.
std::basic_string<WCHAR> ForeignNodeId(DEVINST node);

}  // namespace platform
