// Sheets, their controls and what can be seen of the machine.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "Program.h"
#include "Text.h"

namespace {

TEST(Show, DrawsThePageInLinesOfAtMostAHundredColumns) {
    const Program program(Sample().OnePort(Sample::Kind::Ethernet));
    program.Write("C/Program Files/Corvanta/Documentation/help.xml",
                  "<help><Performance_ETH>{\\rtf1 one | two\\par C:\\\\Windows " +
                      std::string(300, 'z') + "}</Performance_ETH></help>");
    const std::vector<std::string> files = {"--files", program.Path("C")};
    const auto result = program.Run("open Performance\npress 1096\nshow\n", files);
    for (const char* part :
         {"│ Performance │", "┌─ Tuning Scenario: ─", "( ) Single port traffic",
          "( ) ~Dual port traffic~", "(o) Multicast traffic", "Run Tuning", "~Apply~"})
        EXPECT_TRUE(Has(result.out, part)) << part << "\n" << result.out;
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), 'z'), 300);
    for (const std::string& line : result.Lines())
        EXPECT_LE(platform::FromUtf8(line).size(), 100U) << line;
    EXPECT_TRUE(Has(program.Run("open Performance\ncontrols\n", files).out,
                    "| RichEdit20W | one \\| two\\nC:\\\\Windows"))
        << "breaks, bars and backslashes are escaped";
}

TEST(Devices, EachHasItsOwnSheetAndCommandsGoToTheOneNamedLast) {
    const Program program;
    const std::string second = Sample::InstanceId(2, Sample::Kind::Ethernet);
    const std::string first = Sample::InstanceId(1, Sample::Kind::Ethernet);
    const std::string checked =
        "control | 1096 | Button | Multicast traffic | shown,enabled,checked";
    const auto run = [&](const std::string& end) {
        return program.Run("open Performance\npress 1096\ndevice " + second +
                           "\nopen Performance\n" + end + "controls\n");
    };
    EXPECT_FALSE(Has(run("").out, checked));
    EXPECT_TRUE(Has(run("device tsr4" + first.substr(4) + "\n").out, checked))
        << "goes back, whatever the case";
    EXPECT_TRUE(Has(run("cancel\n").out, checked)) << "the sheet below is left";
    EXPECT_EQ(run("ok\nok\n").code, 2) << "no sheet is left";
}

TEST(Devices, OneWithoutTabsIsAResult) {
    const std::string other = "PCI\\VEN_1DE6&DEV_0001\\3&1&0";
    const std::string control = "SYSTEM\\CurrentControlSet\\";
    const std::string driver = "{4d36e972-e325-11ce-bfc1-08002be10318}\\";
    const Program program(
        Sample()
            .With(control + "Enum\\" + other, "\"Driver\"=\"" + driver + "\\0050\"")
            .With(control + "Control\\Class\\" + driver + "0050",
                  "\"EnumPropPages32\"=\"Other.dll,OtherPages\""));
    EXPECT_TRUE(Has(program.Run("show\n").out, "Properties")) << "passed over for an adapter";
    const auto result = program.Run("tabs\nlog\nopen Performance\n", {"--device", other});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(Has(result.err, ":3: ") && Has(result.err, "has no tabs")) << result.err;
}

TEST(Registry, AKeyIsPrintedAsInAMachineFile) {
    const std::string values =
        R"(@="default"
"many"=hex(7):41,00,00,00,42,00,00,00,00,00
"number"=dword:0000002a
"say \"it\""="C:\\a"
)";
    const Program program(Sample()
                              .With("SOFTWARE\\Kinds", values)
                              .With("SOFTWARE\\Kinds\\b", "\"x\"=\"\"")
                              .With("SOFTWARE\\Kinds\\A", "\"x\"=\"\""));
    const std::string key = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kinds";
    EXPECT_EQ(program.Run("reg hklm\\SOFTWARE\\Kinds\\ # note\n").out,
              key + "]\n" + values + key + "\\A]\n" + key + "\\b]\n");
}

// A modal dialog, which takes the commands while it is open.
TEST(Dialogs, TakeTextChoicesAndKeys) {
    const Program program;
    std::filesystem::copy(SOURCE_DIR "/samples/drive", program.Path("C"),
                          std::filesystem::copy_options::recursive);
    const auto run = [&](const std::string& commands) {
        return program.RunWith({SOURCE_DIR "/samples/workstation.reg", "--device",
                                "TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&02", "--files",
                                program.Path("C"), "--script", "-"},
                               "open VLAN\npress 1048\n" + commands);
    };
    const std::string filled = "type 1043 Guests\ntype 1055 7\nselect 1048 5\n";
    const struct {
        std::string commands, seen;
        int code;
    } cases[] = {
        {filled + "controls\n", "control | 1048 | ComboBox | 5 | shown,enabled\n", 0},
        {filled + "controls\n", "entry | 1048 | 5 | selected\n", 0},
        {filled + "show\n", "│  VLAN Priority:   [5____________________v]", 0},
        {"press escape\ncontrols\n", "control | 1028 | SysListView32 |", 0},
        {filled + "press enter\nrow 1028 Guests\ncontrols\n",
         "row | 1028 | Guests | 7 | 5 | Down | selected\n", 0},
        {filled + "press \"Cancel\"\nrow 1028 Guests\n", "", 2},
        {"select 1048 9\n", "", 2},
        {"ok\n", "", 2},
        {"answer hold\npress enter\npress escape\n", "", 2},
    };
    for (const auto& row : cases) {
        const auto result = run(row.commands);
        EXPECT_EQ(result.code, row.code) << row.commands << result.err;
        EXPECT_TRUE(Has(result.out, row.seen)) << row.commands << result.out;
    }
}

TEST(Streams, LogOutputAndTraceStandApart) {
    const Program program;
    program.Write("C/keep", "");
    const auto result = program.Run("open Performance\npress 1086\npress 1090\nlog\n",
                                    {"--files", program.Path("C"), "--trace"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(
        Has(result.out, "19-11-2026 8:05 : Setting adapter 1 key TuningScenario to 1086\n"));
    EXPECT_FALSE(Has(result.out, "\r"));
    EXPECT_TRUE(Has(result.err, "call | SetupDiCallClassInstaller | "));
    EXPECT_FALSE(Has(result.err, "call | PropertySheetW |")) << "the program's own calls count not";
    EXPECT_TRUE(
        program.Read("C/Windows/System32/LogFiles/PerformanceTuning.log").starts_with("\xFF\xFE"));
}

TEST(Streams, AMachineThatStopsSaysWhy) {
    // A message for which there is no memory.
    const Program program;
    const std::string faults = program.Write(
        "faults.reg",
        "Windows Registry Editor Version 5.00\n\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Faults]\n"
        "\"RegOpenKeyExW SYSTEM\\\\CurrentControlSet\\\\Services\\\\Tcpip\\\\Parameters\"=\"5\"\n"
        "\"SysAllocString\"=\"8\"\n\"SysAllocStringLen\"=\"8\"\n");
    const auto result = program.Run("answer ok\nopen Performance\npress 1086\nmerge " + faults +
                                    "\npress 1090\ntabs\n");
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_TRUE(Has(result.err, "0xC0000017")) << result.err;
}

}  // namespace
