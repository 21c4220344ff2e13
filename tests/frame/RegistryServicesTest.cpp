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
        {R"("v"="abc")", 10, 8, 0, u"abc", "it just fits the limit"},
        {R"("v"="abc")", 3, 520, ERROR_MORE_DATA, u"", "longer than the buffer"},
        {R"("v"="abc")", 10, 7, ERROR_MORE_DATA, u"", "longer than the limit"},
        {R"("v"=hex(2):25,00,61,00,25,00,00,00)", 10, 520, 0, u"%a%", "expandable, not expanded"},
        {R"("v"=hex(1):61,00,62,00)", 3, 520, 0, u"ab", "no terminator, room for one"},
        {R"("v"=hex(1):61,00,62,00)", 10, 4, 0, u"ab", "no terminator, as long as the limit"},
        {R"("v"=hex(1):61,00,62,00)", 2, 520, ERROR_MORE_DATA, u"", "no terminator, no room"},
        {R"("v"=hex(1):61,00,62,00,63)", 10, 520, 0, u"abc", "an odd last byte"},
        {R"("v"=hex(1):61,00,62,00,63)", 3, 520, ERROR_MORE_DATA, u"", "an odd last byte, no room"},
        {R"("v"=hex(1):)", 10, 520, 0, u"", "no data"},
        {R"("v"=hex(1):61,00,00,00,62,00,00,00)", 10, 520, 0, u"a", "text behind a terminator"},
        {R"("v"=hex(7):61,00,00,00,00,00)", 10, 520, 0, u"a", "a list"},
        {R"("v"=dword:00610062)", 10, 520, 0, u"ba", "a number"},
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

TEST(WriteHklmString, SaysWhetherItWrote) {
    for (const char* call : {"RegOpenKeyExW", "RegSetValueExW"}) {
        TestMachine test(Sample().With(kTestKey, ""));
        test.Attach();
        EXPECT_TRUE(WriteHklmString(u"SOFTWARE\\Test", u"v", u"eth,ib", 12));
        test.machine.faults.FailCalls(call, u"", ERROR_ACCESS_DENIED);
        test.user.Answer(IDOK);
        EXPECT_FALSE(WriteHklmString(u"SOFTWARE\\Test", u"v", u"ib", 4));
        EXPECT_EQ(test.Text(kTestKey, u"v"), u"eth,ib");
    }
}

TEST(MuxInstallDir, AFailureIsGivenAndWithAnOwnerShown) {
    const struct {
        const char* call;
        const char16_t* argument;
        DWORD error;
        const char16_t* text;
        UINT style;
    } rows[] = {
        {"RegOpenKeyExW", u"SOFTWARE\\Corvanta", ERROR_ACCESS_DENIED,
         u"Failed to open registry key.\r\nError message: Access is denied.\r\n", 0x2010},
        {"RegQueryValueExW", u"InstalledPath", ERROR_FILE_NOT_FOUND,
         u"Failed to query InstalledPath from registry.", 16},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        TestMachine test;
        test.Attach();
        test.machine.faults.FailCalls(row.call, row.argument, row.error);
        WCHAR directory[MAX_PATH];
        const auto expected = static_cast<HRESULT>(0x80070000u | row.error);
        EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, nullptr), expected);
        EXPECT_FALSE(IsMuxPackagePresent());
        EXPECT_TRUE(test.user.Boxes().empty());

        const TestWindow owner(u"Static", 0);
        test.user.Answer(IDOK);
        EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, owner.Handle()), expected);
        ASSERT_EQ(test.user.Boxes().size(), 1u);
        EXPECT_EQ(test.user.Boxes()[0].caption, u"Error");
        EXPECT_EQ(test.user.Boxes()[0].text, row.text);
        EXPECT_EQ(test.user.Boxes()[0].style, row.style);
    }
}

TEST(MuxPackage, IsPresentWithBothFiles) {
    const std::string installed = "C:\\\\Program Files\\\\Corvanta\\\\";
    const struct {
        std::vector<const char*> files;
        std::string path;  // InstalledPath, as a machine file has it
        bool present;
    } rows[] = {
        {{"muxp.inf", "mux_mp.inf"}, installed, true},
        {{"muxp.inf"}, installed, false},
        {{"mux_mp.inf"}, installed, false},
        {{}, installed, false},
        {{"muxp.inf", "mux_mp.inf"}, "C:\\\\Elsewhere\\\\", false},
        // The directory just fits 260 characters, a file's path doesn't.
        {{}, "C:\\\\" + std::string(243, 'x') + "\\\\", false},
    };
    for (const auto& row : rows) {
        TestMachine test(
            Sample().With("SOFTWARE\\Corvanta", "\"InstalledPath\"=\"" + row.path + "\""));
        for (const char* file : row.files)
            test.machine.Get<platform::Drive>().WriteWholeFile(
                u"C:\\Program Files\\Corvanta\\Vlan_lbfo\\" + Wide(file), "");
        EXPECT_EQ(IsMuxPackagePresent(), row.present) << row.files.size() << " files, " << row.path;
    }
    TestMachine test;
    WCHAR directory[MAX_PATH];
    EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, nullptr), S_OK);
    EXPECT_EQ(std::u16string(directory), u"C:\\Program Files\\Corvanta\\Vlan_lbfo");
    // Room for the path, but not for what is appended.
    EXPECT_EQ(GetMuxInstallDir(directory, 30, nullptr), static_cast<HRESULT>(0x8007007A));
}

}  // namespace
