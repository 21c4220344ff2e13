// The tuning log's file, its lines, and the values whose changes it tells.

#include "TuningLog.h"

#include "AdapterValues.h"
#include "TuningTest.h"

namespace {

std::string Utf16(const std::u16string& text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

TEST(TuningLog, IsUtf16WithAMarkAndCrLf) {
    TestMachine test;
    {
        OpenLog log;
        EXPECT_EQ(std::u16string(log.path),
                  u"C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log");
        EXPECT_TRUE(LogLine(&log.stream, u"first"));
        EXPECT_TRUE(LogLine(&log.stream, u"blank behind\n"));
        log.stream.Write(u"\n\n");
    }
    const std::u16string once =
        u"\xFEFF"
        u"19-11-2026 8:05 : first\r\n"
        u"19-11-2026 8:05 : blank behind\r\n\r\n\r\n\r\n";
    EXPECT_EQ(test.LogBytes(), Utf16(once));
    {
        OpenLog log;
        EXPECT_TRUE(LogLine(&log.stream, u"again"));
    }
    EXPECT_EQ(test.LogBytes(), Utf16(once + u"19-11-2026 8:05 : again\r\n")) << "one mark only";
}

TEST(TuningLog, CutsLongTexts) {
    TestMachine test;
    const std::u16string longText(400, u'x');
    {
        OpenLog log;
        LogFormatted(&log.stream, u"%s\n", longText.c_str());
    }
    EXPECT_EQ(LogOf(test), Lines({std::string(259, 'x')}));
}

TEST(TuningLog, FailsToOpenOnlyWhenItCantBeHad) {
    const struct {
        const char* call;
        DWORD error;
        bool opens;
    } cases[] = {
        {"GetWindowsDirectoryW", ERROR_GEN_FAILURE, false},
        {"CreateDirectoryW", ERROR_ACCESS_DENIED, false},
        {"CreateDirectoryW", ERROR_ALREADY_EXISTS, true},
        {"CreateFileW", ERROR_SHARING_VIOLATION, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        TestMachine test;
        { OpenLog log; }  // makes the directory
        test.machine.faults.FailCalls(c.call, u"", c.error);
        WCHAR path[kPathCapacity];
        EXPECT_EQ(static_cast<bool>(OpenTuningLog(path, ARRAYSIZE(path))), c.opens);
    }
    TestMachine test;
    WCHAR small_[20];
    EXPECT_FALSE(GetLogFileName(small_, ARRAYSIZE(small_)));
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
    SetAdapterKey(nullptr, port, value::kTxForwardingProcessor, 128);
    DWORD type = 0;
    DWORD size = 0;
    ASSERT_EQ(
        RegQueryValueExW(port.key.Get(), u"TxInterruptProcessor", nullptr, &type, nullptr, &size),
        ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(test.PortText(1, u"TxInterruptProcessor"), u"-1");
    EXPECT_EQ(test.PortText(1, u"TxForwardingProcessor"), u"128");
}

TEST(AdapterValues, DeletingWhatIsNotThereIsLogged) {
    TestMachine test;
    const OpenPort port(2);
    {
        OpenLog log;
        DeleteAdapterKey(&log.stream, port, value::kUseRssForUdp);
    }
    EXPECT_EQ(LogOf(test), Lines({"Deleting adapter 2 key UseRSSForUDP"}));
}

}  // namespace
