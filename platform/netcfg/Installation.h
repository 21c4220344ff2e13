#pragma once
// What a component's coming and going does to the registry.

#include <vector>

#include "NetComponents.h"

namespace platform {

// Installs a component of that class and id, and fills in its GUID and its key. description: what
// the INF file calls it. False, and nothing is made, when no number is free for it.
bool InstallComponent(NetComponent& component, const NetText& description);
// Removes installed components with all that belongs to them.
void RemoveComponents(const std::vector<NetComponentPtr>& components);

}  // namespace platform
