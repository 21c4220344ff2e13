#include "RegistryGeneration.h"

#include "Registry.h"

namespace platform {

std::uint64_t RegistryGeneration() {
    return Machine::Current().Get<Registry>().Generation();
}

}  // namespace platform
