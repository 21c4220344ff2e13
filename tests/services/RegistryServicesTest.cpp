#include "RegistryServices.h"

#include <vector>

#include "Drive.h"
#include "Fixture.h"
#include "TestWindow.h"

namespace {

TEST(MuxInstallDir, AFailureIsGivenAndWithAnOwnerShown) {
    const struct {
        const char* call;
        const char16_t* argument;
        DWORD error;
        const char16_t* text;
    } rows[] = {
        {"RegOpenKeyExW", u"SOFTWARE\\Corvanta", ERROR_ACCESS_DENIED,
         u"Failed to open registry key.\r\nError message: Access is denied.\r\n"},
        {"RegQueryValueExW", u"InstalledPath", ERROR_FILE_NOT_FOUND,
         u"Failed to query InstalledPath from registry."},
    };
    for (const auto& row : rows) {
        TestMachine test;
        test.Attach();
        test.machine.faults.FailCalls(row.call, row.argument, row.error);
        const TestWindow owner(u"Static", 0);
        test.user.Answer(IDOK);
        for (const HWND window : {HWND{}, owner.Handle()}) {
            WCHAR directory[MAX_PATH];
            EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, window),
                      static_cast<HRESULT>(0x80070000u | row.error));
        }
        ASSERT_EQ(test.user.Boxes().size(), 1u);
        EXPECT_EQ(test.user.Boxes()[0].text, row.text);
    }
}

TEST(MuxPackage, IsPresentWithBothFiles) {
    const std::vector<const char*> rows[] = {
        {"muxp.inf", "mux_mp.inf"}, {"muxp.inf"}, {"mux_mp.inf"}};
    for (const auto& files : rows) {
        TestMachine test;
        for (const char* file : files)
            test.machine.Get<platform::Drive>().WriteWholeFile(
                u"C:\\Program Files\\Corvanta\\Vlan_lbfo\\" + Wide(file), "");
        EXPECT_EQ(IsMuxPackagePresent(), files.size() == 2) << files.front();
    }
    TestMachine test;
    WCHAR directory[MAX_PATH];
    EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, nullptr), S_OK);
    EXPECT_EQ(std::u16string(directory), u"C:\\Program Files\\Corvanta\\Vlan_lbfo");
    // Room for the path, but not for what is appended.
    EXPECT_EQ(GetMuxInstallDir(directory, 30, nullptr), static_cast<HRESULT>(0x8007007A));
}

}  // namespace
