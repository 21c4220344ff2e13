#pragma once
// The values of a fault sweep, with the components that an operation made named by what they are:
// by their display name instead of the GUID and the numbers that the engine gives them.

#include "FaultSweep.h"

// A miniport that no list and no entry of the MUX tree names, and an entry without its component,
// are left out of the values and counted in "left".
void NameComponents(Values& values);
