#pragma once
// One run of a tuning scenario: order and place the two ports, restore what the scenario touches,
// and let its tuner write the values. The sheet's thread, which the measurement of the nearest node
// can hold for about 5 seconds a port.

#include "AdapterContext.h"
#include "Processors.h"
#include "TuningLog.h"

// `log` is open. `a2` may be null. False when a tuner refused. RESTORE_DEFAULTS only restores; a
// number that names no scenario does nothing and counts as completed.
bool TunePerformance(LogStream& log, TuningAdapter* a1, TuningAdapter* a2,
                     const ProcessorsInfo& processors, int scenario);
