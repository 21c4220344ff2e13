// The tuners write the right numbers, in the right order, for every size of a node.

#include "Tuners.h"

#include "TuningTest.h"

namespace {

constexpr char kSingleCore[] = "Tuning for single core CPUs is not supported, aborting.";

// Row(c)'s processor i.
constexpr int P(int i) {
    return 10 + i;
}

// Which of a node's processors a tuner of one port uses, for nodes of `count`.
struct Share {
    int count;     // of the node
    int used;      // n
    int transmit;  // t
    int lastRss;   // m
};

class EveryLevel : public testing::TestWithParam<int> {
  protected:
    int level = GetParam();
    TestMachine test{Sample().Version(kVersionOfLevel[GetParam()])};
};

INSTANTIATE_TEST_SUITE_P(Tuners, EveryLevel, testing::Values(0, 1, 2));

using Tuner = bool (*)(LogStream*, const TuningAdapter*, const NumaNodeRow*);

// Runs the tuner on port 1 and checks lines and values.
void ExpectTuned(TestMachine& test, int level, Tuner tune, int count,
                 const std::vector<Setting>& settings, bool ethernet = true) {
    SCOPED_TRACE(count);
    const std::size_t before = test.LogLines().size();
    const OpenPort port(1, ethernet);
    const NumaNodeRow row = Row(count);
    {
        OpenLog log;
        EXPECT_TRUE(tune(&log.stream, &port, &row));
    }
    Lines expected;
    AddSettings(expected, 1, level, settings);
    EXPECT_EQ(LogOf(test, before), expected);
    ExpectStored(test, 1, level, settings);
}

TEST_P(EveryLevel, SinglePortUsesUpToEightFromTheBase) {
    for (int count = 2; count <= 16; ++count) {
        const int n = count < 8 ? count : 8;
        ExpectTuned(test, level,
                    [](LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
                        return TuneSinglePort(log, adapter, row, UsableProcessors(row), 0);
                    },
                    count,
                    {{"TuningScenario", 1086},
                     {"DefaultRecvRingProcessor", P(0)},
                     {"TxForwardingProcessor", P(n - 1)},
                     {"*MaxRssProcessors", n, 1},
                     {"*RssBaseProcNumber", P(0), 1},
                     {"*RssProfile", 4, 2},
                     {"*NumRSSQueues", n, 2},
                     {"*RssMaxProcNumber", P(n - 1), 2}});
        EXPECT_EQ(test.PortText(1, u"TxInterruptProcessor"), u"-");
    }
}

TEST_P(EveryLevel, SingleStreamLeavesTheLastTwoToTransmitWork) {
    const Share shares[] = {
        {2, 2, 1, 1}, {3, 3, 1, 1}, {4, 4, 2, 1}, {5, 5, 3, 2},  {6, 6, 4, 3},
        {7, 7, 5, 4}, {8, 8, 6, 5}, {9, 8, 6, 5}, {16, 8, 6, 5},
    };
    for (const bool ethernet : {true, false}) {
        if (!ethernet) {
            const OpenPort port(1);
            RegDeleteValueW(port.key.Get(), u"SingleStream");
        }
        for (const Share& s : shares) {
            std::vector<Setting> settings;
            if (ethernet) settings.push_back({"SingleStream", 1});
            settings.insert(settings.end(), {{"TuningScenario", 1098},
                                             {"DefaultRecvRingProcessor", P(0)},
                                             {"TxInterruptProcessor", P(s.transmit)},
                                             {"TxForwardingProcessor", P(s.used - 1)},
                                             {"*MaxRssProcessors", s.lastRss + 1, 1},
                                             {"*RssBaseProcNumber", P(0), 1},
                                             {"*RssProfile", 4, 2},
                                             {"*NumRSSQueues", s.lastRss + 1, 2},
                                             {"*RssMaxProcNumber", P(s.lastRss), 2}});
            ExpectTuned(test, level, TuneSingleStream, s.count, settings, ethernet);
        }
        if (!ethernet) {
            EXPECT_EQ(test.PortText(1, u"SingleStream"), u"-");
        }
    }
}

TEST_P(EveryLevel, ForwardingOnOnePort) {
    const Share shares[] = {
        {2, 2, 0, 0}, {3, 3, 1, 0}, {4, 4, 2, 1}, {5, 5, 3, 2},  {6, 6, 4, 3},
        {7, 7, 5, 4}, {8, 8, 6, 5}, {9, 8, 6, 5}, {16, 8, 6, 5},
    };
    for (const Share& s : shares)
        ExpectTuned(test, level, TuneForwarding, s.count,
                    {{"*ReceiveBuffers", 4096},
                     {"UseRSSForUDP", 0},
                     {"UseRSSForRawIP", 0},
                     {"RxIntModerationProfile", 0},
                     {"TxIntModerationProfile", 0},
                     {"MaxNumTxPacketsToIndicateComplete", 8},
                     {"TuningScenario", 1088},
                     {"ForceDelayDropTimeoutMode", 1},
                     {"UseSendFwQueue", 1},
                     {"DefaultRecvRingProcessor", P(0)},
                     {"TxInterruptProcessor", P(s.transmit)},
                     {"TxForwardingProcessor", P(s.used - 1)},
                     {"*MaxRssProcessors", s.lastRss + 1, 1},
                     {"*RssBaseProcNumber", P(0), 1},
                     {"*RssProfile", 4, 2},
                     {"*NumRSSQueues", s.lastRss + 1, 2},
                     {"*RssMaxProcNumber", P(s.lastRss), 2}});
}

TEST_P(EveryLevel, MulticastTransmitsFromTheThirdProcessor) {
    for (int count = 2; count <= 16; ++count) {
        const int n = count < 8 ? count : 8;
        ExpectTuned(test, level, TuneMulticast, count,
                    {{"*ReceiveBuffers", 4096},
                     {"TuningScenario", 1096},
                     {"DefaultRecvRingProcessor", P(0)},
                     {"TxForwardingProcessor", count == 2 ? P(1) : P(2)},
                     {"*MaxRssProcessors", n, 1},
                     {"*RssBaseProcNumber", P(0), 1},
                     {"*RssProfile", 4, 2},
                     {"*NumRSSQueues", n, 2},
                     {"*RssMaxProcNumber", P(n - 1), 2}});
    }
}

// What a port of a dual run gets: `count` processors from `first` on.
std::vector<Setting> SinglePortSettings(int first, int count) {
    return {{"TuningScenario", 1086},
            {"DefaultRecvRingProcessor", first},
            {"TxForwardingProcessor", first + count - 1},
            {"*MaxRssProcessors", count, 1},
            {"*RssBaseProcNumber", first, 1},
            {"*RssProfile", 4, 2},
            {"*NumRSSQueues", count, 2},
            {"*RssMaxProcNumber", first + count - 1, 2}};
}

TEST_P(EveryLevel, DualPortSplitsANodeOrTakesTwo) {
    constexpr int kOther = 100;  // first processor of the second row
    const struct {
        int row1;
        int row2;  // 0: none
        int first1, count1, first2, count2;
        const char* reason;
    } cases[] = {
        {4, 0, P(0), 2, P(2), 2, "the smallest node to share"},
        {5, 0, P(0), 2, P(2), 2, "the odd one stays unused"},
        {8, 0, P(0), 4, P(4), 4, "half each"},
        {16, 0, P(0), 8, P(8), 8, "the cap"},
        {40, 0, P(0), 8, P(8), 8, "shares above the cap still adjoin"},
        {8, 8, P(0), 8, kOther, 8, "a node each"},
        {3, 12, P(0), 3, kOther, 8, "nodes of different size"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const std::size_t before = test.LogLines().size();
        const OpenPort first(1);
        const OpenPort second(2);
        const NumaNodeRow row1 = Row(c.row1);
        const NumaNodeRow row2 = Row(c.row2, kOther);
        {
            OpenLog log;
            EXPECT_TRUE(
                TuneDualPort(&log.stream, &first, &second, &row1, c.row2 ? &row2 : nullptr));
        }
        Lines expected;
        AddSettings(expected, 1, level, SinglePortSettings(c.first1, c.count1));
        AddSettings(expected, 2, level, SinglePortSettings(c.first2, c.count2));
        AddSettings(expected, 1, level, {{"TuningScenario", 1087}});
        AddSettings(expected, 2, level, {{"TuningScenario", 1087}});
        EXPECT_EQ(LogOf(test, before), expected);
        EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"1087");
        EXPECT_EQ(test.PortText(2, u"TuningScenario"), u"1087");
    }
}

const std::vector<Setting> kSharedForwarding = {
    {"*ReceiveBuffers", 4096},     {"UseRSSForRawIP", 0},
    {"UseRSSForUDP", 0},           {"RxIntModerationProfile", 0},
    {"TxIntModerationProfile", 0}, {"MaxNumTxPacketsToIndicateComplete", 8},
    {"TuningScenario", 1088},      {"ForceDelayDropTimeoutMode", 1},
    {"UseSendFwQueue", 1},
};

TEST_P(EveryLevel, ForwardingOnTwoPortsSharesALargeNode) {
    const struct {
        int h, q, interrupt, transmit, lastRss;
    } halves[] = {
        {2, 1, 1, 1, 0}, {3, 1, 1, 2, 0}, {4, 2, 2, 3, 1}, {5, 3, 3, 4, 2},
        {6, 4, 4, 5, 3}, {7, 5, 5, 6, 4}, {8, 6, 6, 7, 5},
    };
    for (const auto& s : halves) {
        for (const bool odd : {false, true}) {
            for (const bool withSecondRow : {false, true}) {
                const int count = 2 * s.h + odd;
                if (withSecondRow && count < 6) continue;
                SCOPED_TRACE(testing::Message() << count << " processors, " << withSecondRow);
                const std::size_t before = test.LogLines().size();
                const OpenPort first(1);
                const OpenPort second(2);
                const NumaNodeRow row1 = Row(count);
                const NumaNodeRow row2 = Row(8, 100);
                {
                    OpenLog log;
                    EXPECT_TRUE(TuneForwardingDualPort(&log.stream, &first, &second, &row1,
                                                       withSecondRow ? &row2 : nullptr));
                }
                const auto processors = [&](int base) {
                    return std::vector<Setting>{{"DefaultRecvRingProcessor", P(base)},
                                                {"TxInterruptProcessor", P(base + s.interrupt)},
                                                {"TxForwardingProcessor", P(base + s.transmit)}};
                };
                const auto rss = [&](int base) {
                    return std::vector<Setting>{{"*MaxRssProcessors", s.q, 1},
                                                {"*RssBaseProcNumber", P(base), 1}};
                };
                const auto queues = [&](int base) {
                    return std::vector<Setting>{{"*RssProfile", 4, 2},
                                                {"*NumRSSQueues", s.q, 2},
                                                {"*RssMaxProcNumber", P(base + s.lastRss), 2}};
                };
                Lines expected;
                AddSettings(expected, 1, level, kSharedForwarding);
                AddSettings(expected, 2, level, kSharedForwarding);
                AddSettings(expected, 1, level, processors(0));
                AddSettings(expected, 2, level, processors(s.h));
                AddSettings(expected, 1, level, rss(0));
                AddSettings(expected, 2, level, rss(s.h));
                AddSettings(expected, 1, level, queues(0));
                AddSettings(expected, 2, level, queues(s.h));
                EXPECT_EQ(LogOf(test, before), expected);
                ExpectStored(test, 2, level, queues(s.h));
            }
        }
    }
}

TEST(Tuners, ForwardingOnTwoPortsTunesEachAloneOnASmallNode) {
    const struct {
        int row1;
        int row2;  // 0: none
        int receive2, interrupt2;
        const char* reason;
    } cases[] = {
        {3, 0, P(0), P(1), "both name the same three processors"},
        {2, 0, P(0), P(0), "both share two"},
        {5, 4, 100, 102, "too few to share, so each on its own row"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test;
        const OpenPort first(1);
        const OpenPort second(2);
        const NumaNodeRow row1 = Row(c.row1);
        const NumaNodeRow row2 = Row(c.row2, 100);
        EXPECT_TRUE(
            TuneForwardingDualPort(nullptr, &first, &second, &row1, c.row2 ? &row2 : nullptr));
        ExpectStored(test, 1, 2, {{"DefaultRecvRingProcessor", P(0)}, {"UseSendFwQueue", 1}});
        ExpectStored(
            test, 2, 2,
            {{"DefaultRecvRingProcessor", c.receive2}, {"TxInterruptProcessor", c.interrupt2}});
        EXPECT_EQ(test.LogBytes(), "") << "no log was given";
    }
}

TEST(Tuners, RefuseWhatTheyCantTune) {
    const Lines kNoRow = {"Failed to retrieve Numa's information, Invalid input."};
    const Lines kNoAdapter = {"Failed to retrieve Adapter's information, Invalid input."};
    const Lines kOneCore = {kSingleCore};
    const NumaNodeRow one = Row(1);
    const NumaNodeRow eight = Row(8);
    for (const Tuner tune : {TuneSingleStream, TuneForwarding, TuneMulticast, CheckTuningInput}) {
        const struct {
            const NumaNodeRow* row;
            bool adapter;
            const Lines& expected;
        } cases[] = {
            {nullptr, true, kNoRow},
            {nullptr, false, kNoRow},
            {&eight, false, kNoAdapter},
            {&one, true, kOneCore},
        };
        for (const auto& c : cases) {
            TestMachine test;
            const OpenPort port(1);
            {
                OpenLog log;
                EXPECT_FALSE(tune(&log.stream, c.adapter ? &port : nullptr, c.row));
            }
            EXPECT_EQ(LogOf(test), c.expected);
            EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"-");
            EXPECT_EQ(test.PortText(1, u"SingleStream"), u"-");
        }
    }
}

TEST(Tuners, ADualRunStoresItsScenarioEvenWhenAPortIsRefused) {
    const Lines stored = {"Setting adapter 1 key TuningScenario to 1087",
                          "Setting adapter 2 key TuningScenario to 1087"};
    for (const int count : {2, 3}) {
        TestMachine test;
        const OpenPort first(1);
        const OpenPort second(2);
        const NumaNodeRow row = Row(count);
        {
            OpenLog log;
            EXPECT_FALSE(TuneDualPort(&log.stream, &first, &second, &row, nullptr));
        }
        EXPECT_EQ(LogOf(test), Joined({{kSingleCore, "Restore Tuning Defaults", ""},
                                       RestoreLines(1, true, true, 2),
                                       stored}));
    }
    TestMachine test;
    const OpenPort first(1);
    const OpenPort second(2);
    const NumaNodeRow row1 = Row(4);
    const NumaNodeRow row2 = Row(1, 100);
    {
        OpenLog log;
        EXPECT_FALSE(TuneDualPort(&log.stream, &first, &second, &row1, &row2));
    }
    Lines expected;
    AddSettings(expected, 1, 2, SinglePortSettings(P(0), 4));
    EXPECT_EQ(LogOf(test), Joined({expected, {kSingleCore}, stored}));
}

TEST(Tuners, ARefusedForwardingPairIsRestored) {
    TestMachine test;
    const OpenPort first(1);
    const OpenPort second(2, false);
    const NumaNodeRow row1 = Row(5);
    const NumaNodeRow row2 = Row(1, 100);
    {
        OpenLog log;
        EXPECT_FALSE(TuneForwardingDualPort(&log.stream, &first, &second, &row1, &row2));
    }
    const Lines lines = LogOf(test);
    EXPECT_EQ(
        Lines(lines.begin() + 17, lines.end()),
        Joined({{kSingleCore, "Tuning not supported, aborting.", "Restore Tuning Defaults", ""},
                RestoreLines(1, true, true, 2),
                RestoreLines(2, false, false, 2)}));
    EXPECT_EQ(test.PortText(1, u"*ReceiveBuffers"), u"512");
}

}  // namespace
