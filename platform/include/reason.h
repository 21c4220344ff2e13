#pragma once
// Reasons for a shutdown.

#define SHTDN_REASON_MAJOR_OTHER 0x00000000
#define SHTDN_REASON_MINOR_RECONFIG 0x00000004
