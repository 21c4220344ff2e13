#include "Providers.h"

#include "DeviceRequest.h"
#include "Fixture.h"

namespace {

// The tabs of a physical adapter on a machine without the MUX package; Performance is the last.
constexpr std::size_t kPhysicalTabs = 2;

void Destroy(const std::vector<HPROPSHEETPAGE>& pages) {
    const platform::QuietScope quiet;
    for (const HPROPSHEETPAGE page : pages)
        DestroyPropertySheetPage(page);
}

BOOL CALLBACK NeverAdd(HPROPSHEETPAGE, LPARAM) {
    ADD_FAILURE() << "a page was offered";
    return FALSE;
}

TEST(AdapterProvider, AnotherRequestIsRefusedAndTouchesNothing) {
    TestMachine test;
    test.Attach();
    const struct {
        DWORD requested;
        bool list;
        bool device;
        const char* reason;
    } rows[] = {
        {SPPSR_ENUM_BASIC_DEVICE_PROPERTIES, true, true, "basic properties"},
        {SPPSR_SELECT_DEVICE_RESOURCES, true, true, "resources"},
        {SPPSR_ENUM_ADV_DEVICE_PROPERTIES, false, true, "no list"},
        {SPPSR_ENUM_ADV_DEVICE_PROPERTIES, true, false, "no device"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        DeviceRequest device(Wide(test.sample.InstanceId(1)));
        device.request.PageRequested = row.requested;
        if (!row.list) device.request.DeviceInfoSet = nullptr;
        if (!row.device) device.request.DeviceInfoData = nullptr;
        test.machine.faults.Mark();
        EXPECT_FALSE(WinTsrTunePropPageProvider(&device.request, NeverAdd, 0));
        EXPECT_EQ(test.machine.faults.CallsSinceMark(), 0u);
    }
    EXPECT_FALSE(WinTsrTunePropPageProvider(nullptr, NeverAdd, 0));
}

TEST(AdapterProvider, AddsThePagesOfTheKind) {
    const std::string entry =
        std::string("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\") +
        Sample::Guid(1);
    const std::string device =
        "SYSTEM\\CurrentControlSet\\Enum\\" + Sample::InstanceId(1, Sample::Kind::Ethernet);
    const struct {
        Sample sample;
        std::size_t pages;
        const char* kind;
    } rows[] = {
        {Sample(), kPhysicalTabs, "Ethernet"},
        {Sample().OnePort(Sample::Kind::Ipoib), kPhysicalTabs, "IPoIB"},
        {Sample().With(entry, R"("TeamDeviceName"="\\Device\\{B}")"), kPhysicalTabs, "team member"},
        {Sample().With(entry, "").With(device, R"("Service"="MUXMP")"), 0, "VLAN"},
        {Sample().With(entry, R"("TeamType"=dword:1)").With(device, R"("Service"="MUXMP")"), 0,
         "team"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kind);
        TestMachine test(row.sample);
        const auto provided = test.CallProvider();
        EXPECT_TRUE(provided.result);
        EXPECT_EQ(provided.pages.size(), row.pages);
        Destroy(provided.pages);
    }
}

TEST(AdapterProvider, TheKindChoosesTheDialog) {
    for (const auto kind : {Sample::Kind::Ethernet, Sample::Kind::Ipoib}) {
        TestMachine test(Sample().OnePort(kind));
        bool hasSingleStream = false;
        test.user.Do([&] {
            SendMessageW(test.SheetWindow(), PSM_SETCURSEL, kPhysicalTabs - 1, 0);
            hasSingleStream = GetDlgItem(test.Page(), 1098) != nullptr;
        });
        ASSERT_TRUE(test.RunSheet());
        EXPECT_EQ(hasSingleStream, kind == Sample::Kind::Ethernet);
    }
}

// The leak and the second release would be found when the machine goes.
TEST(AdapterProvider, ARefusedPageIsFreedOnce) {
    TestMachine test;
    test.machine.trace.Start();
    const auto provided = test.CallProvider(1, true);
    EXPECT_TRUE(provided.result);
    EXPECT_EQ(test.machine.trace.Count("CreatePropertySheetPageW"), kPhysicalTabs);
    EXPECT_EQ(test.machine.trace.Count("DestroyPropertySheetPage"), kPhysicalTabs);
    EXPECT_EQ(test.machine.trace.Count("LocalAlloc"), test.machine.trace.Count("LocalFree"));
}

TEST(AdapterProvider, AFailedStepOfTheIdentificationGivesNoTab) {
    const std::u16string id = Wide(Sample::InstanceId(1, Sample::Kind::Ethernet));
    const std::u16string guid = Wide(Sample::Guid(1));
    const std::u16string driver = Wide(Sample::ClassKey(1))
                                      .substr(std::u16string(u"SYSTEM\\CurrentControlSet\\Control\\"
                                                             u"Class\\")
                                                  .size());
    const struct {
        const char* call;
        std::u16string argument;
        std::uint64_t which;
        BOOL result;
    } rows[] = {
        {"operator new", u"", 1, FALSE},
        {"operator new", u"", 2, FALSE},
        {"SetupDiGetDeviceInstanceIdW", u"", 1, FALSE},
        {"SetupDiGetDeviceInstanceIdW", u"", 2, FALSE},
        {"LocalAlloc", u"", 1, FALSE},
        {"RegOpenKeyExW", u"SYSTEM\\CurrentControlSet\\Enum", 1, FALSE},
        {"RegOpenKeyExW", u"SYSTEM\\CurrentControlSet\\Control\\Class", 1, FALSE},
        {"RegOpenKeyExW", id, 1, FALSE},
        {"RegQueryValueExW", u"Service", 1, FALSE},
        {"RegQueryValueExW", u"Driver", 1, FALSE},
        {"RegOpenKeyExW", driver, 1, FALSE},
        {"RegQueryValueExW", u"NetCfgInstanceId", 1, FALSE},
        {"SetupDiGetClassDevsW", u"", 1, FALSE},
        {"SetupDiCreateDeviceInterfaceW", u"", 1, FALSE},
        {"SetupDiGetDeviceInterfaceDetailW", u"", 1, FALSE},
        {"SetupDiGetDeviceInterfaceDetailW", u"", 2, FALSE},
        {"LocalAlloc", u"", 2, FALSE},
        {"RegOpenKeyExW", guid, 1, FALSE},
        {"CreatePropertySheetPageW", u"", 1, TRUE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.call) + " " + std::to_string(row.which));
        TestMachine test(
            Sample().With("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters", ""));
        test.Attach();
        test.machine.faults.FailCalls(row.call, row.argument, ERROR_ACCESS_DENIED, row.which);
        const auto provided = test.CallProvider();
        EXPECT_TRUE(test.machine.faults.Fired());
        EXPECT_EQ(provided.result, row.result);
        EXPECT_TRUE(provided.pages.empty());
        EXPECT_TRUE(test.user.Boxes().empty());
        Destroy(provided.pages);
    }
}

TEST(AdapterProvider, AnyFailedCallLeavesNothingBehind) {
    for (const bool lasting : {false, true}) {
        for (std::uint64_t n = 1;; ++n) {
            ASSERT_LT(n, 200u) << "never ran clean";
            SCOPED_TRACE(n);
            TestMachine test;
            test.Attach();
            test.machine.faults.Mark();
            test.machine.faults.FailNth(n, lasting);
            test.user.Answer(IDOK);  // a page that can't be allocated is reported
            const auto provided = test.CallProvider();
            EXPECT_TRUE(provided.result || provided.pages.empty());
            // One fault costs one tab.
            if (provided.result && !lasting) {
                EXPECT_GE(provided.pages.size(), kPhysicalTabs - 1);
            }
            EXPECT_LE(test.user.Boxes().size(), 1u);
            Destroy(provided.pages);
            const bool fired = test.machine.faults.Fired();

            test.machine.faults.Disarm();
            const auto clean = test.CallProvider();
            EXPECT_TRUE(clean.result);
            EXPECT_EQ(clean.pages.size(), kPhysicalTabs);
            Destroy(clean.pages);
            if (!fired) break;
        }
    }
}

TEST(BusProvider, HandsItsPageOver) {
    TestMachine test;
    const auto provided = test.CallBusProvider();
    EXPECT_TRUE(provided.result);
    EXPECT_EQ(provided.pages.size(), 1u);
    Destroy(provided.pages);
    EXPECT_FALSE(CvtPropPageProvider(nullptr, NeverAdd, 0));
}

TEST(BusProvider, ARefusedPageIsFreedOnce) {
    TestMachine test;
    test.machine.trace.Start();
    EXPECT_FALSE(test.CallBusProvider(true).result);
    EXPECT_EQ(test.machine.trace.Count("DestroyPropertySheetPage"), 1u);
}

TEST(BusProvider, AnyFailedCallLeavesNothingBehind) {
    for (std::uint64_t n = 1;; ++n) {
        ASSERT_LT(n, 100u) << "never ran clean";
        SCOPED_TRACE(n);
        TestMachine test;
        test.Attach();
        test.machine.faults.Mark();
        test.machine.faults.FailNth(n, false);
        test.user.Answer(IDOK);  // a page that can't be allocated is reported
        const auto provided = test.CallBusProvider();
        EXPECT_EQ(provided.pages.size(), provided.result ? 1u : 0u);
        Destroy(provided.pages);
        if (!test.machine.faults.Fired()) break;
    }
}

TEST(BusProvider, APageThatCannotBeAllocatedIsReported) {
    TestMachine test;
    test.Attach();
    test.machine.faults.FailCalls("operator new", u"", ERROR_NOT_ENOUGH_MEMORY);
    test.user.Answer(IDOK);
    EXPECT_FALSE(test.CallBusProvider().result);
    ASSERT_EQ(test.user.Boxes().size(), 1u);
    EXPECT_TRUE(test.user.Boxes()[0].text.starts_with(
        u"Failed to execute the command. This may occur due to insufficient memory.\r\nError "
        u"message:"));
    EXPECT_EQ(test.user.Boxes()[0].style, 0x2010u);
}

}  // namespace
