#include "Reboot.h"

#include <reason.h>

#include "AutoClasses.h"

void AskReboot(HWND owner) {
    if (MessageBoxW(owner,
                    TEXT("Tuning was completed successfully.  For the changes to take effect, you "
                         "need to reboot your machine.\n\n Click yes to reboot now, or no to "
                         "reboot later."),
                    TEXT("Reboot Your Machine"), MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    (void)EnableShutdownPrivilege();
    (void)ExitWindowsEx(EWX_REBOOT, SHTDN_REASON_MINOR_RECONFIG);
}

bool EnableShutdownPrivilege() {
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!LookupPrivilegeValueW(nullptr, SE_SHUTDOWN_NAME, &privileges.Privileges[0].Luid))
        return false;
    ScopedHandle token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, token.Receive()))
        return false;
    // The call also succeeds when it could enable nothing.
    return AdjustTokenPrivileges(token.Get(), FALSE, &privileges, 0, nullptr, nullptr) &&
           GetLastError() != ERROR_NOT_ALL_ASSIGNED;
}
