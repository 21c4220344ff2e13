// Teams come, gain and lose members, carry VLANs and go; what remains when that fails.

#include "NetConfigTest.h"

namespace {

constexpr char kNet[] = "SYSTEM\\CurrentControlSet\\Enum\\ROOT\\CVTA_MUXMP\\0000";
const std::string kBindings = "SOFTWARE\\StandIn\\NetCfg\\Bindings\\";
const std::u16string kBackbone = u"Backbone";
const std::u16string kMember = u"\\Device\\" + kFirst;
constexpr BYTE kMacOfA[] = {0x00, 0x02, 0xC9, 0x11, 0x22, 0x33};

// Both ports with a binding that is on, one that is off, and the MUX driver's.
Sample BoundSample() {
    Sample sample;
    for (const int port : {1, 2})
        sample.With(kBindings + Sample::Guid(port),
                    "\"tcpip\"=\"ms_tcpip;enabled\"\n\"mux\"=\"cvta_muxp;disabled\"\n"
                    "\"old\"=\"ms_old;disabled\"\n\"server\"=\"ms_server,ms_tcpip;enabled\"");
    return sample;
}

std::u16string PathsOf(const LayerMachine& test, int port) {
    std::u16string all;
    for (const char16_t* token : {u"tcpip", u"mux", u"old", u"server"}) {
        const std::u16string path = *test.Text(kBindings + Sample::Guid(port), token);
        all += path.ends_with(u";enabled") ? u'+' : u'-';
    }
    return all;
}

// A machine with a team without members, unless a fault is to meet its making.
struct TeamMachine : LayerMachine {
    explicit TeamMachine(const Sample& theSample = BoundSample(), DWORD protocol = 0)
        : LayerMachine(theSample) {
        EXPECT_EQ(NewTeam(kBackbone, 5, true, protocol), S_OK);
        EXPECT_EQ(newGuid, kFirst);
        Printed();
    }
};

TEST(TeamOperations, ATeamIsMade) {
    LayerMachine test;
    const std::u16string name(120, u'n');
    EXPECT_EQ(test.NewTeam(name, 5, false, eL2_PROTOCOL_IPOIB), S_OK);
    EXPECT_EQ(test.newGuid, kFirst);
    EXPECT_EQ(test.Printed(), "Team created with Guid = 7B1DCDAF-A839-4220-B465-B9A16A9E786E\n");
    EXPECT_EQ(test.Text(kNet, u"FriendlyName"),
              u"Corvanta Virtual Miniport Driver - Team " + name.substr(0, 59));
    for (const bool isEntry : {true, false}) {
        const auto value = [&](const char16_t* valueName) {
            return isEntry ? test.Entry(kFirst, valueName) : test.Parameter("0000", valueName);
        };
        EXPECT_EQ(value(u"TeamName"), Field(name.substr(0, 99), 100));
        EXPECT_EQ(value(u"TeamType"), NumberValue(5));
        EXPECT_EQ(value(u"FallBackToPrimary"), NumberValue(0));
        EXPECT_EQ(value(u"L2Protocol"), NumberValue(1));
        EXPECT_EQ(value(u"TeamGuid").has_value(), isEntry);
    }
    EXPECT_EQ(test.Entry(kFirst, u"TeamGuid"), Field(kFirst, 64));
    EXPECT_EQ(test.NewTeam(name.substr(0, 99) + u"x"), kRefusal);
    EXPECT_EQ(test.Printed(), "Team named " + std::string(99, 'n') + "x already exists\n");
    EXPECT_EQ(test.NewTeam(u"N" + name.substr(0, 98)), S_OK) << "case counts";
}

TEST(TeamOperations, AMemberJoinsAndLeaves) {
    TeamMachine test;
    EXPECT_EQ(test.Member(true, kFirst, kA, true, true), S_OK);
    EXPECT_EQ(test.Entry(kA, u"UpperBindings"), Bindings({kFirst}));
    EXPECT_EQ(test.Entry(kA, u"TeamDeviceName"), TextValue(kMember));
    EXPECT_EQ(test.Entry(kFirst, u"PrimaryAdapterGuid"), Field(kA, 64));
    EXPECT_EQ(
        test.Entry(kFirst, u"TeamMacAddress"),
        std::pair(DWORD{REG_BINARY}, std::vector<BYTE>(std::begin(kMacOfA), std::end(kMacOfA))));
    EXPECT_EQ(test.Parameter("0011", u"AdapterBindingBackup"),
              Value(REG_MULTI_SZ, std::u16string(u"tcpip\0server\0\0", 14)));
    EXPECT_EQ(PathsOf(test, 1), u"-+--");
    EXPECT_EQ(test.Member(true, kFirst, kB), S_OK);
    EXPECT_EQ(test.Entry(kFirst, u"PrimaryAdapterGuid"), Field(kA, 64));
    EXPECT_EQ(test.Printed(), "");

    EXPECT_EQ(test.Member(false, kFirst, kB), S_OK);
    EXPECT_TRUE(test.Entry(kFirst, u"TeamMacAddress")) << "it isn't B's";
    EXPECT_EQ(test.Member(false, kFirst, kA), S_OK);
    EXPECT_FALSE(test.Entry(kFirst, u"TeamMacAddress"));
    EXPECT_FALSE(test.Entry(kFirst, u"PrimaryAdapterGuid"));
    EXPECT_FALSE(test.Entry(kA, u"TeamDeviceName"));
    EXPECT_FALSE(test.Parameter("0011", u"AdapterBindingBackup"));
    for (const int port : {1, 2})
        EXPECT_EQ(PathsOf(test, port), u"+--+");
    EXPECT_EQ(DeleteTeam(kFirst.c_str(), eL2_PROTOCOL_ETHERNET), S_OK);
    EXPECT_EQ(test.Miniports(), 0U);
    EXPECT_FALSE(test.Entry(kFirst, u"TeamName"));
}

TEST(TeamOperations, WhatABackupHolds) {
    const std::string path = kBindings + Sample::Guid(1);
    const auto many = [&](int count,
                          std::size_t length) {  // tokens of that length and their terminator
        std::string paths = "\"mux\"=\"CVTA_MUXP;disabled\"\n";
        for (int i = 0; i < count; ++i)
            paths += "\"" + std::to_string(1000 + i) + std::string(length - 4, 'x') +
                     "\"=\"ms_x;enabled\"\n";
        return Sample().With(path, paths + "\"z\"=\"ms_z;enabled\"");
    };
    const struct {
        const char* reason;
        Sample sample;
        std::size_t size;  // of the backup in bytes
        bool isRestored;
    } rows[] = {
        {"no other binding", Sample().With(path, "\"mux\"=\"cvta_muxp;disabled\""), 2, false},
        {"as long as can be read", many(5, 408), 4096, true},
        {"lost by its length", many(66, 30), 4098, false},
        {"the last one doesn't fit", many(63, 64), 2 * 4096, false},
        {"one fills the buffer", many(1, 4094), 2 * 4096, false},
        {"one is too long", many(1, 4095), 2 * (2 + 1), true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TeamMachine test(row.sample);
        EXPECT_EQ(test.Member(true, kFirst, kA), S_OK);
        EXPECT_EQ(test.Parameter("0011", u"AdapterBindingBackup")->second.size(), row.size);
        const bool isLeft = row.size == 2 * 4096;
        EXPECT_EQ(test.Text(path, u"z") == u"ms_z;enabled", isLeft);
        EXPECT_EQ(test.Member(false, kFirst, kA), S_OK);
        EXPECT_EQ(test.Text(path, u"z") == u"ms_z;enabled", row.isRestored || isLeft);
        EXPECT_TRUE(test.Text(path, u"mux")->ends_with(u";disabled"));
    }
}

TEST(TeamOperations, WhoDoesNotFitOrFailsToJoinOrLeave) {
    const std::string noMac =
        "Failed to get MAC address of adapter '" + std::string(Sample::Guid(1)) + "'\n";
    const std::string first = platform::ToUtf8(kFirst);
    const std::string a = Sample::Guid(1);
    const std::string unknown = platform::ToUtf8(kUnknown);
    const struct {
        bool adds;
        std::u16string team, adapter;
        std::string faults;
        HRESULT result;
        std::string line;
    } rows[] = {
        {true, kFirst, u"x", {}, CO_E_CLASSSTRING, "Invalid adapter GUID 'x'\n"},
        {true, u"x", kA, {}, CO_E_CLASSSTRING, "Cannot parse team GUID. hr = 0x800401f3\n"},
        {true, kFirst, kA, "operator new=8", kRefusal, "new CMuxTeamMiniport failed\n"},
        {true, kFirst, kA, "INetCfg::EnumComponents=E", E_FAIL,
         "HrFindInstance for team failed. hr = 0x80004005 guid=" + first + "\n"},
        {true, kUnknown, kA, {}, R(0x80070002), "Team " + unknown + " not found\n"},
        {true, kFirst, kA, "RegQueryValueExW TeamName=5", E_FAIL,
         "pTeamMiniport->LoadConfiguration failed. hr = 0x80004005\n"},
        {true, kFirst, kA, "RegQueryValueExW L2Protocol=5", E_FAIL,
         "pTeamMiniport->LoadConfiguration failed. hr = 0x80004005\n"},
        {true, kFirst, kA, "RegQueryInfoKeyW=5", R(0x8007000D),
         "Team " + first +
             " doesn't exist or misconfigured - team's L2-Protocol couldn't be determined. hr = "
             "0x80070002\n"},
        {true,
         kB,
         kA,
         {},
         R(0x8007000D),
         "Team " + std::string(Sample::Guid(2)) +
             " doesn't exist or misconfigured - team's L2-Protocol couldn't be determined. hr = "
             "0x0\n"},
        {true, kFirst, kA, "CLSIDFromString " + a + "=0x800401F3,2", CO_E_CLASSSTRING,
         "Cannot parse adapter GUID. hr = 0x800401f3\n"},
        {true,
         kFirst,
         kUnknown,
         {},
         R(0x8004A027),
         "Illegal instance found guid=" + unknown + "\n"},
        {true, kFirst, kA, "INetCfgComponent::GetId=E", E_FAIL,
         "Failed to read adapter device ID 0x80004005 guid=" + a + "\n"},
        {true,
         kFirst,
         kFirst,
         {},
         kRefusal,
         "Adapter incompatible with Ethernet team (adapter-device-ID='cvta_muxmp'\n"},
        {true, kFirst, kA, "RegOpenKeyExW=5,3", R(0x80070005),
         "pMuxPhysicalAdapter->LoadConfiguration failed. hr = 0x80070005\n"},
        {false, kFirst, kA, {}, E_INVALIDARG, ""},
        {true, kFirst, kA, "GetIfTable2=8", R(0x80070008), noMac},
        {true, kFirst, kA, "RegSetValueExW TeamMacAddress=5", R(0x80070005),
         "ApplyRegistryChanges failed. hr = 0x80070005\n"},
        {true, kFirst, kA, "RegCreateKeyExW=5", R(0x80070005),
         "ApplyRegistryChanges failed. hr = 0x80070005\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.faults + " " + row.line);
        TeamMachine test;
        test.Fail(row.faults);
        EXPECT_EQ(test.Member(row.adds, row.team, row.adapter, true, false), row.result);
        EXPECT_EQ(test.Printed(), row.line);
        EXPECT_EQ(PathsOf(test, 1), u"+--+");
        EXPECT_FALSE(test.Parameter("0011", u"AdapterBindingBackup"));
        test.machine.faults.Disarm();
        EXPECT_TRUE(test.LockIsFree());
    }
}

TEST(TeamOperations, WhatAMembershipForbids) {
    TeamMachine test;
    ASSERT_EQ(test.AddVlan(kA, u"1", u"a"), S_OK);
    EXPECT_EQ(test.Member(true, kFirst, kA), E_INVALIDARG) << "it carries a VLAN";
    ASSERT_EQ(test.RemoveVlan(kA, test.newGuid), S_OK);
    ASSERT_EQ(test.Member(true, kFirst, kA, true, true), S_OK);
    test.Printed();
    EXPECT_EQ(test.Member(true, kFirst, kA, true, true), E_INVALIDARG) << "it is a member";
    EXPECT_EQ(test.AddVlan(kA, u"1", u"a"), E_FAIL);
    EXPECT_EQ(test.Printed(), "Cannot add VLAN. Error in VLAN parameters\n");
    EXPECT_EQ(test.RemoveVlan(kA, kFirst), R(0x80070016));
    test.Printed();
    EXPECT_EQ(test.Member(true, kFirst, kB, false, true), kRefusal);
    EXPECT_EQ(test.Printed(), "Primary adapter for the team already defined\n");
    // The address that decides about the team's can't be read.
    test.Fail("GetIfTable2=8");
    EXPECT_EQ(test.Member(false, kFirst, kA), R(0x80070008));
    test.Fail("RegDeleteValueW TeamMacAddress=5");
    EXPECT_EQ(test.Member(false, kFirst, kA), R(0x80070005));
    EXPECT_TRUE(
        test.Printed().ends_with("pTeamMiniport->ApplyRegistryChanges failed. hr = 0x80070005\n"));
    EXPECT_EQ(PathsOf(test, 1), u"-+--") << "the bindings are as they were";
}

TEST(TeamOperations, ItsProtocolDecidesWhoFits) {
    for (const DWORD protocol : {eL2_PROTOCOL_ETHERNET, eL2_PROTOCOL_IPOIB}) {
        TeamMachine test(BoundSample().Ports(Sample::Kind::Ethernet, Sample::Kind::Ipoib),
                         protocol);
        const bool isIpoib = protocol == eL2_PROTOCOL_IPOIB;
        EXPECT_EQ(test.Member(true, kFirst, isIpoib ? kA : kB), kRefusal);
        EXPECT_EQ(test.Printed(),
                  isIpoib ? "Adapter incompatible with IPoIB team (adapter-device-ID="
                            "'TSR4\\Tessaron-ETH26_Eth'\n"
                          : "Adapter incompatible with Ethernet team (adapter-device-ID="
                            "'IBA\\Tessaron-IPOIB26_IPoIB'\n");
        EXPECT_EQ(test.Member(true, kFirst, isIpoib ? kB : kA), S_OK);
    }
}

TEST(TeamOperations, ATeamIsWhatItsEntrySays) {
    const struct {
        const char* value;  // in place of one of a team that can be joined
        HRESULT result;
        bool keepsAddress;
    } rows[] = {
        {"\"L2Protocol\"=-", S_OK, true},
        {"\"L2Protocol\"=dword:5", S_OK, true},
        {"\"L2Protocol\"=dword:1", kRefusal, true},
        {"\"L2Protocol\"=hex:01,02,03,04,05", E_FAIL, true},
        {"\"FallBackToPrimary\"=-", E_FAIL, true},
        {"\"TeamType\"=\"text\"", E_FAIL, true},
        {"\"TeamMacAddress\"=hex:01,02,03,04,05", S_OK, false},
        {"\"TeamMacAddress\"=hex:01,02,03,04,05,06,07", S_OK, false},
    };
    const std::string entry = kTree + platform::ToUtf8(kFirst);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        LayerMachine test(Sample()
                              .With(entry,
                                    "\"TeamName\"=\"t\"\n\"TeamType\"=dword:1\n"
                                    "\"FallBackToPrimary\"=dword:1\n\"L2Protocol\"=dword:0\n"
                                    "\"TeamMacAddress\"=hex:01,02,03,04,05,06")
                              .With(entry, row.value)
                              .With(kClass + "0020", MiniportValues(kFirst)));
        EXPECT_EQ(test.Member(true, kFirst, kA), row.result);
        EXPECT_EQ(test.Entry(kFirst, u"TeamMacAddress").has_value(), row.keepsAddress);
    }
}

TEST(TeamOperations, ABindingThatCannotBeHandledIsPassedOver) {
    const struct {
        std::string fault;
        const char16_t* paths;
        bool hasBackup;
    } rows[] = {
        {"INetCfgComponent::QueryInterface=0x80004002", u"+--+", false},
        {"INetCfgComponentBindings::EnumBindingPaths=E", u"+--+", false},
        {"INetCfgBindingPath::GetPathToken=E,1,1", u"++--", true},
        {"INetCfgBindingPath::EnumBindingInterfaces=E,2,1", u"----", true},
        {"INetCfgBindingInterface::GetUpperComponent=E,2,1", u"----", true},
        {"INetCfgComponent::OpenParamKey=E", u"-+--", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        TeamMachine test;
        test.Fail(row.fault);
        EXPECT_EQ(test.Member(true, kFirst, kA), S_OK);
        EXPECT_EQ(PathsOf(test, 1), row.paths);
        EXPECT_EQ(test.Parameter("0011", u"AdapterBindingBackup").has_value(), row.hasBackup);
    }
}

TEST(TeamOperations, ItsVlansGoWithIt) {
    TeamMachine test;
    ASSERT_EQ(test.AddVlan(kFirst, u"1", u"a"), S_OK);
    ASSERT_EQ(test.AddVlan(kFirst, u"2", u"b"), S_OK);
    EXPECT_EQ(test.Entry(kFirst, u"UpperBindings"), Bindings({test.newGuid, kSecond}));
    ASSERT_EQ(test.Member(true, kFirst, kA), S_OK);
    test.Printed();
    EXPECT_EQ(DeleteTeam(kFirst.c_str(), eL2_PROTOCOL_ETHERNET), E_INVALIDARG);
    EXPECT_EQ(test.Printed(),
              "Cannot delete team. Team contains adapters. Remove all adapters before deleting\n");
    EXPECT_EQ(test.Miniports(), 1U);
    EXPECT_FALSE(test.Entry(kFirst, u"TeamName")) << "the first half has been done";
    // The member's entry tells which team it is in, which knows nothing of itself any more.
    EXPECT_EQ(test.Member(false, kFirst, kA), R(0x8007000D));
    EXPECT_EQ(RemoveAllVlans(kA.c_str(), eL2_PROTOCOL_ETHERNET), S_OK);
    EXPECT_EQ(test.Miniports(), 0U);
    EXPECT_EQ(PathsOf(test, 1), u"+--+");
}

TEST(TeamOperations, WhatRemainsWhenATeamCannotBeMadeOrDeleted) {
    const struct {
        std::string fault;
        HRESULT made;
        const char* line;
    } makings[] = {
        {"operator new=8,1", kRefusal, "new CMuxTeamMiniport failed\n"},
        {"INetCfgClass::EnumComponents=E", S_OK,
         "Failed to get network component enumerator reference. Error=0x80004005\n"
         "Team created with Guid = 7B1DCDAF-A839-4220-B465-B9A16A9E786E\n"},
        {"INetCfgClassSetup::Install=E", E_FAIL,
         "pTeamMiniport->Install failed. hr = 0x80004005\n"},
        {"INetCfg::Apply=E,1,1", E_FAIL, "pTeamMiniport->Install failed. hr = 0x80004005\n"},
        {"RegCreateKeyExW=5", S_OK,
         "Team created with Guid = 7B1DCDAF-A839-4220-B465-B9A16A9E786E\n"},
    };
    for (const auto& row : makings) {
        SCOPED_TRACE(row.fault);
        LayerMachine test;
        test.Fail(row.fault);
        EXPECT_EQ(test.NewTeam(kBackbone), row.made);
        EXPECT_EQ(test.Printed(), row.line);
        EXPECT_EQ(test.Miniports(), row.made == S_OK ? 1U : 0U);
    }
    const struct {
        std::string fault;
        HRESULT deleted;
        const char* line;
    } deletions[] = {
        {"INetCfg::EnumComponents=E", E_FAIL,
         "HrFindInstance failed. hr = 0x80004005\nRemoving all vlans failed. hr = 0x80004005\n"},
        {"CLSIDFromString " + platform::ToUtf8(kFirst) + "=0x800401F3,2", CO_E_CLASSSTRING,
         "Invalid team GUID.hr= 0x800401f3, guid={7B1DCDAF-A839-4220-B465-B9A16A9E786E}\n"},
        {"operator new=8,4", kRefusal, "new CMuxTeamMiniport failed\n"},
        {"INetCfgClassSetup::DeInstall=E", E_FAIL, ""},
        {"INetCfg::QueryNetCfgClass=E", E_FAIL, ""},
    };
    for (const auto& row : deletions) {
        SCOPED_TRACE(row.fault);
        TeamMachine test;
        test.Fail(row.fault);
        EXPECT_EQ(DeleteTeam(kFirst.c_str(), eL2_PROTOCOL_ETHERNET), row.deleted);
        EXPECT_EQ(test.Printed(), row.line);
        EXPECT_EQ(test.Miniports(), 1U);
        test.machine.faults.Disarm();
        EXPECT_EQ(DeleteTeam(kFirst.c_str(), eL2_PROTOCOL_INVALID), S_OK);
        EXPECT_EQ(test.Miniports(), 0U);
    }
}

TEST(TeamOperations, ATreeThatLeadsInACircleIsLeft) {
    // The team above itself, and above its member.
    const std::string values =
        "\"UpperBindings\"=\"\\\\Device\\\\" + platform::ToUtf8(kFirst) +
        "\"\n\"TeamDeviceName\"=\"\\\\device\\\\" + platform::ToUtf8(kFirst) +
        "\"\n\"TeamMacAddress\"=hex:01,02,03,04,05,06\n\"L2Protocol\"=dword:5";
    for (const std::u16string& from : {kA, kFirst}) {
        LayerMachine test(
            Sample()
                .With(kTree + Sample::Guid(1), values)
                .With(kTree + platform::ToUtf8(kFirst), values)
                .With(kClass + "0020", "\"ComponentId\"=\"cvta_muxmp\"\n\"NetCfgInstanceId\"=\"" +
                                           platform::ToUtf8(kFirst) + "\"\n\"TeamName\"=\"t\""));
        EXPECT_EQ(RemoveAllVlans(from.c_str(), eL2_PROTOCOL_INVALID), S_OK);
        EXPECT_EQ(
            test.Printed(),
            "Illegal instance was of team handled by a previous adapter\nAllowing use case\n");
        EXPECT_FALSE(test.Entry(kFirst, u"TeamMacAddress"));
        EXPECT_FALSE(test.Parameter("0020", u"ComponentId"));
    }
}

}  // namespace
