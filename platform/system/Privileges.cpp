// The process's token and what it allows: the shutdown privilege, which is there but starts out
// disabled, and the reboot that needs it.

#include <windows.h>

#include "Call.h"
#include "DeviceStates.h"
#include "Handles.h"
#include "Text.h"

using namespace platform;

namespace {

constexpr LUID kShutdown = {19, 0};  // as on every Windows

struct Privileges : Part {
    bool shutdownEnabled = false;
};

struct Token : KernelObject {
    explicit Token(DWORD granted) : access(granted) {}
    DWORD access;
};

bool IsShutdown(const LUID& luid) {
    return luid.LowPart == kShutdown.LowPart && luid.HighPart == kShutdown.HighPart;
}

BOOL FailWith(DWORD error) {
    Call::SetLast(error);
    return FALSE;
}

}  // namespace

BOOL WINAPI LookupPrivilegeValueW(LPCWSTR, LPCWSTR name, PLUID luid) {
    Call call("LookupPrivilegeValueW", name, ERROR_NO_SUCH_PRIVILEGE);
    if (call.Failed()) return call.With(FALSE);
    if (!name || !luid) return FailWith(ERROR_INVALID_PARAMETER);
    if (!EqualNoCase(name, SE_SHUTDOWN_NAME)) return FailWith(ERROR_NO_SUCH_PRIVILEGE);
    *luid = kShutdown;
    return TRUE;
}

BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, PHANDLE token) {
    Call call("OpenProcessToken", nullptr, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    if (process != GetCurrentProcess()) return FailWith(ERROR_INVALID_HANDLE);
    if (!token) return FailWith(ERROR_INVALID_PARAMETER);
    *token = call.machine.Get<Handles>().Open(std::make_shared<Token>(access), call.Name());
    return TRUE;
}

// Succeeds with ERROR_NOT_ALL_ASSIGNED as last error when the token lacks one of the privileges;
// it has none but the shutdown privilege. A fault with that error makes it lack that one, too. The
// previous state isn't given.
BOOL WINAPI AdjustTokenPrivileges(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES newState, DWORD,
                                  PTOKEN_PRIVILEGES previousState, PDWORD) {
    Call call("AdjustTokenPrivileges", nullptr, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(call.Error() == ERROR_NOT_ALL_ASSIGNED ? TRUE : FALSE);
    const auto found = call.machine.Get<Handles>().Find<Token>(token);
    if (!found) return FailWith(ERROR_INVALID_HANDLE);
    if ((found->access & TOKEN_ADJUST_PRIVILEGES) == 0) return FailWith(ERROR_ACCESS_DENIED);
    if (previousState || (!disableAll && !newState)) return FailWith(ERROR_INVALID_PARAMETER);
    bool& enabled = call.machine.Get<Privileges>().shutdownEnabled;
    DWORD outcome = ERROR_SUCCESS;
    if (disableAll) {
        enabled = false;
    } else {
        for (DWORD i = 0; i < newState->PrivilegeCount; ++i) {
            const LUID_AND_ATTRIBUTES& privilege = newState->Privileges[i];
            if (IsShutdown(privilege.Luid))
                enabled = (privilege.Attributes & SE_PRIVILEGE_ENABLED) != 0;
            else
                outcome = ERROR_NOT_ALL_ASSIGNED;
        }
    }
    Call::SetLast(outcome);
    return TRUE;
}

// A reboot is counted in the facts, and the session goes on.
BOOL WINAPI ExitWindowsEx(UINT flags, DWORD) {
    Call call("ExitWindowsEx", nullptr, ERROR_PRIVILEGE_NOT_HELD);
    if (call.Failed()) return call.With(FALSE);
    if ((flags & EWX_REBOOT) == 0) return FailWith(ERROR_INVALID_PARAMETER);
    if (!call.machine.Get<Privileges>().shutdownEnabled) return FailWith(ERROR_PRIVILEGE_NOT_HELD);
    return CountRestart(TEXT("Reboots")) ? TRUE : FailWith(ERROR_ACCESS_DENIED);
}
