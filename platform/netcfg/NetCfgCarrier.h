#pragma once
// What the network configuration engine asks of whatever carries it: the machine, or a real Windows
// to which it is lent.

#include <cstdint>
#include <functional>
#include <optional>

#include <windows.h>

namespace platform {

// From which the GUIDs of new components come.
std::uint64_t GuidSeed();
// Milliseconds since the machine's start.
std::uint64_t EngineTime();
// Waits until ready() holds, which any thread may ask, or until that time; without one, for good.
// call: the method that waits. False when ready() doesn't hold.
bool WaitForEngine(const char* call, const std::function<bool()>& ready,
                   std::optional<std::uint64_t> due);

}  // namespace platform
