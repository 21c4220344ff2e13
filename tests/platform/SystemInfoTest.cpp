// The system's version, clock and commands, and the reboot.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "Call.h"
#include "Commands.h"
#include "FactsMachine.h"
#include "Facts.h"

using namespace platform;

namespace {

std::string StandIn(const std::string& values) {
    return "[" + FactsMachine::kStandIn + "]\n" + values + "\n";
}

std::string CurrentVersion(const std::string& values) {
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion]\n" + values +
           "\n";
}

std::string ProductOptions(const std::string& type) {
    return "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\ProductOptions]\n"
           "\"ProductType\"=\"" +
           type + "\"\n";
}

TEST(Version, IsWhatTheFactsOrElseTheExportSay) {
    const struct {
        const char* why;
        std::string facts;
        DWORD major, minor;
        int product;  // 0: the call fails
    } kCases[] = {
        {"nothing said", "", 6, 2, VER_NT_WORKSTATION},
        {"facts", StandIn("\"Version\"=\"6.1\"\n\"ProductType\"=dword:2"), 6, 1,
         VER_NT_DOMAIN_CONTROLLER},
        {"facts win over the export",
         StandIn("\"Version\"=\"10.0\"\n\"ProductType\"=dword:1") +
             CurrentVersion("\"CurrentVersion\"=\"6.3\"") + ProductOptions("ServerNT"),
         10, 0, VER_NT_WORKSTATION},
        {"any other product is a server", StandIn("\"ProductType\"=dword:9"), 6, 2, VER_NT_SERVER},
        {"an export with numbers",
         CurrentVersion("\"CurrentVersion\"=\"6.3\"\n\"CurrentMajorVersionNumber\"=dword:a\n"
                        "\"CurrentMinorVersionNumber\"=dword:0") +
             ProductOptions("ServerNT"),
         10, 0, VER_NT_SERVER},
        {"an older export", CurrentVersion("\"CurrentVersion\"=\"6.1\"") + ProductOptions("WinNT"),
         6, 1, VER_NT_WORKSTATION},
        {"a domain controller", ProductOptions("lanmannt"), 6, 2, VER_NT_DOMAIN_CONTROLLER},
        {"one number only", StandIn("\"Version\"=\"6\""), 0, 0, 0},
        {"no number", StandIn("\"Version\"=\"six.two\""), 0, 0, 0},
        {"a negative number", StandIn("\"Version\"=\"6.-2\""), 0, 0, 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(test.facts);
        OSVERSIONINFOEXW extended = {};
        extended.dwOSVersionInfoSize = sizeof extended;
        OSVERSIONINFOW plain = {};
        plain.dwOSVersionInfoSize = 276;
        EXPECT_EQ(GetVersionExW(&plain), test.product != 0);
        EXPECT_EQ(GetVersionExW(reinterpret_cast<LPOSVERSIONINFOW>(&extended)), test.product != 0);
        if (test.product == 0) continue;
        EXPECT_EQ(plain.dwMajorVersion, test.major);
        EXPECT_EQ(plain.dwMinorVersion, test.minor);
        EXPECT_EQ(extended.dwMajorVersion, test.major);
        EXPECT_EQ(extended.dwMinorVersion, test.minor);
        EXPECT_EQ(extended.wProductType, test.product);
    }
}

TEST(Version, IsOnlyGivenInItsTwoSizes) {
    FactsMachine machine;
    OSVERSIONINFOW information = {};
    for (const DWORD size : {0u, 275u, 277u, 300u}) {
        information.dwOSVersionInfoSize = size;
        EXPECT_FALSE(GetVersionExW(&information)) << size;
        EXPECT_EQ(Call::GetLast(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    }
}

TEST(Clock, ShowsTheMachinesLocalTime) {
    FactsMachine machine(StandIn("\"Time\"=\"2024-02-29 23:59\""));
    machine.machine.scheduler.Advance(61'005);
    EXPECT_EQ(GetTickCount(), 61'005u);
    EXPECT_EQ(GetTickCount64(), 61'005u);
    SYSTEMTIME time = {};
    GetLocalTime(&time);
    EXPECT_EQ(time.wYear, 2024);
    EXPECT_EQ(time.wMonth, 3);
    EXPECT_EQ(time.wDay, 1);
    EXPECT_EQ(time.wDayOfWeek, 5);
    EXPECT_EQ(time.wHour, 0);
    EXPECT_EQ(time.wMinute, 0);
    EXPECT_EQ(time.wSecond, 1);
    EXPECT_EQ(time.wMilliseconds, 5);
}

TEST(WindowsDirectory, NeedsRoomForItsTerminator) {
    FactsMachine machine;
    WCHAR buffer[12] = {};
    EXPECT_EQ(GetWindowsDirectoryW(buffer, 10), 11u);
    EXPECT_EQ(GetWindowsDirectoryW(buffer, 11), 10u);
    EXPECT_EQ(buffer, std::u16string(u"C:\\Windows"));
}

TEST(Commands, GiveTheResultsOfTheFactsInTurn) {
    const struct {
        const char* facts;  // null: none
        std::vector<UINT> results;
    } kCases[] = {
        {nullptr, {33, 33}},
        {"2,33,-1", {2, 33, 0xFFFFFFFF, 0xFFFFFFFF}},
        {"", {33}},
        {"33,none", {33, ERROR_INVALID_DATA}},
    };
    for (const auto& test : kCases) {
        FactsMachine machine(
            test.facts ? StandIn(std::string("\"NetshResult\"=\"") + test.facts + "\"") : "");
        for (const UINT result : test.results)
            EXPECT_EQ(WinExec("netsh x", 0), result);
        EXPECT_EQ(machine.machine.Get<Commands>().lines.size(), test.results.size());
    }
}

TEST(Commands, FailByTheirLine) {
    FactsMachine machine;
    machine.machine.faults.FailCalls("WinExec", u"netsh b", ERROR_ACCESS_DENIED);
    EXPECT_EQ(WinExec("netsh a", 0), 33u);
    EXPECT_EQ(WinExec("netsh b", 0), UINT{ERROR_ACCESS_DENIED});
    EXPECT_EQ(machine.machine.Get<Commands>().lines, std::vector<std::string>{"netsh a"});
}

// Tries to enable the shutdown privilege; the last error of the adjustment.
DWORD EnableShutdown(DWORD access, LUID luid) {
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), access, &token));
    TOKEN_PRIVILEGES privileges = {1, {{luid, SE_PRIVILEGE_ENABLED}}};
    const BOOL result =
        AdjustTokenPrivileges(token, FALSE, &privileges, sizeof privileges, nullptr, nullptr);
    const DWORD error = Call::GetLast();
    EXPECT_EQ(result, error == ERROR_SUCCESS || error == ERROR_NOT_ALL_ASSIGNED);
    CloseHandle(token);
    return error;
}

TEST(Reboot, NeedsThePrivilegeAndIsCounted) {
    FactsMachine machine;
    LUID luid = {};
    EXPECT_FALSE(LookupPrivilegeValueW(nullptr, u"SeBackupPrivilege", &luid));
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_NO_SUCH_PRIVILEGE});
    ASSERT_TRUE(LookupPrivilegeValueW(nullptr, SE_SHUTDOWN_NAME, &luid));
    EXPECT_EQ(EnableShutdown(TOKEN_QUERY, luid), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(EnableShutdown(TOKEN_ADJUST_PRIVILEGES, LUID{1, 0}), DWORD{ERROR_NOT_ALL_ASSIGNED});
    machine.machine.faults.FailCalls("AdjustTokenPrivileges", u"", ERROR_NOT_ALL_ASSIGNED);
    EXPECT_EQ(EnableShutdown(TOKEN_ADJUST_PRIVILEGES, luid), DWORD{ERROR_NOT_ALL_ASSIGNED});
    machine.machine.faults.Disarm();
    EXPECT_FALSE(ExitWindowsEx(EWX_REBOOT, 4));
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_PRIVILEGE_NOT_HELD});
    EXPECT_EQ(FactNumber(u"Restarts", u"Reboots").value_or(0), 0u);

    EXPECT_EQ(EnableShutdown(TOKEN_ADJUST_PRIVILEGES, luid), DWORD{ERROR_SUCCESS});
    for (DWORD count = 1; count <= 2; ++count) {
        EXPECT_TRUE(ExitWindowsEx(EWX_REBOOT, 4));
        EXPECT_EQ(FactNumber(u"Restarts", u"Reboots"), count);
    }
}

}  // namespace
