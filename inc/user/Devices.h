#pragma once
// The restart of a device. The sheet's thread.

#include <windows.h>
#include <setupapi.h>

// Restarts the device of that instance id. False when it can't be found or one of its state changes
// that count failed; shows nothing.
bool RestartDevice(LPCWSTR instanceId);
// Disables and enables the device of the list. Borrows both.
bool CycleDeviceState(HDEVINFO list, SP_DEVINFO_DATA* device);
