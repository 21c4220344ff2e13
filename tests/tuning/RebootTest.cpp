// The right to shut down, and the reboot that is tried with it or without.

#include "Reboot.h"

#include "TuningTest.h"

namespace {

TEST(Reboot, IsTriedWhateverBecomesOfThePrivilege) {
    const struct {
        const char* failing;
        DWORD error;
        bool enabled;
        std::size_t steps;  // of three
    } cases[] = {
        {"", 0, true, 3},
        {"LookupPrivilegeValueW", ERROR_NO_SUCH_PRIVILEGE, false, 1},
        {"OpenProcessToken", ERROR_ACCESS_DENIED, false, 2},
        {"AdjustTokenPrivileges", ERROR_ACCESS_DENIED, false, 3},
        {"AdjustTokenPrivileges", ERROR_NOT_ALL_ASSIGNED, false, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.failing << " " << c.error);
        TestMachine test;
        test.machine.faults.FailCalls(c.failing, u"", c.error);
        test.machine.trace.Start();
        EXPECT_EQ(EnableShutdownPrivilege(), c.enabled);
        std::size_t steps = 0;
        for (const char* step :
             {"LookupPrivilegeValueW", "OpenProcessToken", "AdjustTokenPrivileges"})
            steps += test.machine.trace.Count(step);
        EXPECT_EQ(steps, c.steps);
        test.user.Answer(IDYES);
        AskReboot(nullptr);
        EXPECT_EQ(test.machine.trace.Count("ExitWindowsEx"), 1u);
        EXPECT_EQ(test.Reboots(), c.enabled);
    }
}

}  // namespace
