// The tuners write the right numbers, in the right order, for every size of a node.

#include "Tuners.h"

#include "TuningTest.h"

namespace {

struct Setting {
    std::string name;
    int number;
    int fromLevel = 0;
};
constexpr int kNoLevel = 3;

// The lines of the settings that the level has.
Lines SettingLines(int port, int level, const std::vector<Setting>& settings) {
    Lines lines;
    for (const Setting& row : settings)
        if (row.fromLevel <= level)
            lines.push_back("Setting adapter " + std::to_string(port) + " key " + row.name +
                            " to " + std::to_string(row.number));
    return lines;
}

// The port's class key holds the settings that the level has, and none of the others.
void ExpectStored(const TestMachine& test, int port, int level,
                  const std::vector<Setting>& settings) {
    for (const Setting& row : settings)
        EXPECT_EQ(platform::ToUtf8(test.PortText(port, Wide(row.name))),
                  row.fromLevel <= level ? std::to_string(row.number) : "-")
            << "port " << port << ", " << row.name;
}

constexpr int kFirst = 10;        // first processor of a node that Row makes
constexpr int kOtherFirst = 100;  // and of a second node here

// The i-th processor of a node.
constexpr int P(int i) {
    return kFirst + i;
}

using Tuner = bool (*)(LogStream*, const TuningAdapter*, const NumaNodeRow*);

class Tuners : public testing::Test {
  protected:
    explicit Tuners(int theLevel = 2)
        : level(theLevel), test(Sample().Version(kVersionOfLevel[theLevel])) {}

    // Tunes port 1 alone and checks lines and values.
    void ExpectTuned(Tuner tune, int count, const std::vector<Setting>& settings) {
        SCOPED_TRACE(count);
        const NumaNodeRow row = Row(count);
        EXPECT_EQ(Logged(test, [&](LogStream* log) { EXPECT_TRUE(tune(log, &first, &row)); }),
                  SettingLines(1, level, settings));
        ExpectStored(test, 1, level, settings);
    }

    using PairTuner = bool (*)(LogStream*, const TuningAdapter*, const TuningAdapter*,
                               const NumaNodeRow*, const NumaNodeRow*);
    // Tunes both ports and gives the log. count2 is 0 for no second row.
    Lines TunePair(PairTuner tune, int count1, int count2, bool expected = true) {
        const NumaNodeRow row1 = Row(count1);
        const NumaNodeRow row2 = Row(count2, kOtherFirst);
        return Logged(test, [&](LogStream* log) {
            EXPECT_EQ(tune(log, &first, &second, &row1, count2 ? &row2 : nullptr), expected);
        });
    }

    int level;
    TestMachine test;
    OpenPort first{1};
    OpenPort second{2};
};

class TunersByLevel : public Tuners, public testing::WithParamInterface<int> {
  protected:
    TunersByLevel() : Tuners(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Level, TunersByLevel, testing::Values(0, 1, 2));

// What a single port run writes for `count` processors from `base` on.
std::vector<Setting> SinglePortSettings(int base, int count) {
    return {{"TuningScenario", 1086},
            {"DefaultRecvRingProcessor", base},
            {"TxForwardingProcessor", base + count - 1},
            {"*MaxRssProcessors", count, 1},
            {"*RssBaseProcNumber", base, 1},
            {"*RssProfile", 4, 2},
            {"*NumRSSQueues", count, 2},
            {"*RssMaxProcNumber", base + count - 1, 2}};
}

TEST_P(TunersByLevel, SinglePortUsesUpToEight) {
    for (int count = 2; count <= 16; ++count)
        ExpectTuned(
            [](LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
                return TuneSinglePort(log, adapter, row, UsableProcessors(row), 0);
            },
            count, SinglePortSettings(P(0), std::min(count, 8)));
    EXPECT_EQ(test.PortText(1, u"TxInterruptProcessor"), u"-");
}

// Which of a node's processors a tuner of one port uses.
struct Share {
    int count;     // of the node
    int used;      // n
    int transmit;  // t
    int lastRss;   // m
};

TEST_P(TunersByLevel, SingleStreamLeavesTheLastTwoToTransmitWork) {
    const Share shares[] = {
        {2, 2, 1, 1}, {3, 3, 1, 1}, {4, 4, 2, 1}, {5, 5, 3, 2},  {6, 6, 4, 3},
        {7, 7, 5, 4}, {8, 8, 6, 5}, {9, 8, 6, 5}, {16, 8, 6, 5},
    };
    for (const bool ethernet : {false, true}) {
        first.isEthernet = ethernet;
        for (const Share& s : shares)
            ExpectTuned(TuneSingleStream, s.count,
                        {{"SingleStream", 1, ethernet ? 0 : kNoLevel},
                         {"TuningScenario", 1098},
                         {"DefaultRecvRingProcessor", P(0)},
                         {"TxInterruptProcessor", P(s.transmit)},
                         {"TxForwardingProcessor", P(s.used - 1)},
                         {"*MaxRssProcessors", s.lastRss + 1, 1},
                         {"*RssBaseProcNumber", P(0), 1},
                         {"*RssProfile", 4, 2},
                         {"*NumRSSQueues", s.lastRss + 1, 2},
                         {"*RssMaxProcNumber", P(s.lastRss), 2}});
    }
}

TEST_P(TunersByLevel, ForwardingOnOnePort) {
    const Share shares[] = {
        {2, 2, 0, 0}, {3, 3, 1, 0}, {4, 4, 2, 1}, {5, 5, 3, 2},  {6, 6, 4, 3},
        {7, 7, 5, 4}, {8, 8, 6, 5}, {9, 8, 6, 5}, {16, 8, 6, 5},
    };
    for (const Share& s : shares)
        ExpectTuned(TuneForwarding, s.count,
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

TEST_P(TunersByLevel, MulticastTransmitsFromTheThirdProcessor) {
    for (int count = 2; count <= 16; ++count) {
        const int n = std::min(count, 8);
        ExpectTuned(TuneMulticast, count,
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

const Lines kDualStored = {"Setting adapter 1 key TuningScenario to 1087",
                           "Setting adapter 2 key TuningScenario to 1087"};

TEST_P(TunersByLevel, DualPortSplitsANodeOrTakesTwo) {
    const struct {
        int row1;
        int row2;  // 0: none
        int base1, count1, base2, count2;
        const char* reason;
    } cases[] = {
        {4, 0, P(0), 2, P(2), 2, "the smallest node to share"},
        {5, 0, P(0), 2, P(2), 2, "the odd one stays unused"},
        {8, 0, P(0), 4, P(4), 4, "half each"},
        {40, 0, P(0), 8, P(8), 8, "shares at the cap still adjoin"},
        {8, 8, P(0), 8, kOtherFirst, 8, "a node each"},
        {3, 12, P(0), 3, kOtherFirst, 8, "nodes of different size"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        EXPECT_EQ(
            TunePair(TuneDualPort, c.row1, c.row2),
            Joined({SettingLines(1, level, SinglePortSettings(c.base1, c.count1)),
                    SettingLines(2, level, SinglePortSettings(c.base2, c.count2)), kDualStored}));
        EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"1087");
        EXPECT_EQ(test.PortText(2, u"TuningScenario"), u"1087");
    }
}

TEST_P(TunersByLevel, ForwardingOnTwoPortsSharesALargeNode) {
    const std::vector<Setting> common = {
        {"*ReceiveBuffers", 4096},     {"UseRSSForRawIP", 0},
        {"UseRSSForUDP", 0},           {"RxIntModerationProfile", 0},
        {"TxIntModerationProfile", 0}, {"MaxNumTxPacketsToIndicateComplete", 8},
        {"TuningScenario", 1088},      {"ForceDelayDropTimeoutMode", 1},
        {"UseSendFwQueue", 1},
    };
    const struct {
        int h, q, interrupt, transmit, lastRss;
    } halves[] = {
        {2, 1, 1, 1, 0}, {3, 1, 1, 2, 0}, {4, 2, 2, 3, 1}, {5, 3, 3, 4, 2},
        {6, 4, 4, 5, 3}, {7, 5, 5, 6, 4}, {8, 6, 6, 7, 5},
    };
    for (const auto& s : halves) {
        const auto placed = [&](int port, std::size_t from, std::size_t to) {
            const int base = port == 1 ? 0 : s.h;
            const Setting settings[] = {{"DefaultRecvRingProcessor", P(base)},
                                        {"TxInterruptProcessor", P(base + s.interrupt)},
                                        {"TxForwardingProcessor", P(base + s.transmit)},
                                        {"*MaxRssProcessors", s.q, 1},
                                        {"*RssBaseProcNumber", P(base), 1},
                                        {"*RssProfile", 4, 2},
                                        {"*NumRSSQueues", s.q, 2},
                                        {"*RssMaxProcNumber", P(base + s.lastRss), 2}};
            return SettingLines(port, level, {settings + from, settings + to});
        };
        const Lines expected =
            Joined({SettingLines(1, level, common), SettingLines(2, level, common), placed(1, 0, 3),
                    placed(2, 0, 3),                     // processors
                    placed(1, 3, 5), placed(2, 3, 5),    // from level 1 on
                    placed(1, 5, 8), placed(2, 5, 8)});  // from level 2 on
        for (const int count : {2 * s.h, 2 * s.h + 1}) {
            SCOPED_TRACE(count);
            EXPECT_EQ(TunePair(TuneForwardingDualPort, count, 0), expected);
            ExpectStored(test, 2, level, {{"*RssMaxProcNumber", P(s.h + s.lastRss), 2}});
            if (count < 6) continue;
            EXPECT_EQ(TunePair(TuneForwardingDualPort, count, 8), expected) << "with a second row";
        }
    }
}

TEST_F(Tuners, ForwardingOnTwoPortsTunesEachAloneOnASmallNode) {
    const struct {
        int row1;
        int row2;  // 0: none
        int receive2, interrupt2;
        const char* reason;
    } cases[] = {
        {3, 0, P(0), P(1), "both name the same three processors"},
        {2, 0, P(0), P(0), "both share two"},
        {5, 4, kOtherFirst, kOtherFirst + 2, "too few to share, so each on its own row"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TunePair(TuneForwardingDualPort, c.row1, c.row2);
        ExpectStored(test, 1, 2, {{"DefaultRecvRingProcessor", P(0)}, {"UseSendFwQueue", 1}});
        ExpectStored(
            test, 2, 2,
            {{"DefaultRecvRingProcessor", c.receive2}, {"TxInterruptProcessor", c.interrupt2}});
    }
}

TEST_F(Tuners, RefuseWhatTheyCantTune) {
    const NumaNodeRow one = Row(1);
    const NumaNodeRow eight = Row(8);
    const struct {
        const NumaNodeRow* row;
        const TuningAdapter* adapter;
        std::string line;
    } cases[] = {
        {nullptr, &first, kNoRow},
        {nullptr, nullptr, kNoRow},
        {&eight, nullptr, kNoAdapter},
        {&one, &first, kSingleCore},
    };
    for (const Tuner tune : {TuneSingleStream, TuneForwarding, TuneMulticast, CheckTuningInput}) {
        for (const auto& c : cases)
            EXPECT_EQ(
                Logged(test, [&](LogStream* log) { EXPECT_FALSE(tune(log, c.adapter, c.row)); }),
                Lines({c.line}));
        EXPECT_FALSE(tune(nullptr, nullptr, &eight)) << "and without a log";
    }
    EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"-");
    EXPECT_EQ(test.PortText(1, u"SingleStream"), u"-");
}

TEST_F(Tuners, ADualRunStoresItsScenarioEvenWhenAPortIsRefused) {
    for (const int count : {2, 3})
        EXPECT_EQ(TunePair(TuneDualPort, count, 0, false),
                  Joined({{kSingleCore}, kRestore, RestoreLines(1, true), kDualStored}));
    EXPECT_EQ(
        TunePair(TuneDualPort, 4, 1, false),
        Joined({SettingLines(1, 2, SinglePortSettings(P(0), 4)), {kSingleCore}, kDualStored}));
}

TEST_F(Tuners, ARefusedForwardingPairIsRestored) {
    second.isEthernet = false;
    const Lines lines = TunePair(TuneForwardingDualPort, 5, 1, false);
    ASSERT_GT(lines.size(), 17u);
    EXPECT_EQ(Lines(lines.begin() + 17, lines.end()),
              Joined({{kSingleCore, "Tuning not supported, aborting."},
                      kRestore,
                      RestoreLines(1, true),
                      RestoreLines(2, false, false)}));
    EXPECT_EQ(test.PortText(1, u"*ReceiveBuffers"), u"512");
}

}  // namespace
