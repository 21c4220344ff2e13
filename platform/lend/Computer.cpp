// The computer's libraries, and its reboot.

#include "Call.h"
#include "DeviceStates.h"

// The access layer's functions are this DLL's own.
extern "C" HMODULE WINAPI LentLoadLibraryExW(LPCWSTR name, HANDLE reserved, DWORD flags) {
    if (name == nullptr || CompareStringOrdinal(name, -1, TEXT("ibal.dll"), -1, TRUE) != CSTR_EQUAL)
        return LoadLibraryExW(name, reserved, flags);
    HMODULE self = nullptr;  // with a reference, for FreeLibrary
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(LentLoadLibraryExW), &self);
    return self;
}

extern "C" BOOL WINAPI LentExitWindowsEx(UINT flags, DWORD) {
    const platform::Call call("ExitWindowsEx");
    const bool asksReboot = (flags & EWX_REBOOT) != 0;
    if (asksReboot && platform::CountRestart(TEXT("Reboots"))) return TRUE;
    platform::Call::SetLast(asksReboot ? ERROR_ACCESS_DENIED : ERROR_INVALID_PARAMETER);
    return FALSE;
}
