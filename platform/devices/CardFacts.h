#pragma once
// The InfiniBand cards as the facts give them. GUIDs have their bytes in network order.

#include <optional>
#include <vector>

#include <windows.h>

namespace platform {

using Net64 = UINT64;

// In the order of their keys; a key that isn't 16 hexadecimal digits stands for no card.
std::vector<Net64> CardGuids();
// The GUIDs of a card's ports, at most 255. Nothing when the text can't be read.
std::optional<std::vector<Net64>> CardPorts(Net64 card);
// Milliseconds of one measurement from the processor that the thread is pinned to; from the first
// processor where it isn't. 10 where the facts give none.
DWORD MeasurementTicks(Net64 card);

}  // namespace platform
