#pragma once
// The time that passes for the library: the system's, or none at all while it is held, and what was
// charged. With the lock of a Call held.

#include "Machine.h"

namespace platform {

struct Clock : Part {
    const ULONGLONG start = GetTickCount64();
    ULONGLONG now = start;  // at the last look
    ULONGLONG system = start;
    ULONGLONG charged = 0;  // since then
    bool isHeld = false;    // moves only when it is set

    // Milliseconds since the system's start. What was measured since the last look took the time
    // that was charged for it, however long it took here.
    ULONGLONG Look();
};

}  // namespace platform
