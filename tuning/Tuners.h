#pragma once
// One tuner for each scenario: which processors of a node serve which purpose of an adapter. They
// write registry values and nothing else; the driver reads them when the adapter restarts. The
// sheet's thread.
//
// `log` may be null. An adapter or row that is null is refused. A refusal writes its line and gives
// false; what had been written by then stays unless it says otherwise here.

#include "AdapterContext.h"
#include "Processors.h"
#include "TuningLog.h"

// The processors of the row that a tuner uses: at most eight; 0 for a null row.
int UsableProcessors(const NumaNodeRow* row);

// True when both are given and the row has at least two processors.
bool CheckTuningInput(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row);

// Uses `count` processors of the row from index `base` on. A count below 2 is refused and restores
// the adapter.
bool TuneSinglePort(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row, int count,
                    int base);
// Each adapter on its own row, or both sharing row1 when row2 is null. The scenario is stored on
// both even when one of them was refused.
bool TuneDualPort(LogStream* log, const TuningAdapter* a1, const TuningAdapter* a2,
                  const NumaNodeRow* row1, const NumaNodeRow* row2);
bool TuneSingleStream(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row);
bool TuneForwarding(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row);
// Both adapters share row1 when it is large enough; otherwise each is tuned on its own. A refusal
// of the latter restores both.
bool TuneForwardingDualPort(LogStream* log, const TuningAdapter* a1, const TuningAdapter* a2,
                            const NumaNodeRow* row1, const NumaNodeRow* row2);
bool TuneMulticast(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row);
