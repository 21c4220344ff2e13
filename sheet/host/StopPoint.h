#pragma once
// The call of the library at which the process ends, as in a power failure.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Machine.h"

namespace sheet {

// Without a call number it does nothing.
struct StopPoint : platform::Part {
    std::uint64_t callNumber = 0;  // from 1, counted from the first sheet on
    // Called once, when that call is made and before it has any effect. If it comes back, the
    // machine goes on.
    std::function<void(const char* call, std::u16string_view argument)> onStop;

    // Starts to count, unless it is counting already.
    void CountFromNow(platform::Machine& machine) {
        if (callNumber == 0 || machine.beforeCall) return;
        machine.beforeCall = [this, count = std::uint64_t{0}](
                                 const char* call, std::u16string_view argument) mutable {
            if (++count == callNumber) onStop(call, argument);
        };
    }
};

}  // namespace sheet
