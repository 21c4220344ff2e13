#pragma once
// Puts adapter values back to the driver's defaults. It remembers nothing: it writes fixed numbers
// and deletes what the default state doesn't have. The sheet's thread.

#include "AdapterContext.h"
#include "TuningLog.h"

// Any argument may be null: no log, no lines; an adapter that is null is skipped. Failed writes are
// not noticed. The second adapter keeps its interrupt moderation profiles.
void RestoreTuningDefaults(LogStream* log, const TuningAdapter* first, const TuningAdapter* second);
