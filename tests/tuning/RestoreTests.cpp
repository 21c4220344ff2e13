// The restore puts every value back, by level, kind of port and role.

#include "RestoreDefaults.h"

#include "TuningTest.h"

namespace {

TEST(RestoreDefaults, WritesTheDefaultsOfEachLevelKindAndRole) {
    for (const int level : {0, 1, 2}) {
        for (const bool ethernet1 : {true, false}) {
            for (const bool ethernet2 : {true, false}) {
                SCOPED_TRACE(testing::Message() << level << ethernet1 << ethernet2);
                TestMachine test(Sample().Version(kVersionOfLevel[level]));
                const OpenPort first(1, ethernet1);
                const OpenPort second(2, ethernet2);
                {
                    OpenLog log;
                    RestoreTuningDefaults(&log.stream, &first, &second);
                }
                EXPECT_EQ(LogOf(test), Joined({{"Restore Tuning Defaults", ""},
                                               RestoreLines(1, true, ethernet1, level),
                                               RestoreLines(2, false, ethernet2, level)}));
            }
        }
    }
}

// Every value that some tuner writes is back at its default afterwards, or gone.
TEST(RestoreDefaults, UndoesWhatTunersWrote) {
    const struct {
        const char* name;
        const char* first;   // on an Ethernet port that is restored first
        const char* second;  // on an IPoIB port that is restored second
    } values[] = {
        {"TuningScenario", "-", "-"},
        {"DefaultRecvRingProcessor", "-1", "-1"},
        {"TxInterruptProcessor", "-1", "-1"},
        {"TxForwardingProcessor", "-1", "-1"},
        {"*ReceiveBuffers", "512", "512"},
        {"ForceDelayDropTimeoutMode", "0", "0"},
        {"UseRSSForRawIP", "-", "-"},
        {"UseRSSForUDP", "-", "-"},
        {"MaxNumTxPacketsToIndicateComplete", "-", "-"},
        {"UseSendFwQueue", "-", "-"},
        {"RxIntModerationProfile", "1", "77"},
        {"TxIntModerationProfile", "1", "77"},
        {"SendCompletionMethod", "-", "0"},
        {"RecvCompletionMethod", "1", "1"},
        {"*MaxRssProcessors", "8", "8"},
        {"*RssBaseProcNumber", "0", "0"},
        {"*NumRSSQueues", "8", "8"},
        {"*RssMaxProcNumber", "63", "63"},
        {"*RssProfile", "1", "1"},
        {"SingleStream", "0", "77"},
    };
    Sample sample = Sample().Ports(Sample::Kind::Ethernet, Sample::Kind::Ipoib);
    for (const auto& v : values)
        for (const int port : {1, 2})
            sample.PortValue(port, "\"" + std::string(v.name) + "\"=\"77\"");
    TestMachine test(sample);
    const OpenPort first(1, true);
    const OpenPort second(2, false);
    for (int time = 0; time < 2; ++time) {
        RestoreTuningDefaults(nullptr, &first, &second);
        for (const auto& v : values) {
            EXPECT_EQ(platform::ToUtf8(test.PortText(1, Wide(v.name))), v.first) << v.name;
            EXPECT_EQ(platform::ToUtf8(test.PortText(2, Wide(v.name))), v.second) << v.name;
        }
    }
    EXPECT_EQ(test.LogBytes(), "");
}

TEST(RestoreDefaults, SkipsAnAdapterThatIsNotThere) {
    TestMachine test;
    const OpenPort second(2);
    {
        OpenLog log;
        RestoreTuningDefaults(&log.stream, nullptr, &second);
    }
    EXPECT_EQ(LogOf(test),
              Joined({{"Restore Tuning Defaults", ""}, RestoreLines(2, false, true, 2)}));
}

TEST(RestoreDefaults, GoesOnWhenAWriteFails) {
    TestMachine test;
    const OpenPort first(1);
    test.machine.faults.FailCalls("RegSetValueExW", u"TxInterruptProcessor", ERROR_ACCESS_DENIED);
    {
        OpenLog log;
        RestoreTuningDefaults(&log.stream, &first, nullptr);
    }
    EXPECT_EQ(LogOf(test),
              Joined({{"Restore Tuning Defaults", ""}, RestoreLines(1, true, true, 2)}));
    EXPECT_EQ(test.PortText(1, u"TxInterruptProcessor"), u"-");
    EXPECT_EQ(test.PortText(1, u"SingleStream"), u"0");
}

}  // namespace
