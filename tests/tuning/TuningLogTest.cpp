// The tuning log's file, its lines, and the values whose changes it tells.

#include "TuningLog.h"

#include "AdapterValues.h"
#include "TuningTest.h"

namespace {

TEST(TuningLog, IsUtf16WithAMarkAndCrLf) {
    TestMachine test;
    Logged(test, [](LogStream* log) {
        EXPECT_TRUE(LogLine(log, u"first"));
        EXPECT_TRUE(LogLine(log, u"blank behind\n"));
        log->Write(u"\n\n");
    });
    Logged(test, [](LogStream* log) { EXPECT_TRUE(LogLine(log, u"again")); });
    std::string bytes;
    for (const char16_t unit : std::u16string(u"\xFEFF"
                                              u"19-11-2026 8:05 : first\r\n"
                                              u"19-11-2026 8:05 : blank behind\r\n\r\n\r\n\r\n"
                                              u"19-11-2026 8:05 : again\r\n")) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    EXPECT_EQ(test.LogBytes(), bytes);
}

// C:\'s log as it was left, and with a line more.
TEST(TuningLog, GoesOnInTheEncodingOfItsMark) {
    const std::string utf8Line = "19-11-2026 8:05 : \xC3\xA9\xE4\xB8\x80\r\n";
    std::string utf16Line;
    for (const char16_t unit : std::u16string(u"19-11-2026 8:05 : \u00E9\u4E00\r\n"))
        utf16Line += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    const struct {
        std::string before, line;
    } cases[] = {
        {"\xEF\xBB\xBFold\r\n", utf8Line},
        {"\xEF\xBB\xBF", utf8Line},
        {"\xFF\xFEo", utf16Line},
        {"\xEF\xBB", utf16Line},
    };
    for (const auto& c : cases) {
        TestMachine test;
        test.machine.Get<platform::Drive>().WriteWholeFile(
            u"C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log", c.before);
        WCHAR path[kPathCapacity];
        LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
        EXPECT_TRUE(LogLine(&log, u"\u00E9\u4E00"));
        log.Close();
        EXPECT_EQ(test.LogBytes(), c.before + c.line);
    }
}

TEST(TuningLog, CutsATextThatItsBufferCannotHold) {
    TestMachine test;
    for (const std::size_t length : {258, 259, 260, 261}) {
        const std::u16string text(length, u'x');
        const Lines lines =
            Logged(test, [&](LogStream* log) { LogFormatted(log, u"%s", text.c_str()); });
        EXPECT_EQ(lines, Lines{std::string(std::min<std::size_t>(length, 259), 'x')});
    }
}

TEST(AdapterValues, LevelFollowsTheMinorVersion) {
    const struct {
        const char* version;
        int level;
    } cases[] = {{"5.2", 0}, {"6.0", 0},  {"6.1", 1}, {"6.2", 2},
                 {"6.3", 2}, {"10.0", 0}, {"10.1", 1}};
    for (const auto& c : cases) {
        TestMachine test(Sample().Version(c.version));
        EXPECT_EQ(GetOsTuningLevel(), c.level) << c.version;
    }
}

TEST(AdapterValues, AreTextWithTheirTerminator) {
    TestMachine test;
    const OpenPort port(1);
    SetAdapterKey(nullptr, port, value::kTxInterruptProcessor, -1);
    DWORD type = 0;
    DWORD size = 0;
    ASSERT_EQ(
        RegQueryValueExW(port.key.Get(), u"TxInterruptProcessor", nullptr, &type, nullptr, &size),
        ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(test.PortText(1, u"TxInterruptProcessor"), u"-1");
}

}  // namespace
