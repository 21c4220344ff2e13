#pragma once
// The reboot that changed TCP settings ask for. The sheet's thread.

#include <windows.h>

// Asks over `owner` whether to reboot now, and does so on Yes.
void AskReboot(HWND owner);
// Enables the process's right to shut the machine down.
bool EnableShutdownPrivilege();
