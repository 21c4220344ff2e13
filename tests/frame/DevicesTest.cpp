#include "Devices.h"

#include "Fixture.h"

namespace {

TEST(RestartDevice, SaysWhetherTheDeviceRuns) {
    const struct {
        const char* call;
        std::uint64_t which;  // of the calls of that name
        bool result;
        std::size_t installerCalls;
        const char* reason;
    } rows[] = {
        {"", 0, true, 3, "no failure"},
        {"SetupDiOpenDeviceInfoW", 1, false, 0, "no such device"},
        {"SetupDiCallClassInstaller", 1, false, 1, "disabling fails: nothing is enabled"},
        {"SetupDiCallClassInstaller", 2, true, 3, "the global enabling doesn't count"},
        {"SetupDiCallClassInstaller", 3, false, 3, "the profile's enabling counts"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test;
        test.machine.trace.Start();
        test.machine.faults.FailCalls(row.call, u"", ERROR_ACCESS_DENIED, row.which, 1);
        EXPECT_EQ(RestartDevice(Wide(test.sample.InstanceId(2)).c_str()), row.result);
        EXPECT_EQ(test.machine.trace.Count("SetupDiCallClassInstaller"), row.installerCalls);
        EXPECT_EQ(test.Restarts(1), 0u);
    }
}

}  // namespace
