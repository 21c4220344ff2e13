// Adding and removing VLANs: what the tree, the class keys and the lines say, and what remains of a
// failure.

#include "NetConfigTest.h"

namespace {

const std::string kMade = "Miniport created with Guid = 7B1DCDAF-A839-4220-B465-B9A16A9E786E\n";
constexpr char kCannotAdd[] = "Cannot add VLAN. Error in VLAN parameters\n";
// A text with its terminator, as bytes in a machine file.
std::string HexText(const std::string& text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string bytes;
    for (const char unit : text + '\0')
        bytes += {digits[unit / 16], digits[unit % 16], ',', '0', '0', ','};
    return bytes;
}

TEST(VlanOperations, AVlanIsMadeAndGoesAgain) {
    LayerMachine test;
    const std::u16string name(120, u'n');
    EXPECT_EQ(test.AddVlan(kA, u"4095", name, u"7"), S_OK);
    EXPECT_EQ(test.newGuid, kFirst);
    EXPECT_EQ(test.Printed(), kMade);
    EXPECT_EQ(test.Parameter("0000", u"VlanID"), Field(u"4095", 100));
    EXPECT_EQ(test.Parameter("0000", u"VlanName"), Field(name.substr(0, 99), 100));
    EXPECT_EQ(test.Parameter("0000", u"Priority"), Field(u"7", 100));
    const std::string device = "SYSTEM\\CurrentControlSet\\Enum\\ROOT\\CVTA_MUXMP\\0000";
    EXPECT_EQ(test.Text(device, u"FriendlyName"),
              u"Corvanta Virtual Miniport Driver - VLAN " + name.substr(0, 59));
    EXPECT_EQ(test.Entry(kA, u"UpperBindings"), Bindings({kFirst}));
    EXPECT_EQ(test.Entry(kA, u"UpperBindings")->second.size(), 96U);

    EXPECT_EQ(test.AddVlan(kA, u"1", u"b"), S_OK);
    EXPECT_EQ(test.Entry(kA, u"UpperBindings"), Bindings({kSecond, kFirst}));
    EXPECT_EQ(test.AddVlan(kB, u"1", u"b"), S_OK) << "over another adapter";
    const std::u16string third = test.newGuid;
    EXPECT_EQ(test.Entry(kB, u"UpperBindings"), Bindings({third}));
    test.Printed();

    EXPECT_EQ(test.RemoveVlan(kA, kFirst), S_OK);
    EXPECT_EQ(test.Printed(), "pMuxPhysicalAdapter->RemoveMiniport succeeded\n");
    EXPECT_EQ(test.Entry(kA, u"UpperBindings"), Bindings({kSecond}));
    EXPECT_EQ(test.RemoveVlan(kA, kSecond), S_OK);
    EXPECT_FALSE(test.Entry(kA, u"UpperBindings"));
    EXPECT_EQ(test.Miniports(), 1U);
    EXPECT_EQ(test.Now(), 0U);
}

TEST(VlanOperations, WhichValuesAVlanMayHave) {
    const struct {
        std::u16string id, name, priority;
        bool isAdded;
    } rows[] = {
        {u"0", u"x", u"0", false},     {u"4096", u"x", u"0", false},
        {u"4095", u"x", u"0", true},   {u"-1", u"x", u"0", false},
        {u"x", u"x", u"0", false},     {u"99999999999999999999", u"x", u"0", false},
        {u" 8x", u"x", u"0", true},    {u"8", u"x", u"8", false},
        {u"8", u"x", u"-1", false},    {u"8", u"x", u"4294967296", false},
        {u"8", u"x", u"none", true},   {u"", u"x", u"0", false},
        {u"8", u"", u"0", false},      {u"8", u"x", u"", false},
        {u"8", u"FIRST", u"0", false}, {u"7", u"x", u"0", false},
        {u"07", u"x", u"0", true},
    };
    LayerMachine test;
    ASSERT_EQ(test.AddVlan(kA, u"7", u"First"), S_OK);
    for (const auto& row : rows) {
        SCOPED_TRACE(platform::ToUtf8(row.id + u" " + row.name + u" " + row.priority));
        test.Printed();
        EXPECT_EQ(test.AddVlan(kA, row.id, row.name, row.priority), row.isAdded ? S_OK : E_FAIL);
        EXPECT_EQ(test.Printed() == kCannotAdd, !row.isAdded);
        if (row.isAdded) {
            EXPECT_EQ(test.RemoveVlan(kA, test.newGuid), S_OK);
        }
        EXPECT_EQ(test.Miniports(), 1U);
    }
}

TEST(VlanOperations, WhatRemainsWhenAVlanCannotBeAdded) {
    constexpr char kNotInstalled[] = "pMiniport->Install failed. hr = 0x80004005\n";
    constexpr char kNotFound[] = "HrFindInstance failed. hr = 0x80004005\n";
    const Sample rebooting =
        Sample().With("SOFTWARE\\StandIn\\NetCfg", "\"ApplyResult\"=dword:4a020");
    const struct {
        std::string faults;
        HRESULT result;
        std::string line;
        bool remains = false;
        Sample sample = Sample();
        std::u16string lower = kA;
    } rows[] = {
        {"INetCfg::EnumComponents=E", E_FAIL, kNotFound},
        {"IEnumNetCfgComponent::Next=E", E_FAIL, kNotFound},
        {{}, R(0x8004A027), "Illegal instance found\n", false, Sample(), kUnknown},
        {{}, R(0x8004A027), "Illegal instance found\n", false, Sample(), u"x"},
        {"INetCfgComponent::GetId=E", E_FAIL, "Failed to read adapter device ID 0x80004005\n"},
        {"", kRefusal, "Non-supported adapter device ID: IBA\\Tessaron-IPOIB26_IPoIB\n", false,
         Sample().OnePort(Sample::Kind::Ipoib)},
        {"operator new=8,3", kRefusal, "new CMuxPhysicalAdapter failed\n"},
        {"operator new=8,4", kRefusal, "new CMuxVirtualMiniport failed\n"},
        {"RegOpenKeyExW=5", R(0x80070005),
         "pMuxPhysicalAdapter->LoadConfiguration failed. hr = 0x80070005\n"},
        {"RegQueryValueExW UpperBindings=5", R(0x80070005),
         "pMuxPhysicalAdapter->LoadConfiguration failed. hr = 0x80070005\n", false,
         Sample().With(kTree + Sample::Guid(1), "\"UpperBindings\"=hex(7):")},
        {"INetCfg::QueryNetCfgClass=E", E_FAIL, kNotInstalled},
        {"INetCfgClass::QueryInterface=E", E_FAIL, kNotInstalled},
        {"INetCfgClassSetup::Install=E", E_FAIL, kNotInstalled},
        {"INetCfg::Apply=E,1,1", E_FAIL, kNotInstalled},
        {"INetCfg::Apply=E", E_FAIL, kNotInstalled},
        {"INetCfgComponent::GetInstanceGuid=E,2", E_FAIL, kNotInstalled},
        {"INetCfgComponent::SetDisplayName=E", E_FAIL, kNotInstalled},
        {"INetCfgComponent::OpenParamKey=E", E_FAIL, kNotInstalled},
        {{}, kRefusal, "pMiniport->Install failed. hr = 0x4a020\n", false, rebooting},
        {"RegCreateKeyExW=5", R(0x80070005),
         kMade + "ApplyRegistryChanges failed. hr = 0x80070005\n", true},
        {"operator new=8,5,1", R(0x80070008),
         kMade + "ApplyRegistryChanges failed. hr = 0x80070008\n", true},
        {"RegSetValueExW UpperBindings=5", R(0x80070005),
         kMade + "ApplyRegistryChanges failed. hr = 0x80070005\n", true},
        {{},
         E_FAIL,
         kCannotAdd,
         false,
         Sample().With(
             kTree + Sample::Guid(1),
             "\"UpperBindings\"=\"\\\\Device\\\\x\"\n\"TeamDeviceName\"=\"\\\\DEVICE\\\\X\"")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.faults + " " + row.line);
        LayerMachine test(row.sample);
        const auto before = test.Entry(kA, u"UpperBindings");
        test.Fail(row.faults);
        EXPECT_EQ(test.AddVlan(row.lower, u"1", u"a"), row.result);
        EXPECT_EQ(test.Printed(), row.line);
        test.machine.faults.Disarm();
        EXPECT_EQ(test.Miniports(), row.remains ? 1U : 0U);
        EXPECT_EQ(test.newGuid, row.remains ? kFirst : u"");
        EXPECT_EQ(test.Parameter("0000", u"VlanID").has_value(), row.remains);
        EXPECT_EQ(test.Entry(kA, u"UpperBindings"), before);
        EXPECT_TRUE(test.LockIsFree());
    }
}

TEST(VlanOperations, ValuesThatCannotBeWrittenAreNotNoticed) {
    LayerMachine test;
    test.Fail("RegSetValueExW VlanName=5");
    EXPECT_EQ(test.AddVlan(kA, u"1", u"a"), S_OK);
    EXPECT_FALSE(test.Parameter("0000", u"VlanName"));
    EXPECT_EQ(test.Parameter("0000", u"Priority"), Field(u"0", 100));
}

TEST(VlanOperations, WhatRemainsWhenAVlanCannotBeRemoved) {
    const std::string kRemoveFailed = "pMuxPhysicalAdapter->RemoveMiniport failed. hr = 0x";
    const struct {
        std::string faults;
        std::u16string lower, vlan;
        HRESULT result;
        std::string line;
    } rows[] = {
        {{}, kB, kFirst, R(0x80070057), "There is no adapter to remove\n"},
        {{},
         kA,
         u"x",
         R(0x80070016),
         "Trying to remove team, not VLAN. Use \"remove team\" cmd line option\n"},
        {{}, kA, kUnknown, R(0x80070490), kRemoveFailed + "80070490\n"},
        {"INetCfg::QueryNetCfgClass=E", kA, kFirst, E_FAIL, kRemoveFailed + "80004005\n"},
        {"INetCfgClassSetup::DeInstall=E", kA, kFirst, E_FAIL, kRemoveFailed + "80004005\n"},
        {{}, kFirst, kFirst, kRefusal, "Cannot install vlan over vlan\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.faults + " " + row.line);
        LayerMachine test;
        ASSERT_EQ(test.AddVlan(kA, u"1", u"a"), S_OK);
        test.Printed();
        test.Fail(row.faults);
        EXPECT_EQ(test.RemoveVlan(row.lower, row.vlan), row.result);
        EXPECT_EQ(test.Printed(), row.line);
        EXPECT_EQ(test.Miniports(), 1U);
        EXPECT_EQ(test.Entry(kA, u"UpperBindings"), Bindings({kFirst}));
        test.machine.faults.Disarm();
        EXPECT_EQ(test.AddVlan(kFirst, u"2", u"b"), kRefusal) << "over the VLAN";
    }
    // The component goes also when there is no memory to note its entry.
    LayerMachine test;
    ASSERT_EQ(test.AddVlan(kA, u"1", u"a"), S_OK);
    test.Fail("operator new=8,8");
    EXPECT_EQ(test.RemoveVlan(kA, kFirst), S_OK);
    EXPECT_EQ(test.Miniports(), 0U);
    EXPECT_EQ(test.Entry(kA, u"UpperBindings"), Bindings({kFirst}));
}

TEST(VlanOperations, HostileListsAreWalkedToTheirEnd) {
    const std::string path = kTree + Sample::Guid(1);
    std::string many;
    for (int i = 0; i < 100000; ++i)
        many += "5c,00,78,00,00,00,";
    const std::pair<const char*, std::string> rows[] = {
        {"no end", "hex(7):5c,00,5c,00,41,00"},
        {"an odd end", "hex(7):5c,00,5c"},
        {"no device names", "hex(7):41,00,00,00,5c,00,00,00,7b,00,00,00"},
        {"a number", "dword:12345678"},
        {"the same 100,000 times", "hex(7):" + many + "00,00"},
    };
    for (const auto& [reason, value] : rows) {
        SCOPED_TRACE(reason);
        LayerMachine test(Sample().With(path, "\"UpperBindings\"=" + value));
        const bool isFull = value.size() > 100000;
        EXPECT_EQ(test.AddVlan(kA, u"1", u"a"), isFull ? R(0x800705AA) : S_OK);
        EXPECT_EQ(test.Miniports(), isFull ? 0U : 1U);
        if (!isFull) {
            EXPECT_EQ(test.RemoveVlan(kA, kFirst), S_OK);
        }
        EXPECT_EQ(RemoveAllVlans(kA.c_str(), eL2_PROTOCOL_ETHERNET), S_OK);
        EXPECT_FALSE(test.Entry(kA, u"UpperBindings"));
    }
}

TEST(VlanOperations, WhatIsRemovedIsWhatTheListNames) {
    // Two components with one GUID, which is there twice; and a team that is named by no GUID,
    // while a component has a team's name that is empty.
    const std::string device = "\\\\Device\\\\";
    const std::string twice = "hex(7):" + HexText("\\Device\\" + platform::ToUtf8(kFirst)) +
                              HexText("\\Device\\" + platform::ToUtf8(kFirst)) +
                              HexText("\\Device\\x") + "00,00";
    LayerMachine test(
        Sample()
            .With(kTree + Sample::Guid(1),
                  "\"UpperBindings\"=" + twice + "\n\"TeamDeviceName\"=\"" + device + "x\"")
            .With(kClass + "0020", MiniportValues(kFirst))
            .With(kClass + "0021", MiniportValues(kFirst))
            .With(kClass + "0022", MiniportValues(kSecond) + "\n\"TeamName\"=\"\""));
    EXPECT_EQ(RemoveAllVlans(kA.c_str(), eL2_PROTOCOL_ETHERNET), S_OK);
    EXPECT_FALSE(test.Parameter("0020", u"ComponentId"));
    EXPECT_FALSE(test.Parameter("0021", u"ComponentId"));
    EXPECT_TRUE(test.Parameter("0022", u"ComponentId"));
}

TEST(VlanOperations, CostTheSameForEachVlan) {
    const auto calls = [](int count, bool adds) {
        LayerMachine test(Sample().Vlans(count));
        test.machine.trace.Start();
        EXPECT_EQ(adds ? test.AddVlan(kA, u"4095", u"new")
                       : test.RemoveVlan(kA, u"{5E7B0D21-93C4-4F18-A6E2-000000000001}"),
                  S_OK);
        return test.machine.trace.Records().size();
    };
    for (const bool adds : {true, false}) {
        const std::size_t few = calls(64, adds);
        const std::size_t more = calls(320, adds);
        // Beside a few, as the index over the components grows.
        EXPECT_EQ((more - few) / 256, 10U);
        EXPECT_LT((more - few) % 256, 10U);
    }
}

TEST(VlanOperations, TheLastPlaceIsTaken) {
    LayerMachine test(Sample().Vlans(4094));
    EXPECT_EQ(test.AddVlan(kA, u"4095", u"last"), S_OK);
    EXPECT_EQ(test.AddVlan(kA, u"4096", u"one more"), R(0x800705AA));
    EXPECT_EQ(test.Miniports(), 4095U);
}

}  // namespace
