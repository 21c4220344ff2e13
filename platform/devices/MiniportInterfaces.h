#pragma once
// The network interfaces of teams and VLANs, which the facts needn't describe.

#include <vector>

#include "Interfaces.h"

namespace platform {

// Adds a row for each installed virtual miniport that has none, in the order of the class keys. It
// is up while an adapter below it is, at any depth. Its addresses are those of the first such
// adapter or, when none is up, of the first one below it.
void AddMiniportInterfaces(std::vector<NetworkInterface>& interfaces);

}  // namespace platform
