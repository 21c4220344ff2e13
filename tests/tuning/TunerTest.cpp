// The tuners write the right numbers, in the right order, for every size of a node.

#include "Tuners.h"

#include "TuningTest.h"

namespace {

struct Setting {
    std::string name;
    int number;
    int fromLevel = 0;
};
using Settings = std::vector<Setting>;

std::string SettingLine(int port, const std::string& name, int number) {
    return "Setting adapter " + std::to_string(port) + " key " + name + " to " +
           std::to_string(number);
}

Lines SettingLines(int port, int fromLevel, int toLevel, const Settings& settings) {
    Lines lines;
    for (const Setting& row : settings)
        if (row.fromLevel >= fromLevel && row.fromLevel <= toLevel)
            lines.push_back(SettingLine(port, row.name, row.number));
    return lines;
}

constexpr int kFirst = 10;        // first processor of a node that Row makes
constexpr int kOtherFirst = 100;  // and of a second node here

// The i-th processor of a node.
constexpr int P(int i) {
    return kFirst + i;
}

// The settings and behind them where the port's work goes: the RSS work to so many processors from
// the first one on, and transmit interrupts nowhere when they are left alone.
Settings Placed(Settings settings, int first, std::optional<int> interrupt, int forwarding,
                int queues) {
    settings.push_back({"DefaultRecvRingProcessor", first});
    if (interrupt) settings.push_back({"TxInterruptProcessor", *interrupt});
    settings.insert(settings.end(), {{"TxForwardingProcessor", forwarding},
                                     {"*MaxRssProcessors", queues, 1},
                                     {"*RssBaseProcNumber", first, 1},
                                     {"*RssProfile", 4, 2},
                                     {"*NumRSSQueues", queues, 2},
                                     {"*RssMaxProcNumber", first + queues - 1, 2}});
    return settings;
}

// What a single port run writes for `count` processors from `base` on.
Settings SinglePort(int base, int count) {
    return Placed({{"TuningScenario", 1086}}, base, {}, base + count - 1, count);
}

Settings Forwarding(const char* firstRss, const char* secondRss) {
    return {{"*ReceiveBuffers", 4096},
            {firstRss, 0},
            {secondRss, 0},
            {"RxIntModerationProfile", 0},
            {"TxIntModerationProfile", 0},
            {"MaxNumTxPacketsToIndicateComplete", 8},
            {"TuningScenario", 1088},
            {"ForceDelayDropTimeoutMode", 1},
            {"UseSendFwQueue", 1}};
}

using Tuner = bool (*)(LogStream*, const TuningAdapter*, const NumaNodeRow*);

class Tuners : public testing::Test {
  protected:
    explicit Tuners(int theLevel = 2)
        : level(theLevel), test(Sample().Version(kVersionOfLevel[theLevel])) {}

    // Tunes port 1 alone and checks the lines.
    void ExpectTuned(Tuner tune, int count, const Settings& settings) {
        SCOPED_TRACE(count);
        const NumaNodeRow row = Row(count);
        EXPECT_EQ(Logged(test, [&](LogStream* log) { EXPECT_TRUE(tune(log, &first, &row)); }),
                  SettingLines(1, 0, level, settings));
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

TEST_P(TunersByLevel, SinglePortAndMulticastUseUpToEight) {
    for (int count = 2; count <= 16; ++count) {
        const int used = std::min(count, 8);
        ExpectTuned(
            [](LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
                return TuneSinglePort(log, adapter, row, UsableProcessors(row), 0);
            },
            count, SinglePort(P(0), used));
        ExpectTuned(TuneMulticast, count,
                    Placed({{"*ReceiveBuffers", 4096}, {"TuningScenario", 1096}}, P(0), {},
                           count == 2 ? P(1) : P(2), used));
    }
}

TEST_P(TunersByLevel, SingleStreamAndForwardingLeaveTheLastTwoToTransmitWork) {
    const struct {
        int count;
        int last;
        int streamInterrupt, streamQueues;
        int forwardInterrupt, forwardQueues;
    } shares[] = {
        {2, 1, 1, 2, 0, 1}, {3, 2, 1, 2, 1, 1}, {4, 3, 2, 2, 2, 2},
        {5, 4, 3, 3, 3, 3}, {6, 5, 4, 4, 4, 4}, {7, 6, 5, 5, 5, 5},
        {8, 7, 6, 6, 6, 6}, {9, 7, 6, 6, 6, 6}, {16, 7, 6, 6, 6, 6},
    };
    for (const auto& s : shares) {
        Settings stream = {{"TuningScenario", 1098}};
        for (const bool ethernet : {false, true}) {
            first.isEthernet = ethernet;
            if (ethernet) stream.insert(stream.begin(), {"SingleStream", 1});
            ExpectTuned(TuneSingleStream, s.count,
                        Placed(stream, P(0), P(s.streamInterrupt), P(s.last), s.streamQueues));
            ExpectTuned(TuneForwarding, s.count,
                        Placed(Forwarding("UseRSSForUDP", "UseRSSForRawIP"), P(0),
                               P(s.forwardInterrupt), P(s.last), s.forwardQueues));
        }
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
        {40, 0, P(0), 8, P(8), 8, "shares at the cap still adjoin"},
        {3, 12, P(0), 3, kOtherFirst, 8, "nodes of different size"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TunePair(TuneDualPort, c.row1, c.row2),
                  Joined({SettingLines(1, 0, level, SinglePort(c.base1, c.count1)),
                          SettingLines(2, 0, level, SinglePort(c.base2, c.count2)), kDualStored}))
            << c.reason;
}

TEST_P(TunersByLevel, ForwardingOnTwoPortsSharesALargeNode) {
    const Settings common = Forwarding("UseRSSForRawIP", "UseRSSForUDP");
    for (int half = 2; half <= 8; ++half) {
        const int queues = half == 2 ? 1 : half - 2;
        Lines expected =
            Joined({SettingLines(1, 0, level, common), SettingLines(2, 0, level, common)});
        for (int each = 0; each <= level; ++each)
            for (const int port : {1, 2}) {
                const int base = P(port == 1 ? 0 : half);
                const Settings placed = Placed({}, base, base + queues, base + half - 1, queues);
                expected = Joined({expected, SettingLines(port, each, each, placed)});
            }
        for (const int count : {2 * half, half == 8 ? 40 : 2 * half + 1}) {
            SCOPED_TRACE(count);
            EXPECT_EQ(TunePair(TuneForwardingDualPort, count, 0), expected);
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
        const Lines lines = TunePair(TuneForwardingDualPort, c.row1, c.row2);
        ASSERT_EQ(lines.size(), 34u);
        EXPECT_EQ(lines[9], SettingLine(1, "DefaultRecvRingProcessor", P(0)));
        EXPECT_EQ(lines[26], SettingLine(2, "DefaultRecvRingProcessor", c.receive2));
        EXPECT_EQ(lines[27], SettingLine(2, "TxInterruptProcessor", c.interrupt2));
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
    EXPECT_EQ(TunePair(TuneDualPort, 4, 1, false),
              Joined({SettingLines(1, 0, 2, SinglePort(P(0), 4)), {kSingleCore}, kDualStored}));
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
