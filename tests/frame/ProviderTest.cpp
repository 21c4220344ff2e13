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
        bool list, device;
        const char* reason;
    } rows[] = {
        {SPPSR_ENUM_BASIC_DEVICE_PROPERTIES, true, true, "basic properties"},
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
    const Sample miniport =
        Sample()
            .With("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters", "")
            .With(
                "SYSTEM\\CurrentControlSet\\Enum\\" + Sample::InstanceId(1, Sample::Kind::Ethernet),
                R"("Service"="MUXMP")");
    for (const bool physical : {true, false}) {
        TestMachine test(physical ? Sample() : miniport);
        const auto provided = test.CallProvider();
        EXPECT_TRUE(provided.result);
        EXPECT_EQ(provided.pages.size(), physical ? kPhysicalTabs : 0u);
        Destroy(provided.pages);
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

TEST(BusProvider, HandsItsPageOver) {
    TestMachine test;
    const auto provided = test.CallBusProvider();
    EXPECT_TRUE(provided.result);
    EXPECT_EQ(provided.pages.size(), 1u);
    Destroy(provided.pages);
    EXPECT_FALSE(CvtPropPageProvider(nullptr, NeverAdd, 0));

    test.machine.trace.Start();
    EXPECT_FALSE(test.CallBusProvider(true).result);
    EXPECT_EQ(test.machine.trace.Count("DestroyPropertySheetPage"), 1u) << "a refused page";
}

}  // namespace
