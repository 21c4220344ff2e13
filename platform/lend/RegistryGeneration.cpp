#include "RegistryGeneration.h"

#include <atomic>

namespace platform {

// The system doesn't tell, so nothing that was read holds any longer.
std::uint64_t RegistryGeneration() {
    static std::atomic<std::uint64_t> number = 0;
    return ++number;
}

}  // namespace platform
