#include "RegistryServices.h"

#include <vector>

#include "AutoClasses.h"
#include "Drive.h"
#include "Fixture.h"
#include "MachineFile.h"
#include "TestWindow.h"

namespace {

constexpr char kTestKey[] = "SOFTWARE\\Test";

void Forget(TestMachine& test, const std::string& key) {
    ASSERT_FALSE(platform::MergeMachineFile(
        test.machine,
        "Windows Registry Editor Version 5.00\n\n[-HKEY_LOCAL_MACHINE\\" + key + "]\n"));
}

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
        {R"("v"=hex(1):61,00,62,00,63)", 10, 520, 0, u"ab", "an odd last byte"},
        {R"("v"=hex(1):61)", 10, 520, 0, u"", "less than a character"},
        {R"("v"=hex(1):)", 10, 520, 0, u"", "no data"},
        {R"("v"=hex(1):61,00,00,00,62,00,00,00)", 10, 520, 0, u"a", "text behind a terminator"},
        {R"("v"=hex(7):61,00,00,00,00,00)", 10, 520, ERROR_UNSUPPORTED_TYPE, u"", "a list"},
        {R"("v"=dword:00610062)", 10, 520, ERROR_UNSUPPORTED_TYPE, u"", "a number"},
        {R"("v"=hex:61,00,00,00)", 10, 520, ERROR_UNSUPPORTED_TYPE, u"", "bytes"},
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

TEST(HklmValues, AreReadAsTheyStand) {
    TestMachine test(Sample().With(kTestKey, R"("v"=hex(1):61,00,62)"));
    BYTE buffer[4] = {};
    DWORD size = sizeof(buffer);
    EXPECT_TRUE(ReadHklmValue(u"SOFTWARE\\Test", u"v", buffer, &size));
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(buffer[2], 0x62);

    size = 2;
    EXPECT_FALSE(ReadHklmValue(u"SOFTWARE\\Test", u"v", buffer, &size));
    size = sizeof(buffer);
    EXPECT_FALSE(ReadHklmValue(u"SOFTWARE\\Test", u"w", buffer, &size));
    EXPECT_FALSE(ReadHklmValue(u"SOFTWARE\\Gone", u"v", buffer, &size));
}

TEST(HklmValues, AreWrittenWithTheSizeGiven) {
    TestMachine test(Sample().With(kTestKey, R"("other"="kept")"));
    test.Attach();
    EXPECT_TRUE(WriteHklmString(u"SOFTWARE\\Test", u"v", u"eth,ib", 12));
    EXPECT_EQ(test.Text(kTestKey, u"v"), u"eth,ib");
    BYTE stored[32];
    DWORD size = sizeof(stored);
    EXPECT_TRUE(ReadHklmValue(u"SOFTWARE\\Test", u"v", stored, &size));
    EXPECT_EQ(size, 12u);
}

TEST(HklmValues, AFailedWriteIsShown) {
    const struct {
        const char* call;
        const char16_t* argument;
        const char16_t* text;
    } rows[] = {
        {"RegOpenKeyExW", u"SOFTWARE\\Test",
         u"Failed to open registry key.\r\nError message: Access is denied.\r\n"},
        {"RegSetValueExW", u"v",
         u"Failed to set value to registry key.\r\nError message: Access is denied.\r\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        TestMachine test(Sample().With(kTestKey, R"("v"="before")"));
        test.Attach();
        test.machine.faults.FailCalls(row.call, row.argument, ERROR_ACCESS_DENIED);
        test.user.Answer(IDOK);
        EXPECT_FALSE(WriteHklmString(u"SOFTWARE\\Test", u"v", u"after", 12));
        ASSERT_EQ(test.user.Boxes().size(), 1u);
        EXPECT_EQ(test.user.Boxes()[0].text, row.text);
        EXPECT_EQ(test.Text(kTestKey, u"v"), u"before");
    }
}

TEST(MuxInstallDir, IsBelowTheInstalledPath) {
    TestMachine test;
    WCHAR directory[MAX_PATH];
    EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, nullptr), S_OK);
    EXPECT_EQ(std::u16string(directory), u"C:\\Program Files\\Corvanta\\Vlan_lbfo");
    // Room for the path, but not for what is appended.
    EXPECT_EQ(GetMuxInstallDir(directory, 30, nullptr), static_cast<HRESULT>(0x8007007A));
}

TEST(MuxInstallDir, AFailureIsGivenAndWithAnOwnerShown) {
    const struct {
        const char* missing;  // "key" or "value"
        DWORD error;
        const char16_t* text;
        UINT style;
    } rows[] = {
        {"key", ERROR_ACCESS_DENIED,
         u"Failed to open registry key.\r\nError message: Access is denied.\r\n", 0x2010},
        {"value", ERROR_FILE_NOT_FOUND, u"Failed to query InstalledPath from registry.", 16},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.missing);
        TestMachine test;
        test.Attach();
        if (row.missing == std::string("key"))
            test.machine.faults.FailCalls("RegOpenKeyExW", u"SOFTWARE\\Corvanta", row.error);
        else
            test.machine.faults.FailCalls("RegQueryValueExW", u"InstalledPath", row.error);

        WCHAR directory[MAX_PATH];
        const auto expected = static_cast<HRESULT>(0x80070000u | row.error);
        EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, nullptr), expected);
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
    const struct {
        std::vector<const char*> files;
        const char* path;  // InstalledPath
        bool present;
    } rows[] = {
        {{"muxp.inf", "mux_mp.inf"}, "C:\\\\Program Files\\\\Corvanta\\\\", true},
        {{"muxp.inf"}, "C:\\\\Program Files\\\\Corvanta\\\\", false},
        {{"mux_mp.inf"}, "C:\\\\Program Files\\\\Corvanta\\\\", false},
        {{}, "C:\\\\Program Files\\\\Corvanta\\\\", false},
        {{"muxp.inf", "mux_mp.inf"}, "C:\\\\Elsewhere\\\\", false},
    };
    for (const auto& row : rows) {
        TestMachine test(Sample().With("SOFTWARE\\Corvanta",
                                       std::string("\"InstalledPath\"=\"") + row.path + "\""));
        for (const char* file : row.files)
            test.machine.Get<platform::Drive>().WriteWholeFile(
                u"C:\\Program Files\\Corvanta\\Vlan_lbfo\\" + Wide(file), "");
        EXPECT_EQ(IsMuxPackagePresent(), row.present) << row.files.size() << " files, " << row.path;
    }
}

TEST(MuxPackage, APathThatDoesNotFitCountsAsAbsent) {
    // The directory just fits 260 characters, a file's path doesn't.
    const std::string path = "C:\\\\" + std::string(243, 'x') + "\\\\";
    TestMachine test(Sample().With("SOFTWARE\\Corvanta", "\"InstalledPath\"=\"" + path + "\""));
    WCHAR directory[MAX_PATH];
    EXPECT_EQ(GetMuxInstallDir(directory, MAX_PATH, nullptr), S_OK);
    EXPECT_FALSE(IsMuxPackagePresent());
}

TEST(MuxPackage, IsAbsentWithoutTheVendorKey) {
    TestMachine test;
    Forget(test, "SOFTWARE\\Corvanta");
    EXPECT_FALSE(IsMuxPackagePresent());
    EXPECT_TRUE(test.user.Boxes().empty());
}

TEST(MuxEntry, AValueCountsEvenWhenEmpty) {
    const std::string entry =
        "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\{A}";
    const struct {
        const char* line;  // null: no entry
        bool bindings;
        bool team;
        const char* reason;
    } rows[] = {
        {nullptr, false, false, "no entry"},
        {"", false, false, "an entry without values"},
        {R"("UpperBindings"=hex(7):)", true, false, "no data"},
        {R"("UpperBindings"=hex(7):5c,00,00,00,00,00)", true, false, "a binding"},
        {R"("TeamDeviceName"="")", false, true, "an empty team"},
        {R"("TeamDeviceName"="\\Device\\{B}")", false, true, "a team"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        Sample sample;
        if (row.line) sample.With(entry, row.line);
        TestMachine test(sample);
        EXPECT_EQ(HasUpperBindings(u"{A}"), row.bindings);
        EXPECT_EQ(HasTeamDeviceName(u"{A}"), row.team);
        EXPECT_FALSE(HasUpperBindings(std::u16string(300, u'x').c_str()));
    }
}

}  // namespace
