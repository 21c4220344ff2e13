// Resources of modules, and the modules themselves.

#include "DesktopMachine.h"

namespace {

TEST(Resources, StringsAreFoundByTheirBlock) {
    Bytes block;  // of 16 strings, as counted texts
    for (const std::u16string_view text : {u"", u"one", u"%1%n", u"", u"", u"", u"", u"", u"", u"",
                                           u"", u"", u"", u"", u"", u"the last"}) {
        block.Word(static_cast<unsigned>(text.size()));
        for (const char16_t unit : text)
            block.Word(unit);
    }
    const DesktopMachine desktop(
        ResourceFile().Add(Bytes().Ordinal(6), Bytes().Ordinal(7), block.data));
    const struct {
        UINT id;
        int capacity, copied;
        std::u16string text;
    } cases[] = {
        {97, 16, 3, u"one"},       {97, 3, 2, u"on"},       {96, 16, 0, u"before"},
        {111, 64, 8, u"the last"}, {112, 16, 0, u"before"},
    };
    for (const auto& c : cases) {
        WCHAR text[64] = TEXT("before");
        EXPECT_EQ(LoadStringW(desktop.module, c.id, text, c.capacity), c.copied) << c.id;
        EXPECT_EQ(std::u16string(text), c.text) << c.id;
    }
}

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
