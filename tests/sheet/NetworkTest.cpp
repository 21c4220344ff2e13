// What `network` shows of VLANs and teams, and of what was left behind by a change of them.

#include <gtest/gtest.h>

#include <algorithm>

#include "../hostile/Hostile.h"
#include "MachineFile.h"
#include "Program.h"
#include "Seeds.h"
#include "Text.h"

namespace {

const std::string kTeamMachine = SOURCE_DIR "/samples/team-with-vlans.reg";
const std::string kFileHeader = "Windows Registry Editor Version 5.00\n";
const std::string kAdapterKeys =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\";
const std::string kNetClassKey =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Class\\"
    "{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
// Of the sample: a member of the team, the team, an adapter with VLANs, and one of those.
const std::string kMemberGuid = "{A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811}";
const std::string kTeamGuid = "{3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A}";
const std::string kAdapterGuid = "{D60E4A9B-1F73-4C85-A2B8-03F6C97D5E1A}";
const std::string kVlanGuid = "{E85B20C7-D916-4F3A-8C4D-6A0173F9B2E4}";
const std::string kNobody = "{00000000-0000-0000-0000-00000000AAAA}";

std::string KeyLine(const std::string& path) {
    return "[" + path + "]\n";
}

std::string TextLine(const std::string& name, const std::string& text) {
    const auto wide = platform::FromUtf8(text) + u'\0';
    return platform::FormatValue(platform::FromUtf8(name), REG_SZ,
                                 {reinterpret_cast<const BYTE*>(wide.data()), wide.size() * 2});
}

// A value of texts, each of them a device's name.
std::string Devices(const std::string& name, const std::vector<std::string>& guids) {
    std::u16string all;
    for (const std::string& guid : guids)
        all += u"\\Device\\" + platform::FromUtf8(guid) + u'\0';
    all += u'\0';
    return platform::FormatValue(platform::FromUtf8(name), REG_MULTI_SZ,
                                 {reinterpret_cast<const BYTE*>(all.data()), all.size() * 2});
}

// The sample with these changes, as the script's commands see it.
Program::Result RunOn(const std::string& changes, const std::string& commands) {
    const Program program;
    const std::string file = program.Write("changes.reg", kFileHeader + changes);
    return program.RunWith({kTeamMachine, "--script", "-"}, "merge " + file + "\n" + commands);
}

constexpr char kDrawing[] =
    R"(Local Area Connection 3                                up     {6B29FC40-CA47-4067-B31D-00DD010662DA}
Corvanta Tessaron Ethernet Adapter
├─ in team    Backbone                                        {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A}
├─ bound      cvta_muxp
└─ not bound  bw_filter, ms_server→ms_netbt→ms_tcpip, ms_tcpip, ms_tcpip6

ネットワーク                                           down   {A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811}
Corvanta Tessaron Ethernet Adapter #2
├─ in team    Backbone                                        {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A}
├─ bound      cvta_muxp
└─ not bound  bw_filter, ms_server→ms_netbt→ms_tcpip, ms_tcpip, ms_tcpip6

Local Area Connection 5                                up     {D60E4A9B-1F73-4C85-A2B8-03F6C97D5E1A}
Corvanta Tessaron Ethernet Adapter #3
├─ VLAN 20    Storage                      priority 0  up     {62C9F04D-8A15-4B7E-BD30-F1597C3E08A6}
│  └─ bound      ms_tcpip
├─ VLAN 10    日本語で書かれたとても長い…  priority -  up     {E85B20C7-D916-4F3A-8C4D-6A0173F9B2E4}
│  └─ bound      ms_tcpip
├─ bound      bw_filter, cvta_muxp, ms_server→ms_netbt→ms_tcpip, ms_tcpip
└─ not bound  ms_tcpip6

Team Backbone                                          up     {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A}
Fault Tolerance, primary Local Area Connection 3
├─ member     Local Area Connection 3      Active      up     {6B29FC40-CA47-4067-B31D-00DD010662DA}
├─ member     ネットワーク                 Backup      down   {A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811}
├─ VLAN 40    Guests                       priority 0  up     {B1460E8F-C25D-4937-A6F8-349D7BE01C52}
│  └─ bound      ms_tcpip
├─ VLAN 30    Cameras                      priority 3  up     {0FD73B96-4E2C-4A58-97E1-B8640C2D5A73}
│  └─ bound      ms_tcpip
└─ bound      ms_tcpip

Left behind by a change that failed or was cut short
└─ {00000000-0000-0000-0000-00000000AAAA}
     an entry of UpperBindings of {D60E4A9B-1F73-4C85-A2B8-03F6C97D5E1A} without its miniport
)";

constexpr char kList[] =
    R"(adapter | {6B29FC40-CA47-4067-B31D-00DD010662DA} | Local Area Connection 3 | up
adapter | {A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811} | ネットワーク | down
adapter | {D60E4A9B-1F73-4C85-A2B8-03F6C97D5E1A} | Local Area Connection 5 | up
team | {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A} | Backbone | 1 | {6B29FC40-CA47-4067-B31D-00DD010662DA}
member | {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A} | {6B29FC40-CA47-4067-B31D-00DD010662DA} | up | Active
member | {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A} | {A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811} | down | Backup
vlan | {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A} | {B1460E8F-C25D-4937-A6F8-349D7BE01C52} | 40 | 0 | Guests | up
vlan | {3A8F61D5-7B24-4E9C-9105-C8E2D4B70F6A} | {0FD73B96-4E2C-4A58-97E1-B8640C2D5A73} | 30 | 3 | Cameras | up
vlan | {D60E4A9B-1F73-4C85-A2B8-03F6C97D5E1A} | {62C9F04D-8A15-4B7E-BD30-F1597C3E08A6} | 20 | 0 | Storage | up
vlan | {D60E4A9B-1F73-4C85-A2B8-03F6C97D5E1A} | {E85B20C7-D916-4F3A-8C4D-6A0173F9B2E4} | 10 | - | 日本語で書かれたとても長い名前 \| \\ | up
binding | {0FD73B96-4E2C-4A58-97E1-B8640C2D5A73} | ms_tcpip->{0FD73B96-4E2C-4A58-97E1-B8640C2D5A73} | ms_tcpip | enabled
)";

TEST(Network, ShowsAdaptersTeamsAndVlans) {
    const auto result = RunOn(
        KeyLine("HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Interfaces\\" + kMemberGuid) +
            "\"Up\"=dword:0\n" +
            KeyLine(
                "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-"
                "11CE-BFC1-08002BE10318}\\" +
                kMemberGuid + "\\Connection") +
            TextLine("Name", "ネットワーク") + KeyLine(kNetClassKey + "0017") + "\"Priority\"=-\n" +
            TextLine("VlanName", "日本語で書かれたとても長い名前 | \\") +
            KeyLine(kAdapterKeys + kAdapterGuid) +
            Devices("UpperBindings",
                    {"{62C9F04D-8A15-4B7E-BD30-F1597C3E08A6}", kNobody, kVlanGuid}),
        "network\nnetwork list\n");
    EXPECT_EQ(result.out.substr(0, result.out.find("adapter | ")), kDrawing);
    EXPECT_TRUE(Has(result.out, kList)) << result.out;
}

// What a change that was cut short leaves, and the lines that tell of it.
TEST(Network, NamesWhatWasLeftBehind) {
    const std::string newMiniport = KeyLine(kNetClassKey + "0099") +
                                    TextLine("ComponentId", "cvta_muxmp") +
                                    TextLine("NetCfgInstanceId", kNobody);
    const struct {
        const char* what;
        std::string changes;
        std::vector<std::string> left;
    } cases[] = {
        {"nothing", "", {}},
        {"a VLAN installed, but not listed",
         newMiniport,
         {kNobody + " | a VLAN's miniport that no list names"}},
        {"a team installed, but without its key",
         newMiniport + TextLine("TeamName", "x"),
         {kNobody + " | a team's miniport without its key"}},
        {"a new team's key without all of its values",
         newMiniport + TextLine("TeamName", "x") + KeyLine(kAdapterKeys + kNobody) +
             TextLine("TeamName", "x"),
         {kNobody + " | a team's key without TeamType, TeamGuid"}},
        {"a team's component removed, but not its key",
         "[-" + kNetClassKey + "0014]\n",
         {kTeamGuid + " | a team's key without its miniport"}},
        {"a VLAN's component removed, but listed",
         "[-" + kNetClassKey + "0017]\n",
         {kVlanGuid + " | an entry of UpperBindings of " + kAdapterGuid + " without its miniport"}},
        {"a member listed for its team only",
         KeyLine(kAdapterKeys + kMemberGuid) + "\"TeamDeviceName\"=-\n",
         {kMemberGuid + " | an entry of UpperBindings for the team " + kTeamGuid +
              " without membership",
          kMemberGuid + " | an AdapterBindingBackup of an adapter that is in no team"}},
        {"a member without its list",
         KeyLine(kAdapterKeys + kMemberGuid) + "\"UpperBindings\"=-\n",
         {kMemberGuid + " | a membership of the team " + kTeamGuid +
          " without its entry in UpperBindings"}},
        {"a member's key removed, but not its backup",
         "[-" + kAdapterKeys + kMemberGuid + "]\n",
         {kMemberGuid + " | an AdapterBindingBackup of an adapter that is in no team"}},
        {"a member of a team that isn't there",
         KeyLine(kAdapterKeys + kMemberGuid) + TextLine("TeamDeviceName", "\\Device\\" + kNobody),
         {kMemberGuid + " | an entry of UpperBindings for the team " + kTeamGuid +
              " without membership",
          kMemberGuid + " | a membership without its team, " + kNobody}},
        {"a primary that has left",
         KeyLine(kAdapterKeys + kTeamGuid) + TextLine("PrimaryAdapterGuid", kAdapterGuid),
         {kTeamGuid + " | a team whose primary, " + kAdapterGuid + ", isn't among its members"}},
        {"an adapter that has gone with its VLANs",
         "[-" + kNetClassKey + "0013]\n",
         {kAdapterGuid + " | the key of an adapter that isn't there"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        std::vector<std::string> left;
        for (const std::string& line : RunOn(row.changes, "network list\n").Lines()) {
            if (line.starts_with("left | ")) left.push_back(line.substr(7));
        }
        EXPECT_EQ(left, row.left);
    }
}

// Names and lists of any length and content, and no line of the drawing too wide or out of control.
TEST(Network, DrawsAnyTree) {
    static constexpr const char* kNames[] = {
        "UpperBindings", "TeamDeviceName",     "TeamName",   "TeamType",
        "TeamGuid",      "PrimaryAdapterGuid", "VlanID",     "VlanName",
        "Priority",      "NetCfgInstanceId",   "ComponentId"};
    const std::vector<std::string> keys = {kAdapterKeys + kMemberGuid,  kAdapterKeys + kTeamGuid,
                                           kAdapterKeys + kAdapterGuid, kAdapterKeys + kNobody,
                                           kAdapterKeys + "no GUID",    kNetClassKey + "0011",
                                           kNetClassKey + "0014",       kNetClassKey + "0016"};
    std::vector<std::string> many(4'000, kVlanGuid);
    many.push_back(kAdapterGuid);
    for (const std::uint64_t seed : Seeds(4)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed);
        std::string changes;
        for (int i = 0; i < 30; ++i) {
            changes += KeyLine(hostile.OneOf(keys)) +
                       platform::FormatValue(platform::FromUtf8(hostile.OneOf(kNames)),
                                             hostile.Type(), hostile.Data({}));
        }
        if (seed % 2 == 0)
            changes += KeyLine(kAdapterKeys + kAdapterGuid) + Devices("UpperBindings", many);
        const auto result = RunOn(changes, "network list\nnetwork\n");
        EXPECT_EQ(result.code, 0) << result.err;
        for (const std::string& line : result.Lines()) {
            const std::u16string text = platform::FromUtf8(line);
            EXPECT_FALSE(platform::HasControlCharacter(text)) << line;
            if (line.find(" | ") == std::string::npos) {
                EXPECT_LE(text.size(), 100U) << line;
            }
        }
    }
}

}  // namespace
