// Modules: when their entry point runs, and when it is over with them.

#include "DesktopMachine.h"

namespace {

// An image that notes how often its entry point was called with which reason.
std::vector<DWORD> g_reasons;
BOOL g_attaches = TRUE;
BOOL WINAPI Entry(HINSTANCE, DWORD reason, LPVOID) {
    g_reasons.push_back(reason);
    return reason != DLL_PROCESS_ATTACH || g_attaches;
}

class ModulesTest : public testing::Test {
  protected:
    ModulesTest() {
        g_reasons.clear();
        g_attaches = TRUE;
        desktop.machine.Get<platform::Modules>().Install({u"Counted.dll", &Entry, {}, {}});
    }
    DesktopMachine desktop;
};

TEST_F(ModulesTest, EntryRunsForTheFirstAndTheLastReference) {
    const HMODULE first = LoadLibraryW(TEXT("counted"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(LoadLibraryW(TEXT("C:\\Windows\\COUNTED.DLL")), first);
    EXPECT_EQ(GetModuleHandleW(TEXT("Counted.dll")), first);
    EXPECT_EQ(ErrorOf(GetProcAddress(first, "exported")), ERROR_PROC_NOT_FOUND);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(g_reasons, std::vector<DWORD>{DLL_PROCESS_ATTACH});
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(g_reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
    EXPECT_FALSE(FreeLibrary(first));
    EXPECT_EQ(GetModuleHandleW(TEXT("Counted.dll")), nullptr);
}

TEST_F(ModulesTest, LoadFailsWithoutALeftover) {
    g_attaches = FALSE;
    EXPECT_EQ(ErrorOf(LoadLibraryW(TEXT("Counted.dll"))), ERROR_DLL_INIT_FAILED);
    EXPECT_EQ(GetModuleHandleW(TEXT("Counted.dll")), nullptr);
    EXPECT_EQ(ErrorOf(LoadLibraryW(TEXT("missing.dll"))), ERROR_MOD_NOT_FOUND);
    g_attaches = TRUE;
    desktop.machine.faults.FailCalls("LoadLibraryW", u"counted.DLL", ERROR_ACCESS_DENIED);
    EXPECT_EQ(ErrorOf(LoadLibraryW(TEXT("Counted.dll"))), ERROR_ACCESS_DENIED);
}

}  // namespace
