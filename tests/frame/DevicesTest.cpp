#include "Devices.h"

#include "Fixture.h"

namespace {

bool Restart(const TestMachine& test, int port) {
    return RestartDevice(Wide(test.sample.InstanceId(port)).c_str());
}

TEST(RestartDevice, RestartsThatDeviceOnly) {
    TestMachine test;
    EXPECT_TRUE(Restart(test, 2));
    EXPECT_FALSE(RestartDevice(u"CVTA\\ETH_PORT\\GONE"));
    EXPECT_FALSE(RestartDevice(u""));
    EXPECT_EQ(test.Restarts(1), 0u);
    EXPECT_EQ(test.Restarts(2), 1u);
}

TEST(RestartDevice, AFailedStepDecidesTheResult) {
    const struct {
        const char* call;
        std::uint64_t which;  // of the calls of that name
        bool result;
        std::size_t installerCalls;
        const char* reason;
    } rows[] = {
        {"SetupDiCreateDeviceInfoListExW", 1, false, 0, "no list"},
        {"SetupDiOpenDeviceInfoW", 1, false, 0, "no device in the list"},
        {"SetupDiGetDeviceInfoListDetailW", 1, false, 0, "no detail of the list"},
        {"SetupDiEnumDeviceInfo", 1, false, 0, "no first device"},
        {"SetupDiSetClassInstallParamsW", 1, false, 0, "disabling isn't prepared"},
        {"SetupDiCallClassInstaller", 1, false, 1, "disabling fails: nothing is enabled"},
        {"SetupDiSetClassInstallParamsW", 2, true, 2, "the global enabling doesn't count"},
        {"SetupDiCallClassInstaller", 2, true, 3, "the global enabling doesn't count"},
        {"SetupDiSetClassInstallParamsW", 3, false, 2, "the profile's enabling counts"},
        {"SetupDiCallClassInstaller", 3, false, 3, "the profile's enabling counts"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test;
        test.machine.trace.Start();
        test.machine.faults.FailCalls(row.call, u"", ERROR_ACCESS_DENIED, row.which, 1);
        EXPECT_EQ(Restart(test, 1), row.result);
        EXPECT_EQ(test.machine.trace.Count("SetupDiCallClassInstaller"), row.installerCalls);
        EXPECT_TRUE(test.user.Boxes().empty());
    }
}

}  // namespace
