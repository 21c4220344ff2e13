#include "NetCfgCarrier.h"

#include "Machine.h"

namespace platform {

std::uint64_t GuidSeed() {
    return Machine::Current().seed;
}

std::uint64_t EngineTime() {
    return Machine::Current().scheduler.Now();
}

bool WaitForEngine(const char* call, const std::function<bool()>& ready,
                   std::optional<std::uint64_t> due) {
    return Machine::Current().scheduler.BlockUntil(call, ready, due);
}

}  // namespace platform
