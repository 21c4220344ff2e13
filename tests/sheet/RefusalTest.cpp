// What can't be done is refused with one clear line and exit code 2, and nothing is half done.

#include <gtest/gtest.h>

#include <algorithm>

#include "Program.h"

namespace {

void ExpectOneLine(const std::string& err, const std::string& part) {
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    EXPECT_TRUE(err.starts_with("sheet: ")) << err;
    EXPECT_NE(err.find(part), std::string::npos) << err;
}

TEST(Refusal, CommandsThatCannotBeDone) {
    const struct {
        const char* command;
        const char* reason;
    } kCases[] = {
        {"press 9999", "there is no control 9999"},
        {"press 1087", "control 1087 is disabled"},
        {"press 1089", "control 1089 is no button"},
        {"open Settings", "there is no tab \"Settings\""},
        {"type 1049 text", "read-only"},
        {"select 1086 text", "control 1086 is no list"},
        {"check 1086 a row on", "control 1086 is no list view"},
        {"box ok", "no message box is up"},
        {"reg SOFTWARE\\Nowhere", "there is no key SOFTWARE\\Nowhere"},
        {"device PCI\\NOTHING\\1", "there is no device PCI\\NOTHING\\1"},
        {"merge nothing.reg", "nothing.reg: can't be read"},
        {"dance", "there is no command \"dance\""},
        {"press \"Run\"", "there is no button \"Run\""},
        {"press \"Run Tuning", "has no closing double quote"},
        {"press \"Dual port traffic\" # hidden or disabled", "control 1087 is disabled"},
        {"press", "usage: press ID|\"LABEL\"|KEY (ID|\"LABEL\"|KEY is missing)"},
        {"select 1086", "usage: select ID TEXT (TEXT is missing)"},
        {"check 1086 row", "usage: check ID ROW on|off (on|off is missing)"},
        {"at 100", "usage: at MS COMMAND (COMMAND is missing)"},
        {"tabs now", "usage: tabs (\"now\" is too much)"},
    };
    const Program program(Sample().OnePort(Sample::Kind::Ethernet));
    for (const auto& refused : kCases) {
        SCOPED_TRACE(refused.command);
        const auto result = program.Run(std::string("open Performance\nreg HKLM\\SOFTWARE\\Corvanta"
                                                    "\n\n# a comment\n") +
                                        refused.command + "\nreg SOFTWARE\\StandIn\n");
        EXPECT_EQ(result.code, 2);
        ExpectOneLine(result.err, refused.reason);
        ExpectOneLine(result.err, "standard input:5: ");
        // What came before is there, what came behind isn't.
        EXPECT_EQ(result.out,
                  "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]\n"
                  "\"InstalledPath\"=\"C:\\\\Program Files\\\\Corvanta\\\\\"\n");
    }
}

TEST(Refusal, ArgumentsAndFiles) {
    const Program program;
    const std::string machine = program.Machine();
    const std::string broken =
        program.Write("broken.reg",
                      "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE"
                      "\\SOFTWARE\\A]\n\"Value\"=dword:xyz\n");
    const std::string file = program.Write("a-file", "");
    const struct {
        std::vector<std::string> arguments;
        std::string reason;
    } kCases[] = {
        {{machine, "--fast"}, "there is no option --fast"},
        {{machine, "--script", program.Path("none.txt")}, "none.txt: can't be read"},
        {{machine, "--script", program.Path("")}, "/: can't be read"},
        {{broken}, broken + ":4: "},
        {{machine, "--device", "TSR4\\NONE\\1"}, "there is no device TSR4\\NONE\\1"},
        {{machine, "--files", file}, "a-file: can't be used as drive C:"},
        {{machine, "--save", program.Path("none/out.reg")}, "out.reg: can't be written"},
    };
    for (const auto& refused : kCases) {
        SCOPED_TRACE(refused.reason);
        const auto result = program.RunWith(refused.arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.out, "");
        ExpectOneLine(result.err, refused.reason);
    }
}

TEST(Refusal, WhatCannotBeWrittenIsToldAndEndsTheSession) {
    const Program program;
    const std::vector<std::string> kCases[] = {
        {program.Machine(), "--script", "-", "--files", program.Path("C")},
        {"--help"},
    };
    for (const auto& arguments : kCases) {
        const auto result = program.RunWith(
            arguments, "open Performance\npress 1086\nshow\npress 1090\n", "/dev/full");
        EXPECT_EQ(result.code, 2);
        ExpectOneLine(result.err, "standard output can't be written: ");
    }
    EXPECT_EQ(program.Read("C/Windows/System32/LogFiles/PerformanceTuning.log"), "\xFF\xFE")
        << "nothing was run";
}

}  // namespace
