// Sheets, their controls and what can be seen of the machine.

#include <gtest/gtest.h>

#include <algorithm>

#include "Program.h"

namespace {

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Controls, AreListedInTheTemplatesOrderWithTheirStates) {
    const Program program(Sample().OnePort(Sample::Kind::Ethernet));
    const auto result = program.Run("open Performance\npress 1088\ncontrols\n");
    ASSERT_EQ(result.code, 0) << result.err;
    std::vector<std::string> buttons;
    for (const std::string& line : result.Lines()) {
        if (Has(line, "| Button |")) buttons.push_back(line);
    }
    EXPECT_EQ(buttons,
              (std::vector<std::string>{
                  "control | 1089 | Button | Tuning Scenario: | shown,enabled",
                  "control | 1086 | Button | Single port traffic | shown,enabled,unchecked",
                  "control | 1087 | Button | Dual port traffic | shown,disabled,unchecked",
                  "control | 1088 | Button | Forwarding traffic | shown,enabled,checked",
                  "control | 1096 | Button | Multicast traffic | shown,enabled,unchecked",
                  "control | 1098 | Button | Single stream traffic | shown,enabled,unchecked",
                  "control | 1095 | Button | [Default] Balanced tuning | shown,enabled,unchecked",
                  "control | 1090 | Button | Run Tuning | shown,enabled"}));
    EXPECT_TRUE(
        Has(result.out, "control | - | Static | Performance Tuning Tool | shown,enabled\n"));
}

TEST(Controls, ATextsBreaksBarsAndBackslashesAreEscaped) {
    const Program program;
    program.Write("C/Program Files/Corvanta/Documentation/help.xml",
                  "<help><Performance_ETH>{\\rtf1 one | two\\par C:\\\\Windows}</Performance_ETH>"
                  "</help>");
    const auto result = program.Run("open Performance\ncontrols\n", {"--files", program.Path("C")});
    EXPECT_TRUE(Has(result.out, "control | 1049 | RichEdit20W | one \\| two\\nC:\\\\Windows"))
        << result.out;
}

TEST(Show, DrawsThePageInLinesOfAtMostAHundredColumns) {
    const Program program(Sample().OnePort(Sample::Kind::Ethernet));
    program.Write("C/Program Files/Corvanta/Documentation/help.xml",
                  "<help><Performance_ETH>{\\rtf1 " + std::string(40, 'w') + " " +
                      std::string(40, 'x') + " " + std::string(40, 'y') + " " +
                      std::string(300, 'z') + "}</Performance_ETH></help>");
    const auto result =
        program.Run("open Performance\npress 1096\nshow\n", {"--files", program.Path("C")});
    for (const char* part :
         {"│ Performance │", "┌─ Tuning Scenario: ─", "( ) Single port traffic",
          "( ) ~Dual port traffic~", "(o) Multicast traffic", "Run Tuning", "~Apply~"})
        EXPECT_TRUE(Has(result.out, part)) << part << "\n" << result.out;
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), 'z'), 300);
    for (const std::string& line : result.Lines()) {
        const auto columns =
            std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
        EXPECT_LE(columns, 100) << line;
    }
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
    EXPECT_TRUE(Has(run("device cvta\\eth_port\\" + first.substr(14) + "\n").out, checked))
        << "goes back, whatever the case";
    EXPECT_TRUE(Has(run("cancel\n").out, checked)) << "the sheet below is left";
    EXPECT_EQ(run("ok\nok\n").code, 2) << "no sheet is left";
    const auto named = program.Run("tabs\nreg SOFTWARE\\Corvanta\n", {"--device", second});
    EXPECT_EQ(named.code, 0) << named.err;
}

TEST(Devices, OneWithoutTabsIsAResult) {
    const std::string other = "PCI\\VEN_1DE6&DEV_0001\\3&1&0";
    const std::string key = "SYSTEM\\CurrentControlSet\\Enum\\" + other;
    const Program program(
        Sample()
            .With(key, "\"Driver\"=\"{4d36e972-e325-11ce-bfc1-08002be10318}\\\\0050\"")
            .With("SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-"
                  "08002be10318}\\0050",
                  "\"EnumPropPages32\"=\"Other.dll,OtherPages\""));
    const auto result = program.Run("tabs\nlog\nreg SOFTWARE\\Corvanta\n", {"--device", other});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(result.out.starts_with("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]")) << result.out;
    const auto refused = program.Run("open Performance\n", {"--device", other});
    EXPECT_EQ(refused.code, 2);
    EXPECT_TRUE(Has(refused.err, "has no tabs")) << refused.err;
}

TEST(Devices, TheFirstWithAProviderElseTheFirstAdapter) {
    const Program none(Sample().With("SYSTEM\\CurrentControlSet\\Enum\\AAA\\B\\1", "\"X\"=\"\""));
    EXPECT_TRUE(Has(none.Run("show\n").out, "Properties")) << "other devices are passed over";
    const Program empty;
    empty.Write("machine.reg", "Windows Registry Editor Version 5.00\n");
    const auto result = empty.Run("tabs\nlog\n");
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "");
}

TEST(Registry, AKeyIsPrintedAsInAMachineFile) {
    const Program program(
        Sample()
            .With("SOFTWARE\\Kinds", "@=\"default\"")
            .With("SOFTWARE\\Kinds", "\"number\"=dword:0000002a")
            .With("SOFTWARE\\Kinds", "\"say \\\"it\\\"\"=\"C:\\\\a\"")
            .With("SOFTWARE\\Kinds", "\"open\"=hex(1):41,00")
            .With("SOFTWARE\\Kinds", "\"many\"=hex(7):41,00,00,00,42,00,00,00,00,00")
            .With("SOFTWARE\\Kinds",
                  "\"long\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,"
                  "16,17,18,19,1a,1b,1c")
            .With("SOFTWARE\\Kinds\\b", "\"x\"=\"\"")
            .With("SOFTWARE\\Kinds\\A", "\"x\"=\"\""));
    const std::string expected =
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kinds]\n"
        "@=\"default\"\n"
        "\"number\"=dword:0000002a\n"
        "\"say \\\"it\\\"\"=\"C:\\\\a\"\n"
        "\"open\"=hex(1):41,00\n"
        "\"many\"=hex(7):41,00,00,00,42,00,00,00,00,00\n"
        "\"long\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\n"
        "  16,17,18,19,1a,1b,1c\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kinds\\A]\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kinds\\b]\n";
    for (const char* path : {"SOFTWARE\\Kinds", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Kinds",
                             "HKLM\\SOFTWARE\\Kinds", "hklm\\SOFTWARE\\Kinds\\ # note"}) {
        EXPECT_EQ(program.Run(std::string("reg ") + path + "\n").out, expected) << path;
    }
}

TEST(Registry, SavedItIsAMachineThatGoesOn) {
    const Program program;
    const std::string tune = "open Performance\npress 1087\npress 1090\n";
    const std::string look = "reg " + Sample::ClassKey(1) + "\nreg " + Sample::ClassKey(2) + "\n";
    const auto first = program.Run(tune + look, {"--save", program.Path("out.reg")});
    ASSERT_EQ(first.code, 0) << first.err;
    EXPECT_TRUE(program.Read("out.reg").starts_with("\xFF\xFEW")) << "UTF-16 with its mark";
    const auto second = program.RunWith({program.Path("out.reg"), "--script", "-"}, look);
    EXPECT_EQ(second.out, first.out.substr(first.out.find("[HKEY")));
    EXPECT_TRUE(Has(second.out, "\"TuningScenario\"=\"1087\""));
}

TEST(Registry, AMergedFileActsOnTheRunningMachine) {
    const Program program;
    const std::string more =
        program.Write("more.reg",
                      "Windows Registry Editor Version 5.00\n\n"
                      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]\n\"InstalledPath\"=-\n"
                      "\"Edition\"=\"test\"\n");
    const auto result = program.Run("merge " + more + "\nreg SOFTWARE\\Corvanta\n");
    EXPECT_EQ(result.out, "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]\n\"Edition\"=\"test\"\n");
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
    const Program quiet(Sample().Processors("4", "0,0,1,1").NoCard());
    const auto output = quiet.Run("open Performance\npress 1086\npress 1090\noutput\n");
    EXPECT_TRUE(output.out.ends_with("\ninit_ctx failed\nFindFastestNuma Failed\n")) << output.out;
    EXPECT_EQ(output.err, "");
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
