#include "AdapterIdentity.h"

#include "DeviceRequest.h"
#include "Fixture.h"

namespace {

const std::string kEnumKey =
    "SYSTEM\\CurrentControlSet\\Enum\\" + Sample::InstanceId(1, Sample::Kind::Ethernet);
const std::string kMuxKey = "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters";
const std::string kMuxEntry = kMuxKey + "\\" + Sample::Guid(1);

struct Identity {
    bool found = false;
    AdapterContext context;
    AdapterFlags flags;
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> detail;
};

Identity Identify(const TestMachine& test) {
    const DeviceRequest device(Wide(test.sample.InstanceId(1)));
    Identity identity;
    identity.found =
        GetDeviceInterfaceDetail(device.request, identity.detail, identity.context, identity.flags);
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

TEST(AdapterIdentity, ReadsWhoTheAdapterIs) {
    TestMachine test;
    const Identity identity = Identify(test);
    ASSERT_TRUE(identity.found);
    EXPECT_EQ(std::u16string(identity.context.netCfgInstanceId), Wide(Sample::Guid(1)));
    EXPECT_EQ(std::u16string(identity.context.classKeyPath), Wide(Sample::ClassKey(1)));
    EXPECT_EQ(std::u16string(identity.flags.deviceInstanceId.Get()),
              Wide(test.sample.InstanceId(1)));
    ASSERT_TRUE(identity.detail);
    EXPECT_NE(identity.detail.Get()->DevicePath[0], 0);
}

TEST(AdapterIdentity, TheServiceTellsTheKind) {
    const struct {
        std::string service;
        const char* flags;
    } rows[] = {
        {"cvta_eth6x", "-"}, {"ipoib6x", "i"}, {"IPoIB6x", "i"},   {"ipoib6x_cvta", "i"},
        {"ipoib6", "-"},     {"", "-"},        {"MUXMP", "v"},     {"muxmp", "v"},
        {"MUXMP2", "-"},     {"MUX", "-"},     {"x_ipoib6x", "-"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(
            FlagsOf(
                Sample().With(kMuxKey, "").With(kEnumKey, "\"Service\"=\"" + row.service + "\"")),
            row.flags)
            << row.service;
}

TEST(AdapterIdentity, TheMuxEntryTellsTheRole) {
    const struct {
        std::string key;
        const char* line;
        const char* adapter;   // flags of a physical adapter
        const char* miniport;  // and of a virtual miniport
        const char* reason;
    } rows[] = {
        {"SOFTWARE", "", "-", "fails", "no MUX tree"},
        {kMuxKey, "", "-", "v", "no entry"},
        {kMuxEntry, "", "-", "v", "an entry without values"},
        {kMuxEntry, R"("TeamType"=dword:1)", "-", "t", "a team"},
        {kMuxEntry, R"("TeamType"=hex(1):01,00)", "-", "t", "a short value of another type"},
        {kMuxEntry, R"("TeamType"=hex:01,00,00,00,00)", "-", "fails", "a value that is too long"},
        {kMuxEntry, R"("TeamDeviceName"="\\Device\\{B}")", "m", "v", "a member"},
        {kMuxEntry, R"("TeamDeviceName"=hex(1):)", "-", "v", "a team name without data"},
        {kMuxEntry, R"("TeamDeviceName"=dword:1)", "m", "v", "a team name of another type"},
    };
    for (const auto& row : rows) {
        Sample sample = Sample().With(row.key, row.line);
        EXPECT_EQ(FlagsOf(sample), row.adapter) << row.reason;
        EXPECT_EQ(FlagsOf(sample.With(kEnumKey, R"("Service"="MUXMP")")), row.miniport)
            << row.reason;
    }
}

TEST(AdapterIdentity, RegistryTextsAreCheckedBeforeUse) {
    const auto text = [](const char* name, int length) {
        return "\"" + std::string(name) + "\"=\"" +
               std::string(static_cast<std::size_t>(length), 'x') + "\"";
    };
    const std::string classKey = Sample::ClassKey(1);
    const struct {
        std::string key, line;
        const char *flags, *reason;
    } rows[] = {
        {kEnumKey, R"("Service"=dword:00000001)", "fails", "a service that is a number"},
        {kEnumKey, text("Service", 129), "-", "260 bytes of service"},
        {kEnumKey, text("Service", 130), "fails", "one more character"},
        {kEnumKey, R"("Service"=hex(1):69,00,70,00,6f,00,69,00,62,00,36,00,78,00)", "i",
         "a service without terminator"},
        {kEnumKey, R"("Driver"=hex:01,02)", "fails", "a driver that is bytes"},
        {kEnumKey, text("Driver", 125), "fails", "a long driver that leads nowhere"},
        {kEnumKey, R"("Driver"="")", "fails", "the class root has no adapter's id"},
        {classKey, R"("NetCfgInstanceId"=dword:1)", "fails", "an id that is a number"},
        {classKey, text("NetCfgInstanceId", 259), "-", "an id that just fits"},
        {classKey, text("NetCfgInstanceId", 260), "fails", "an id that is too long"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FlagsOf(Sample().With(row.key, row.line)), row.flags) << row.reason;
}

TEST(BusIdentity, ReadsIdAndClassKey) {
    TestMachine test;
    DeviceRequest device(Wide(Sample::BusInstanceId()));
    device.request.PageRequested = SPPSR_ENUM_BASIC_DEVICE_PROPERTIES;
    BusDevice bus;
    ASSERT_TRUE(IdentifyBusDevice(device.request, bus));
    EXPECT_EQ(std::u16string(bus.instanceId), Wide(Sample::BusInstanceId()));
    EXPECT_EQ(std::u16string(bus.classKeyPath), Wide(Sample::BusClassKey()));
}

TEST(BusIdentity, TheClassKeyPathHasToFit) {
    const std::size_t room =
        259 - std::string("SYSTEM\\CurrentControlSet\\Control\\Class\\").size();
    for (const std::size_t length : {room, room + 1, std::size_t{259}, std::size_t{260}}) {
        TestMachine test(Sample().With(
            std::string("SYSTEM\\CurrentControlSet\\Enum\\") + Sample::BusInstanceId(),
            "\"Driver\"=\"" + std::string(length, 'd') + "\""));
        const DeviceRequest device(Wide(Sample::BusInstanceId()));
        BusDevice bus;
        EXPECT_EQ(IdentifyBusDevice(device.request, bus), length == room) << length;
    }
}

}  // namespace
