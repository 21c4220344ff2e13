#pragma once
// The rows of the Information tab that come from the system's table of IP adapters. Any thread.

#include "InformationRows.h"

// Reads ROW_NETWORK_STATUS to ROW_IPV4_ADDRESS for the adapter of that NetCfgInstanceId. One that
// the table doesn't list, or a table that can't be read, gives "Disabled" and two kNotAvailable;
// the second is reported to the observer.
void ReadNetworkRows(LPCWSTR netCfgInstanceId, RefreshObserver& observer, InformationRows& rows);
