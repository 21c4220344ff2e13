#pragma once
// Waiting on the lent clock.

#include <functional>

#include <windows.h>

namespace platform {

// Waits until isOver() holds, for up to so many milliseconds, or INFINITE. It is asked again and
// again, with the lock of a Call held. The lock of the calling thread's own Calls is given up
// meanwhile. False at the time-out.
bool WaitUntil(const std::function<bool()>& isOver, DWORD milliseconds);

}  // namespace platform
