#pragma once
// GUIDs for new components. They follow from the machine's seed alone, so that a script that is run
// twice gives the same.

#include <windows.h>

namespace platform {

// The first of the seed's GUIDs that the machine has nowhere: as a component's, as a key's name
// among the keys that are named by GUIDs, or in the values of the MUX driver's adapters.
GUID NewComponentGuid();

}  // namespace platform
