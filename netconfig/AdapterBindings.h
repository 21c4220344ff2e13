#pragma once
// The bindings of a physical adapter that joins a team or leaves it.

#include <windows.h>
#include <netcfgx.h>

// On joining (restore false) switches the way through the MUX driver on and all other bindings
// above the adapter off, and remembers in its parameter key which were on. On leaving switches the
// MUX driver's off and the remembered ones on, and forgets them. What fails is passed over. Takes
// effect when the session is applied.
void SetAdapterBindings(INetCfgComponent& component, bool restore);
