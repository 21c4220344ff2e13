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
