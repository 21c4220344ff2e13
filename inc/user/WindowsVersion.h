#pragma once
// The running system's release. Any thread.

#include <windows.h>

// 0 unknown, 1 for 5.2, 2 for 6.0, 3 for 6.1, 4 for 6.2, 5 for 6.3, 6 for anything later.
int GetWindowsRelease();
// Major version 6 or more.
bool IsVistaOrLater();
// wProductType of GetVersionExW; 1 is a workstation. 0 when the call fails.
BYTE GetProductType();
// A server on which GetWindowsRelease is above 3.
bool IsServerOfRelease4OrLater();
