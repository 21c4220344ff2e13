#include "AdapterIdentity.h"

#include "DeviceRequest.h"
#include "Fixture.h"

namespace {

std::string EnumKey(int port = 1) {
    return "SYSTEM\\CurrentControlSet\\Enum\\" + Sample::InstanceId(port, Sample::Kind::Ethernet);
}

std::string MuxKey() {
    return "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters";
}

std::string MuxEntry() {
    return MuxKey() + "\\" + Sample::Guid(1);
}

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
std::string Describe(const Identity& identity) {
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
        const char* service;
        const char* flags;
    } rows[] = {
        {"cvta_eth6x", "-"}, {"ipoib6x", "i"}, {"IPoIB6x", "i"},   {"ipoib6x_cvta", "i"},
        {"ipoib6", "-"},     {"", "-"},        {"MUXMP", "v"},     {"muxmp", "v"},
        {"MUXMP2", "-"},     {"MUX", "-"},     {"x_ipoib6x", "-"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.service);
        TestMachine test(Sample()
                             .With(MuxKey(), "")
                             .With(EnumKey(), std::string("\"Service\"=\"") + row.service + "\""));
        EXPECT_EQ(Describe(Identify(test)), row.flags);
    }
}

TEST(AdapterIdentity, TheMuxEntryTellsTheRole) {
    const struct {
        const char* entry;     // line of the entry; null: no entry
        const char* physical;  // an adapter's flags
        const char* miniport;  // a virtual miniport's
        const char* reason;
    } rows[] = {
        {nullptr, "-", "v", "no entry"},
        {"", "-", "v", "an entry without values"},
        {R"("TeamType"=dword:1)", "-", "t", "a team"},
        {R"("TeamType"=hex(1):01,00)", "-", "t", "a short value of another type"},
        {R"("TeamType"=hex:01,00,00,00,00)", "-", "fails", "a value that is too long"},
        {R"("TeamDeviceName"="\\Device\\{B}")", "m", "v", "a member"},
        {R"("TeamDeviceName"=hex(1):)", "-", "v", "a team name without data"},
        {R"("TeamDeviceName"=dword:1)", "m", "v", "a team name of another type"},
    };
    for (const auto& row : rows) {
        for (const bool miniport : {false, true}) {
            SCOPED_TRACE(std::string(row.reason) + (miniport ? ", miniport" : ", adapter"));
            Sample sample;
            sample.With(MuxKey(), "");
            if (row.entry) sample.With(MuxEntry(), row.entry);
            if (miniport) sample.With(EnumKey(), R"("Service"="MUXMP")");
            TestMachine test(sample);
            EXPECT_EQ(Describe(Identify(test)), miniport ? row.miniport : row.physical);
        }
    }
}

TEST(AdapterIdentity, WithoutTheMuxTreeOnlyAPhysicalAdapterIsKnown) {
    TestMachine adapter;
    EXPECT_EQ(Describe(Identify(adapter)), "-");
}

TEST(AdapterIdentity, WithoutTheMuxTreeAMiniportIsUnknown) {
    TestMachine miniport(Sample().With(EnumKey(), R"("Service"="MUXMP")"));
    EXPECT_EQ(Describe(Identify(miniport)), "fails");
}

TEST(AdapterIdentity, RegistryTextsAreCheckedBeforeUse) {
    const std::string longDriver(125, 'x');
    const struct {
        std::string key;
        std::string line;
        const char* flags;
        const char* reason;
    } rows[] = {
        {EnumKey(), R"("Service"=dword:00000001)", "fails", "a service that is a number"},
        {EnumKey(), "\"Service\"=\"" + std::string(129, 's') + "\"", "-", "260 bytes of service"},
        {EnumKey(), "\"Service\"=\"" + std::string(130, 's') + "\"", "fails", "one more character"},
        {EnumKey(), R"("Service"=hex(1):69,00,70,00,6f,00,69,00,62,00,36,00,78,00)", "i",
         "a service without terminator"},
        {EnumKey(), R"("Driver"=hex:01,02)", "fails", "a driver that is bytes"},
        {EnumKey(), R"("Driver"="{4D36E972-E325-11CE-BFC1-08002BE10318}\\9999")", "fails",
         "a driver that leads nowhere"},
        {EnumKey(), "\"Driver\"=\"" + longDriver + "\"", "fails", "a long driver, not there"},
        {EnumKey(), R"("Driver"="")", "fails", "the class root has no adapter's id"},
        {Sample::ClassKey(1), R"("NetCfgInstanceId"=dword:1)", "fails", "an id that is a number"},
        {Sample::ClassKey(1), "\"NetCfgInstanceId\"=\"" + std::string(259, 'n') + "\"", "-",
         "an id that just fits"},
        {Sample::ClassKey(1), "\"NetCfgInstanceId\"=\"" + std::string(260, 'n') + "\"", "fails",
         "an id that is too long"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test(Sample().With(row.key, row.line));
        EXPECT_EQ(Describe(Identify(test)), row.flags);
    }
}

constexpr char16_t kBus[] = u"PCI\\VEN_1C57&DEV_6340\\4&1D8E6F20&0&0018";
constexpr char kBusKey[] =
    "SYSTEM\\CurrentControlSet\\Enum\\PCI\\VEN_1C57&DEV_6340\\4&1D8E6F20&0&0018";

TEST(BusIdentity, ReadsIdAndClassKey) {
    TestMachine test;
    DeviceRequest device(kBus);
    device.request.PageRequested = SPPSR_ENUM_BASIC_DEVICE_PROPERTIES;
    BusDevice bus;
    ASSERT_TRUE(IdentifyBusDevice(device.request, bus));
    EXPECT_EQ(std::u16string(bus.instanceId), kBus);
    EXPECT_EQ(std::u16string(bus.classKeyPath),
              u"SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E97D-E325-11CE-BFC1-"
              u"08002BE10318}\\0031");
}

TEST(BusIdentity, TheClassKeyPathHasToFit) {
    const std::size_t room =
        259 - std::string("SYSTEM\\CurrentControlSet\\Control\\Class\\").size();
    for (const std::size_t length : {room, room + 1, std::size_t{259}, std::size_t{260}}) {
        SCOPED_TRACE(length);
        TestMachine test(Sample().With(kBusKey, "\"Driver\"=\"" + std::string(length, 'd') + "\""));
        const DeviceRequest device(kBus);
        BusDevice bus;
        EXPECT_EQ(IdentifyBusDevice(device.request, bus), length == room);
    }
}

TEST(BusIdentity, AFailedStepFails) {
    const struct {
        const char* call;
        const char16_t* argument;
    } rows[] = {
        {"SetupDiGetDeviceInstanceIdW", u""},
        {"RegOpenKeyExW", u"SYSTEM\\CurrentControlSet\\Enum"},
        {"RegOpenKeyExW", u"SYSTEM\\CurrentControlSet\\Control\\Class"},
        {"RegOpenKeyExW", kBus},
        {"RegQueryValueExW", u"Driver"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        TestMachine test;
        const DeviceRequest device(kBus);
        test.machine.faults.FailCalls(row.call, row.argument, ERROR_ACCESS_DENIED);
        BusDevice bus;
        EXPECT_FALSE(IdentifyBusDevice(device.request, bus));
        EXPECT_TRUE(test.machine.faults.Fired());
    }
}

}  // namespace
