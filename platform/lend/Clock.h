#pragma once
// The time that passes for the library: the system's, and what was charged. With the lock held.

#include "Machine.h"

namespace platform {

struct Clock : Part {
    const ULONGLONG start = GetTickCount64();
    ULONGLONG shift = 0;  // to the system's time
    ULONGLONG last = start;
    ULONGLONG charged = 0;  // since then

    // Milliseconds since the system's start. What was measured since the last look took the time
    // that was charged for it, however long it took here.
    ULONGLONG Look();
};

}  // namespace platform
