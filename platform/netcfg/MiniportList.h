#pragma once
// The devices of the virtual miniports' driver, as Services\MUXMP\Enum lists them: Count, and each
// instance id under a number from 0.

#include <set>

#include "NetComponents.h"

namespace platform {

void AddToMiniportList(const NetText& deviceId);
// Numbers the rest anew. deviceIds: folded.
void RemoveFromMiniportList(const std::set<NetText>& deviceIds);

}  // namespace platform
