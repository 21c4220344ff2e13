// What a session has changed, as files that bring it about and take it back.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>

#include "../hostile/Hostile.h"
#include "MachineFile.h"
#include "Program.h"
#include "Seeds.h"

namespace {

const std::string kHeader = "Windows Registry Editor Version 5.00\n";

// The saved machine after a script, without the restarts that were counted.
std::string SavedAfter(const Program& program, const std::string& machine,
                       const std::string& script) {
    const std::string drop =
        program.Write("drop.reg", kHeader + "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts]\n");
    const auto result =
        program.RunWith({machine, "--script", "-", "--save", program.Path("saved.reg")},
                        script + "merge " + drop + "\n");
    EXPECT_EQ(result.code, 0) << result.err;
    return program.Read("saved.reg");
}

// After the session, its changes make the machine of the original, and undo makes the original of
// the machine.
void ExpectBothWays(const Program& program, const std::string& machine, const std::string& session,
                    bool changesAnything, std::vector<std::string> more = {}) {
    const std::string after = program.Path("after.reg");
    more.insert(more.begin(), {machine, "--script", "-", "--save", after});
    const auto result =
        program.RunWith(more, session + "changes\nchanges undo # the same, the other way\n");
    ASSERT_EQ(result.code, 0) << result.err;
    const std::size_t changes = result.out.find(kHeader);
    const std::size_t undo = result.out.find(kHeader, changes + 1);
    ASSERT_NE(undo, std::string::npos) << result.out;
    EXPECT_EQ(undo - changes != kHeader.size(), changesAnything) << result.out;
    EXPECT_EQ(result.out.find("\\Restarts"), std::string::npos) << result.out;
    const std::string made =
        program.Write("changes.reg", result.out.substr(changes, undo - changes));
    const std::string undone = program.Write("undo.reg", result.out.substr(undo));

    EXPECT_EQ(SavedAfter(program, machine, "merge " + made + "\n"), SavedAfter(program, after, ""))
        << FileText(made);
    EXPECT_EQ(SavedAfter(program, after, "merge " + undone + "\n"),
              SavedAfter(program, machine, ""))
        << FileText(undone);
}

std::string Session(const std::vector<const char*>& scenarios) {
    std::string session = "open Performance\n";
    for (const char* scenario : scenarios)
        session += "press " + std::string(scenario) + "\npress 1090\n";
    return session;
}

// Whatever stands there, of any type, in any order, under a name in another case.
TEST(Changes, LeadBothWaysFromAnyRegistry) {
    static constexpr const char16_t* kNames[] = {
        u"DefaultRecvRingProcessor", u"txINTERRUPTprocessor", u"*ReceiveBuffers", u"useRSSforUDP",
        u"*rssMaxPROCnumber",        u"SingleStream",         u"x = \"\u00E9\"",  u""};
    const std::vector<const char*> scenarios = {"1086", "1087", "1088", "1096", "1098", "1095"};
    for (const std::uint64_t seed : Seeds(6)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed);
        Sample sample;
        sample.TcpToChange();
        for (int i = 0; i < 16; ++i)
            sample.PortValue(1 + i % 2, platform::FormatValue(hostile.OneOf(kNames), hostile.Type(),
                                                              hostile.Data({})));
        const Program program(sample);
        ExpectBothWays(program, program.Machine(),
                       Session({hostile.OneOf(scenarios), scenarios[seed % scenarios.size()]}),
                       true);
    }
}

TEST(Changes, LeadBothWaysWithAControlSetByItsNumberAndNoFacts) {
    ExpectBothWays(Program(), SOURCE_DIR "/samples/plain-export.reg",
                   "device TSR4\\Tessaron-ETH26_Eth\\6&1f0c66ab&0&01\n" + Session({"1087"}), true);
}

// A VLAN comes, and a team goes with its bindings.
TEST(Changes, LeadBothWaysFromChangesOfTheNetwork) {
    const Program program;
    std::filesystem::copy(SOURCE_DIR "/samples/drive", program.Path("c"),
                          std::filesystem::copy_options::recursive);
    const std::string team = "{3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A}";
    const std::string edits = program.Write(
        "edits.reg",
        kHeader +
            "[-HKEY_LOCAL_"
            "MACHINE\\SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\" +
            team +
            "]\n[-HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Enum\\ROOT\\CVTA_MUXMP\\0000]\n" +
            "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\NetCfg\\Bindings\\" + team + "]\n");
    ExpectBothWays(program, SOURCE_DIR "/samples/team-with-vlans.reg",
                   "device TSR4\\Tessaron-ETH26_Eth\\6&30C15AE8&0&01\nopen VLAN\npress 1048\n"
                   "type 1055 77\ntype 1043 New\npress enter\nmerge " +
                       edits + "\n",
                   true, {"--files", program.Path("c")});
}

TEST(Changes, NothingButWhatHasChangedSinceTheSessionBegan) {
    const Program program;
    ExpectBothWays(program, program.Machine(), "open Performance\npress 1087\ncancel\n", false);
    const std::string edits = program.Write(
        "edits.reg",
        kHeader +
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]\n\"InstalledPath\"=hex(2):00,00\n"
            "@=\"\"\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Interfaces]\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts]\n\"V\\\\X\\\\1\"=dword:1\n");
    ExpectBothWays(program, program.Machine(), "merge " + edits + "\n", true);
}

}  // namespace
