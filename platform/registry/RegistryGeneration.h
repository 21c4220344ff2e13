#pragma once
// Tells whether what was read from the registry may still hold.

#include <cstdint>

namespace platform {

// A number that changes whenever anything in the registry does.
std::uint64_t RegistryGeneration();

}  // namespace platform
