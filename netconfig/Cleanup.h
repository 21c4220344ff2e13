#pragma once
// Removal of all that lies over an adapter or team.

#include <windows.h>

#include "NetworkComponents.h"

// Removes all virtual miniports over a physical adapter or team and its entry in the MUX tree; for
// a member of a team first the same of the team. Applies the session at each level, whatever the
// result. Failures print their line. l2Protocol: which adapters count, as for RemoveAllVlans.
HRESULT RecursiveCleanup(REFGUID guid, NetworkComponents& netCfg, DWORD l2Protocol);
