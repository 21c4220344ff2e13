#pragma once
// VLANs and teams over the ports of a card, which a change of protocol would break. Any thread.

#include <windows.h>
#include <cfgmgr32.h>

// Looks at the ports, which are the children of the card's device node, in their order. The id of
// the message that refuses the change, or 0. A port that can't be read ends the search, one without
// a network adapter is passed over.
UINT FindUpperBindingsOrTeams(DEVINST card);
