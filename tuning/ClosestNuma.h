#pragma once
// Measures which NUMA node lies nearest to an adapter's card: from one processor of each node it
// writes the card's doorbell register some two million times, and the fastest node is the closest.
// The sheet's thread, which keeps the affinity of the last measurement. Nothing but the mask of an
// IPoIB port goes to the log; failures are printed.

#include <windows.h>

#include "AdapterContext.h"
#include "TuningLog.h"

// `connectionName` of the adapter is filled. True with the node in `node`.
bool GetClosestNuma(LogStream* log, const TuningAdapter& adapter, DWORD& node);

// 0 with the node in `node`, 1 on failure. caGuidText: the card's GUID as 16 digits. Takes 5
// seconds and one measurement at most; what was measured by then decides.
int FindFastestNuma(LPCWSTR caGuidText, DWORD& node);
