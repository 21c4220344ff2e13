#include "RegistryServices.h"

#include <vector>

#include "AutoClasses.h"
#include "Drive.h"
#include "Fixture.h"
#include "TestWindow.h"

namespace {

constexpr char kTestKey[] = "SOFTWARE\\Test";

TEST(ReadRegistryText, TakesWhateverAValueHolds) {
    const struct {
        const char* line;
        std::size_t capacity;  // characters
        DWORD limit;           // bytes
        LONG error;
        const char16_t* text;
        const char* reason;
    } rows[] = {
        {R"("v"="abc")", 10, 520, 0, u"abc", "an ordinary text"},
        {R"("v"="abc")", 4, 520, 0, u"abc", "it just fits the buffer"},
        {R"("v"="abc")", 3, 520, ERROR_MORE_DATA, u"", "longer than the buffer"},
        {R"("v"="abc")", 10, 7, ERROR_MORE_DATA, u"", "longer than the limit"},
        {R"("v"=hex(2):25,00,61,00,25,00,00,00)", 10, 520, 0, u"%a%", "expandable, not expanded"},
        {R"("v"=hex(1):61,00,62,00)", 3, 520, 0, u"ab", "no terminator, room for one"},
        {R"("v"=hex(1):61,00,62,00)", 2, 520, ERROR_MORE_DATA, u"", "no terminator, no room"},
        {R"("v"=hex(1):61,00,62,00,63)", 3, 520, ERROR_MORE_DATA, u"", "an odd last byte, no room"},
        {R"("v"=hex(1):)", 10, 520, 0, u"", "no data"},
        {R"("v"=hex(1):61,00,00,00,62,00,00,00)", 10, 520, 0, u"a", "text behind a terminator"},
        {R"("w"="abc")", 10, 520, ERROR_FILE_NOT_FOUND, u"", "absent"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test(Sample().With(kTestKey, row.line));
        ScopedRegKey key;
        ASSERT_EQ(
            RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(kTestKey).c_str(), 0, KEY_READ, key.Receive()),
            ERROR_SUCCESS);
        std::vector<WCHAR> buffer(row.capacity, u'x');
        EXPECT_EQ(ReadRegistryText(key.Get(), u"v", buffer.data(), buffer.size(), row.limit),
                  row.error);
        EXPECT_EQ(std::u16string(buffer.data()), row.text);
    }
}

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
