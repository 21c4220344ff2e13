// A person at a terminal, and what a terminal is spared.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "Program.h"
#include "Text.h"

namespace {

const std::string kAdapter =
    "SYSTEM\\CurrentControlSet\\Enum\\" + Sample::InstanceId(1, Sample::Kind::Ethernet);

TEST(Terminal, APersonIsAskedForWhatAScriptQueues) {
    const Program program(Sample().TcpToChange());
    const auto result = program.AtTerminal({
        "sav\t",  // completed up to the file, which is left out
        "press \"Save T\t",
        "C:\\card.txt",
        "ope\tPerf\t",
        "press \"Single port traffic\"",
        "press \"Run Tuning\"",
        "yes",
        "hold",
        "press \"Cancel\"",
        "",
        "reg nowhere",
        "\x1B[A",  // the command before
        "quit",
    });
    EXPECT_EQ(result.code, 0);
    for (const char* part :
         {"usage: save-as PATH (PATH is missing)", "name of the file [cancel]> ",
          "┌─ GeneralTuning ─", "ok, cancel, hold [ok]> ", "sheet: the box has no button yes",
          " | cancel\n", "Performance tuning failed. | 16 | General Tuning Failed | ok\n"})
        EXPECT_TRUE(Has(result.out, part)) << part << "\n" << result.out;
    const std::string refusal = "sheet: there is no key nowhere";
    EXPECT_NE(result.out.find(refusal), result.out.rfind(refusal)) << result.out;
}

TEST(Terminal, AMachineWithoutTabsSaysWhichDevicesItHas) {
    const Program program;
    program.Write(
        "machine.reg",
        "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet"
        "\\Enum\\PCI\\VEN_1\\1]\n\"DeviceDesc\"=\"@x.inf,%d%;A disk\"\n");
    const auto result = program.AtTerminal({"quit"});
    EXPECT_TRUE(Has(result.out, "It has:\n")) << result.out;
    EXPECT_TRUE(Has(result.out, "device | PCI\\\\VEN_1\\\\1 | A disk\n")) << result.out;
}

// A colour, a C1 control, DEL, and a text that is turned round.
const std::string kHostile = "a\x1B[31m\u0085\x7F\u202Eb\u2067c\u061C\n";
const char kPrintable[] = "a\\u001b[31m\\u0085\\u007f\\u202eb\\u2067c\\u061c\\n";

TEST(Terminal, TextOfTheMachineCannotControlIt) {
    const std::string text = "=\"" + kHostile + "\"";
    const Program program(Sample()
                              .With(kAdapter, "\"FriendlyName\"" + text)
                              .PortValue(1, "\"DriverVersion\"" + text)
                              .With("SYSTEM\\CurrentControlSet\\Control\\Network\\"
                                    "{4D36E972-E325-11CE-BFC1-08002BE10318}\\" +
                                        std::string(Sample::Guid(1)) + "\\Connection",
                                    "\"Name\"" + text)
                              .With("SOFTWARE\\x\u202Ey", "\"n\x1B\"" + text));
    const auto result = program.Run(
        "show\ncontrols\ndevices\nplacement\nreg SOFTWARE\\x\u202Ey\n"
        "open Performance\npress 1086\npress 1090\nlog\noutput\nopen " +
            kHostile,
        {"--trace", "--echo"});
    EXPECT_EQ(result.code, 2) << result.err;
    EXPECT_TRUE(Has(result.err, "there is no tab \"a\\u001b[31m")) << result.err;
    for (const std::string& printed : {result.out, result.err}) {
        for (const char16_t unit : platform::FromUtf8(printed)) {
            const bool isHostile =
                unit != u'\n' && (unit < u' ' || (unit >= 0x7F && unit < 0xA0) || unit == 0x61C ||
                                  unit == 0x202E || unit == 0x2067);
            ASSERT_FALSE(isHostile) << static_cast<unsigned>(unit);
        }
    }
    const std::string parts[] = {"┌─ " + std::string(kPrintable), " | Driver Version | ",
                                 "device | ",
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\x\\u202ey]\n\"n\\u001b\"=hex(1):"};
    for (const std::string& part : parts)
        EXPECT_TRUE(Has(result.out, part)) << part << "\n" << result.out;
}

TEST(Terminal, WideAndJoiningCharactersKeepTheColumns) {
    std::string name;
    for (int i = 0; i < 60; ++i)
        name += "\u6F22e\u0301";
    const Program program(Sample()
                              .With(kAdapter, "\"FriendlyName\"=\"" + name + "\"")
                              .PortValue(1, "\"DriverDesc\"=\"" + name + "\""));
    const auto result = program.Run("show\n");
    EXPECT_TRUE(Has(result.out, "\u6F22e\u0301")) << result.err;
    std::set<std::ptrdiff_t> widths;
    for (const std::string& line : result.Lines()) {
        const std::u16string units = platform::FromUtf8(line);
        widths.insert(static_cast<std::ptrdiff_t>(units.size()) +
                      std::count(units.begin(), units.end(), u'\u6F22') -
                      std::count(units.begin(), units.end(), u'\u0301'));
    }
    EXPECT_EQ(widths.size(), 1U) << result.out;
    EXPECT_LE(*widths.rbegin(), 100);
}

}  // namespace
