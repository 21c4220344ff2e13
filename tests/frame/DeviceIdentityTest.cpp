#include "DeviceIdentity.h"

#include "DeviceRequest.h"
#include "Fixture.h"

namespace {

const std::string kEnumKey =
    "SYSTEM\\CurrentControlSet\\Enum\\" + Sample::InstanceId(1, Sample::Kind::Ethernet);
const std::string kMuxKey = "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters";
const std::string kMuxEntry = kMuxKey + "\\" + Sample::Guid(1);

struct Identity {
    bool found = false;
    AdapterIdentity adapter;
    AdapterFlags flags;
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> detail;
};

Identity Identify(const TestMachine& test) {
    const DeviceRequest device(Wide(test.sample.InstanceId(1)));
    Identity identity;
    identity.found =
        GetDeviceInterfaceDetail(device.request, identity.detail, identity.adapter, identity.flags);
    return identity;
}

// The flags that are set, by first letters: vlan, team, member, ipoib; "-" for none of a device
// that was found, "fails" for one that wasn't.
std::string FlagsOf(const Sample& sample) {
    const TestMachine test(sample);
    const Identity identity = Identify(test);
    if (!identity.found) return "fails";
    std::string text;
    if (identity.flags.isVlanMiniport) text += 'v';
    if (identity.flags.isTeamMiniport) text += 't';
    if (identity.flags.isTeamMember) text += 'm';
    if (identity.flags.isIpoib) text += 'i';
    return text.empty() ? "-" : text;
}

TEST(DeviceIdentity, ReadsWhoTheAdapterIs) {
    TestMachine test;
    const Identity identity = Identify(test);
    ASSERT_TRUE(identity.found);
    EXPECT_EQ(std::u16string(identity.adapter.netCfgInstanceId), Wide(Sample::Guid(1)));
    EXPECT_EQ(std::u16string(identity.adapter.classKeyPath), Wide(Sample::ClassKey(1)));
    EXPECT_EQ(std::u16string(identity.flags.deviceInstanceId.Get()),
              Wide(test.sample.InstanceId(1)));
    ASSERT_TRUE(identity.detail);
    EXPECT_NE(identity.detail.Get()->DevicePath[0], 0);
}

TEST(DeviceIdentity, TheMuxEntryTellsTheRole) {
    const struct {
        std::string key;
        const char* line;
        const char* adapter;   // flags of a physical adapter
        const char* miniport;  // and of a virtual miniport
        const char* reason;
    } rows[] = {
        {"SOFTWARE", "", "-", "fails", "no MUX tree"},
        {kMuxKey, "", "-", "v", "no entry"},
        {kMuxEntry, R"("TeamType"=dword:1)", "-", "t", "a team"},
        {kMuxEntry, R"("TeamType"=hex:01,00,00,00,00)", "-", "fails", "a value that is too long"},
        {kMuxEntry, R"("TeamDeviceName"="\\Device\\{B}")", "m", "v", "a member"},
        {kMuxEntry, R"("TeamDeviceName"=hex(1):)", "-", "v", "a team name without data"},
    };
    for (const auto& row : rows) {
        Sample sample = Sample().With(row.key, row.line);
        EXPECT_EQ(FlagsOf(sample), row.adapter) << row.reason;
        EXPECT_EQ(FlagsOf(sample.With(kEnumKey, R"("Service"="MUXMP")")), row.miniport)
            << row.reason;
    }
}

TEST(DeviceIdentity, RegistryTextsAreCheckedBeforeUse) {
    const std::string x(260, 'x');
    const std::string classKey = Sample::ClassKey(1);
    const struct {
        std::string key, name, data;
        const char *flags, *reason;
    } rows[] = {
        {kEnumKey, "Service", R"("IPoIB6x_cvta")", "i", "the name begins so, in any case"},
        {kEnumKey, "Service", R"("x_ipoib6x")", "-", "and nowhere else"},
        {kEnumKey, "Service", R"("muxmp")", "v", "small letters"},
        {kEnumKey, "Service", R"("MUXMP2")", "-", "longer than the miniport's"},
        {kEnumKey, "Service", '"' + x.substr(0, 129) + '"', "-", "260 bytes of service"},
        {kEnumKey, "Service", '"' + x.substr(0, 130) + '"', "fails", "one more character"},
        {kEnumKey, "Service", "hex(1):69,00,70,00,6f,00,69,00,62,00,36,00,78,00", "i",
         "a service without terminator"},
        {kEnumKey, "Driver", R"("")", "fails", "the class root has no adapter's id"},
        {classKey, "NetCfgInstanceId", '"' + x + '"', "fails", "an id that is too long"},
    };
    for (const auto& row : rows) {
        Sample sample = Sample().With(row.key, '"' + row.name + "\"=" + row.data);
        if (std::string(row.flags) == "v") sample.With(kMuxKey, "");
        EXPECT_EQ(FlagsOf(sample), row.flags) << row.reason;
    }
}

}  // namespace
