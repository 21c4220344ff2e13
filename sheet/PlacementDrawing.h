#pragma once
// The machine's processors and the work of a card's ports on them, as text.

#include <string>

#include "SheetText.h"

namespace sheet {

// The processors by node, and below each port of the device's card a row for each kind of work, at
// most 100 columns wide; what is wider goes on below. Reads the system and the registry as they
// are.
std::string DrawPlacement(const Text& instanceId);

}  // namespace sheet
