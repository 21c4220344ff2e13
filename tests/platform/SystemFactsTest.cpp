// What the facts or an export say of the system: its version, processors and nodes; the reboot.

#include <string>
#include <vector>

#include <windows.h>

#include "Facts.h"
#include "FactsMachine.h"

namespace {

TEST(Version, IsWhatTheFactsOrElseTheExportSay) {
    const auto current = [](const std::string& values) {
        return KeyLines("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", values);
    };
    const auto product = [](const std::string& type) {
        return KeyLines("SYSTEM\\CurrentControlSet\\Control\\ProductOptions",
                        "\"ProductType\"=\"" + type + "\"");
    };
    const struct {
        const char* why;
        std::string facts;
        DWORD major, minor;
        int product;  // 0: the call fails
    } kCases[] = {
        {"nothing said", "", 6, 2, VER_NT_WORKSTATION},
        {"facts win over the export",
         FactLines("", "\"Version\"=\"10.0\"\n\"ProductType\"=dword:1") +
             current("\"CurrentVersion\"=\"6.3\"") + product("ServerNT"),
         10, 0, VER_NT_WORKSTATION},
        {"an export with numbers",
         current("\"CurrentVersion\"=\"6.3\"\n\"CurrentMajorVersionNumber\"=dword:a\n"
                 "\"CurrentMinorVersionNumber\"=dword:0") +
             product("ServerNT"),
         10, 0, VER_NT_SERVER},
        {"an older export", current("\"CurrentVersion\"=\"6.1\"") + product("lanmannt"), 6, 1,
         VER_NT_DOMAIN_CONTROLLER},
        {"an export that can't be read", current("\"CurrentVersion\"=\"6\""), 0, 0, 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(test.facts);
        OSVERSIONINFOEXW version = {};
        version.dwOSVersionInfoSize = sizeof version;
        const BOOL known = GetVersionExW(reinterpret_cast<LPOSVERSIONINFOW>(&version));
        EXPECT_EQ(known, test.product != 0);
        EXPECT_EQ(version.dwMajorVersion, test.major);
        EXPECT_EQ(version.dwMinorVersion, test.minor);
        EXPECT_EQ(version.wProductType, test.product);
    }
}

TEST(Reboot, NeedsThePrivilegeAndIsCounted) {
    FactsMachine machine;
    TOKEN_PRIVILEGES privileges = {1, {{{}, SE_PRIVILEGE_ENABLED}}};
    HANDLE token = nullptr;
    ASSERT_TRUE(LookupPrivilegeValueW(nullptr, SE_SHUTDOWN_NAME, &privileges.Privileges[0].Luid));
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, &token));
    EXPECT_EQ(ErrorOf(ExitWindowsEx(EWX_REBOOT, 4)), ERROR_PRIVILEGE_NOT_HELD);
    EXPECT_TRUE(
        AdjustTokenPrivileges(token, FALSE, &privileges, sizeof privileges, nullptr, nullptr));
    CloseHandle(token);
    for (DWORD count = 1; count <= 2; ++count) {
        EXPECT_TRUE(ExitWindowsEx(EWX_REBOOT, 4));
        EXPECT_EQ(platform::FactNumber(u"Restarts", u"Reboots"), count);
    }
}

TEST(Processors, AreCountedByGroup) {
    const auto environment = [](const std::string& count) {
        return KeyLines("SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment",
                        "\"NUMBER_OF_PROCESSORS\"=\"" + count + "\"");
    };
    const std::string cpu = "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\";
    const std::string two = KeyLines(cpu + "0") + KeyLines(cpu + "1");
    const struct {
        const char* why;
        std::string facts;
        std::vector<DWORD> groups;
    } kCases[] = {
        {"the facts win over the export",
         FactLines("Processors", "\"Groups\"=\"4, 64 ,1\"") + two + environment("6"),
         {4, 64, 1}},
        {"an export with its hardware", two + environment("6"), {2}},
        {"an export without its hardware", environment("130"), {64, 64, 2}},
        {"nothing at all", "", {1}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(test.facts);
        DWORD total = 0;
        for (std::size_t i = 0; i < test.groups.size(); ++i) {
            EXPECT_EQ(GetActiveProcessorCount(static_cast<WORD>(i)), test.groups[i]);
            total += test.groups[i];
        }
        EXPECT_EQ(GetActiveProcessorGroupCount(), test.groups.size());
        EXPECT_EQ(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), total);
    }
}

TEST(Processors, HaveTheNodesOfTheFacts) {
    constexpr int kFails = -1;
    const struct {
        const char* why;
        std::string facts;
        std::vector<int> nodes;  // by flat number
        int highest;
    } kCases[] = {
        {"unequal groups", "\"Groups\"=\"1,2\"\n\"Nodes\"=\"5,6,7\"", {5, 6, 7}, 7},
        {"a list that is too short", "\"Groups\"=\"3\"\n\"Nodes\"=\"2\"", {2, 0, 0}, 2},
        {"a query that fails", "\"Groups\"=\"3\"\n\"Nodes\"=\"1,-,0\"", {1, kFails, 0}, 1},
        {"the highest node is told", "\"Groups\"=\"1\"\n\"HighestNode\"=dword:3", {0}, 3},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(FactLines("Processors", test.facts));
        std::vector<int> nodes;
        for (WORD group = 0; group < GetActiveProcessorGroupCount(); ++group) {
            for (BYTE number = 0; number < GetActiveProcessorCount(group); ++number) {
                PROCESSOR_NUMBER processor = {group, number, 0};
                USHORT node = 0;
                nodes.push_back(GetNumaProcessorNodeEx(&processor, &node) ? node : kFails);
            }
        }
        EXPECT_EQ(nodes, test.nodes);
        ULONG highest = 0;
        EXPECT_TRUE(GetNumaHighestNodeNumber(&highest));
        EXPECT_EQ(static_cast<int>(highest), test.highest);
    }
}

}  // namespace
