#include "../Seam.h"

#include "../Transcript.h"

namespace sheet {

LibraryCall::LibraryCall() : m_scope(nullptr) {}

LibraryCall::~LibraryCall() = default;

void RememberRegistry() {}

std::string RegistryChanges(Changes) {
    throw Refusal{"changes are told on a machine file only, not on this computer"};
}

}  // namespace sheet
