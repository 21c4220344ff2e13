#pragma once
// The device objects of network adapters. Their drivers answer object identifiers as the facts say.

#include <memory>
#include <string_view>

#include "Handles.h"

namespace platform {

// The device of that name, which follows `\\.\` in a path. Null when no driver has it.
std::shared_ptr<KernelObject> OpenMiniport(std::u16string_view name);

}  // namespace platform
