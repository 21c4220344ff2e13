// The system's version, and the reboot.

#include <string>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"
#include "Facts.h"

using namespace platform;

namespace {

std::string CurrentVersion(const std::string& values) {
    return KeyLines("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", values);
}

std::string ProductOptions(const std::string& type) {
    return KeyLines("SYSTEM\\CurrentControlSet\\Control\\ProductOptions",
                    "\"ProductType\"=\"" + type + "\"");
}

TEST(Version, IsWhatTheFactsOrElseTheExportSay) {
    const struct {
        const char* why;
        std::string facts;
        DWORD major, minor;
        int product;  // 0: the call fails
    } kCases[] = {
        {"nothing said", "", 6, 2, VER_NT_WORKSTATION},
        {"facts", FactLines("", "\"Version\"=\"6.1\"\n\"ProductType\"=dword:2"), 6, 1,
         VER_NT_DOMAIN_CONTROLLER},
        {"facts win over the export",
         FactLines("", "\"Version\"=\"10.0\"\n\"ProductType\"=dword:1") +
             CurrentVersion("\"CurrentVersion\"=\"6.3\"") + ProductOptions("ServerNT"),
         10, 0, VER_NT_WORKSTATION},
        {"any other product is a server", FactLines("", "\"ProductType\"=dword:9"), 6, 2,
         VER_NT_SERVER},
        {"an export with numbers",
         CurrentVersion("\"CurrentVersion\"=\"6.3\"\n\"CurrentMajorVersionNumber\"=dword:a\n"
                        "\"CurrentMinorVersionNumber\"=dword:0") +
             ProductOptions("ServerNT"),
         10, 0, VER_NT_SERVER},
        {"an older export", CurrentVersion("\"CurrentVersion\"=\"6.1\"") + ProductOptions("WinNT"),
         6, 1, VER_NT_WORKSTATION},
        {"a domain controller", ProductOptions("lanmannt"), 6, 2, VER_NT_DOMAIN_CONTROLLER},
        {"one number only", FactLines("", "\"Version\"=\"6\""), 0, 0, 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(test.facts);
        OSVERSIONINFOEXW version = {};
        for (const DWORD size : {DWORD{sizeof version}, DWORD{276}, DWORD{275}}) {
            version.dwOSVersionInfoSize = size;
            const BOOL known = GetVersionExW(reinterpret_cast<LPOSVERSIONINFOW>(&version));
            EXPECT_EQ(known, test.product != 0 && size != 275);
        }
        EXPECT_EQ(version.dwMajorVersion, test.major);
        EXPECT_EQ(version.dwMinorVersion, test.minor);
        EXPECT_EQ(version.wProductType, test.product);
    }
}

TEST(Reboot, NeedsThePrivilegeAndIsCounted) {
    FactsMachine machine;
    TOKEN_PRIVILEGES privileges = {1, {{{}, SE_PRIVILEGE_ENABLED}}};
    ASSERT_TRUE(LookupPrivilegeValueW(nullptr, SE_SHUTDOWN_NAME, &privileges.Privileges[0].Luid));
    for (const DWORD access : {DWORD{TOKEN_QUERY}, DWORD{TOKEN_ADJUST_PRIVILEGES}}) {
        EXPECT_EQ(ErrorOf(ExitWindowsEx(EWX_REBOOT, 4)), ERROR_PRIVILEGE_NOT_HELD);
        HANDLE token = nullptr;
        EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), access, &token));
        const BOOL adjusted =
            AdjustTokenPrivileges(token, FALSE, &privileges, sizeof privileges, nullptr, nullptr);
        EXPECT_EQ(adjusted, access == TOKEN_ADJUST_PRIVILEGES);
        CloseHandle(token);
    }
    for (DWORD count = 1; count <= 2; ++count) {
        EXPECT_TRUE(ExitWindowsEx(EWX_REBOOT, 4));
        EXPECT_EQ(FactNumber(u"Restarts", u"Reboots"), count);
    }
}

}  // namespace
