// A run orders and places the ports, restores, tunes, and tells it all in the log.

#include "ScenarioRun.h"

#include <algorithm>

#include "Scenarios.h"
#include "TuningTest.h"

namespace {

constexpr int kNoScenario = 5;
constexpr int kNone = -1;
constexpr char kTwoNodes[] = "0,0,0,1,1,1";

std::string Start(const std::string& name, const std::string& kind = "Ethernet") {
    return "Start Corvanta Tessaron " + kind + " performance tuning for " + name + ".";
}

std::string End(const std::string& name, const std::string& kind = "Ethernet") {
    return "Corvanta Tessaron " + kind + " performance tuning for " + name +
           " completed successfully.";
}

std::string Closest(int port, int node) {
    return "Closest to Adapter #" + std::to_string(port) + " NUMA node is " + std::to_string(node);
}

struct RunOptions {
    int scenario = kNoScenario;
    bool second = true;
    bool ethernet = true;
    bool completes = true;
};

// Runs a scenario over the machine's processors and gives the log.
Lines LogOfRun(TestMachine& test, const RunOptions& run) {
    test.Attach();
    OpenPort a1(1, run.ethernet);
    OpenPort a2(2, run.ethernet);
    ProcessorsInfo processors;
    EXPECT_TRUE(GetProcessorsInfo(nullptr, processors));
    return Logged(test, [&](LogStream* log) {
        EXPECT_EQ(TunePerformance(*log, &a1, run.second ? &a2 : nullptr, processors, run.scenario),
                  run.completes);
    });
}

TEST(TunePerformance, TellsWhereThePortsArePlaced) {
    constexpr char kThreeNodes[] = "0,0,1,1,2,2";
    const struct {
        const char* nodes;
        std::string ticks1;  // each port has a card of its own
        std::string ticks2;
        int closest1, closest2, opposite;
        const char* reason;
    } cases[] = {
        {"0,0,0,0,0,0", "1", "1", kNone, kNone, kNone, "one node isn't measured"},
        {kTwoNodes, "9,1", "1,9", 1, 0, kNone, "a node each"},
        {kTwoNodes, "9,1", "9,1", 1, 1, 0, "the second moves"},
        {kTwoNodes, "9,1", "", 1, kNone, 0, "without a second port its default moves"},
        {kTwoNodes, "1,9", "", 0, kNone, kNone, "without a second port, no clash"},
        {kThreeNodes, "9,9,1", "9,9,1", 2, 2, 0, "three nodes wrap"},
        {kThreeNodes, "9,1,9", "9,1,9", 1, 1, 2, "three nodes go up"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const std::string ports = "\"Ports\"=\"0202c9fffe11223";
        const std::string times = "\"\n\"DoorbellTicks\"=\"";
        TestMachine test(Sample()
                             .Processors("6", c.nodes)
                             .NoCard()
                             .With("SOFTWARE\\StandIn\\Cards\\1111111111111111",
                                   ports + "3" + times + c.ticks1 + "\"")
                             .With("SOFTWARE\\StandIn\\Cards\\2222222222222222",
                                   ports + "4" + times + c.ticks2 + "\""));
        Lines expected = {Start("")};
        const auto add = [&](int node, const std::string& line) {
            if (node != kNone) expected.insert(expected.end(), {line, ""});
        };
        add(c.closest1, Closest(1, c.closest1));
        add(c.closest2, Closest(2, c.closest2));
        add(c.opposite,
            "Use opposite NUMA node(" + std::to_string(c.opposite) + ") for Adapter #2");
        EXPECT_EQ(LogOfRun(test, {.second = !c.ticks2.empty()}),
                  Joined({expected, {End(""), "", ""}}));
    }
}

TEST(TunePerformance, GoesOnWithTheDefaultNodes) {
    TestMachine test(Sample().Processors("6", kTwoNodes).NoCard());
    EXPECT_EQ(LogOfRun(test, {}),
              Lines({Start(""), "Failed to get the best Numa, using default (0)",
                     "Failed to get the best Numa, using default (1)", End(""), "", ""}));
}

std::string Repeated(int count, int node) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "," + std::to_string(node);
    return text;
}

TEST(TunePerformance, CompletesOnAMachineThatTheTableCannotHold) {
    const std::string failed = "Failed to get the best Numa, using default ";
    const auto opposite = [](const char* node) {
        return Lines{"Use opposite NUMA node(" + std::string(node) + ") for Adapter #2", ""};
    };
    std::string pairs;
    std::string ticks = "9";
    for (int node = 0; node < 40; ++node)
        pairs += Repeated(2, node);
    for (int node = 1; node < 40; ++node)
        ticks += node == 20 ? ",5" : node == 35 ? ",1" : ",9";
    const struct {
        const char* groups;
        std::string nodes, ticks;
        Lines told;  // of a dual run
        const char16_t *receive1, *receive2;
        const char* reason;
    } cases[] = {
        {"64,64", Repeated(128, 0), "1", {}, u"0", u"8", "128 processors in one node"},
        {"64,16", pairs, ticks, Joined({{Closest(1, 20), "", Closest(2, 20), ""}, opposite("21")}),
         u"40", u"42", "40 nodes, of which those with a row are measured"},
        {"64,64,64,64,64,64",
         Repeated(64, 0) + Repeated(64, 1) + Repeated(64, 2) + Repeated(64, 3) + Repeated(64, 4) +
             Repeated(64, 5),
         "9,9,9,5,1,1", Joined({{Closest(1, 3), "", Closest(2, 3), ""}, opposite("0")}), u"192",
         u"0", "384 processors in six nodes, of which two have no row"},
        {"64,64,64,64,44",
         Repeated(100, 0) + Repeated(156, 2) + Repeated(44, 1),
         "9,5,1",
         {failed + "(0)", failed + "(2)"},
         u"0",
         u"100",
         "the measured node has no processor in the table"},
        {"64,64,64,64,44",
         Repeated(255, 0) + Repeated(45, 1),
         "5,9",
         {Closest(1, 0), "", Closest(2, 0), ""},
         u"0",
         u"8",
         "the other node has one processor in the table"},
        {"64,64,64,64,44",
         Repeated(256, 1) + Repeated(44, 0),
         "5,9",
         {failed + "(1)", failed + "(1)"},
         u"0",
         u"8",
         "node 0 has none in the table"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const Sample sample = Sample().Processors(c.groups, c.nodes.substr(1)).Ticks(c.ticks);
        for (const int scenario :
             {SINGLE_PORT_STREAM, SINGLE_STREAM, FORWARDING_STREAM, MCAST_STREAM}) {
            TestMachine test(sample);
            LogOfRun(test, {.scenario = scenario});
            EXPECT_EQ(test.PortText(1, u"DefaultRecvRingProcessor"), c.receive1);
        }
        TestMachine test(sample);
        const Lines lines = LogOfRun(test, {.scenario = DUAL_PORT_STREAM});
        const auto restore = std::find(lines.begin(), lines.end(), kRestore[0]);
        EXPECT_EQ(Lines(lines.begin() + 1, restore), c.told);
        EXPECT_EQ(test.PortText(1, u"DefaultRecvRingProcessor"), c.receive1);
        EXPECT_EQ(test.PortText(2, u"DefaultRecvRingProcessor"), c.receive2);
    }
}

TEST(TunePerformance, RestoresWhatTheScenarioTouches) {
    const struct {
        RunOptions run;
        const char* name;
        bool first, both;   // which ports the log shows restored
        std::size_t tuned;  // lines of the tuner
    } cases[] = {
        {{SINGLE_PORT_STREAM}, "SINGLE_PORT_STREAM", true, false, 8},
        {{SINGLE_STREAM}, "SINGLE_STREAM", true, false, 10},
        {{DUAL_PORT_STREAM}, "DUAL_PORT_STREAM", true, true, 18},
        {{FORWARDING_STREAM}, "FORWARDING_STREAM", true, true, 34},
        {{FORWARDING_STREAM, false}, "FORWARDING_STREAM", true, false, 17},
        {{MCAST_STREAM}, "MCAST_STREAM", false, false, 9},
        {{RESTORE_DEFAULTS}, "RESTORE_DEFAULTS", true, true, 0},
        {{kNoScenario}, "", false, false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TestMachine test;
        const bool ethernet = c.run.ethernet;
        const char* kind = ethernet ? "Ethernet" : "IPoIB";
        Lines expected = {Start(c.name, kind)};
        if (c.first) expected = Joined({expected, kRestore, RestoreLines(1, true, ethernet)});
        if (c.both) expected = Joined({expected, RestoreLines(2, false, ethernet)});
        Lines lines = LogOfRun(test, c.run);
        ASSERT_EQ(lines.size(), expected.size() + c.tuned + 3);
        const auto tuned = lines.begin() + static_cast<std::ptrdiff_t>(expected.size());
        lines.erase(tuned, tuned + static_cast<std::ptrdiff_t>(c.tuned));
        EXPECT_EQ(lines, Joined({expected, {End(c.name, kind), "", ""}}));
        EXPECT_EQ(test.PortText(1, u"RecvCompletionMethod"),
                  c.run.scenario == kNoScenario ? u"-" : u"1")
            << "a restore without lines is one";
    }
}

TEST(TunePerformance, ARefusedRunRepeatsItsLastFormattedLine) {
    constexpr int kFails = -2;
    const struct {
        const char *groups, *nodes, *ticks;
        int closest, scenario;
        const char* name;
        bool restored;
        std::string refusal;
    } cases[] = {
        {"1", "0", "1", kNone, SINGLE_PORT_STREAM, "SINGLE_PORT_STREAM", true, kSingleCore},
        {"1", "0", "1", kNone, MCAST_STREAM, "MCAST_STREAM", false, kSingleCore},
        {"4", "0,0,0,0", "1", kNone, DUAL_PORT_STREAM, "DUAL_PORT_STREAM", true, kNoAdapter},
        {"2", "0,1", "", kFails, MCAST_STREAM, "MCAST_STREAM", false, kSingleCore},
        // Ten processors in three nodes: the last one measured counts as a node of its own.
        {"10", "0,0,0,1,1,1,1,1,1,2", "9,8,1", 3, SINGLE_STREAM, "SINGLE_STREAM", true,
         kSingleCore},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.name << " " << c.nodes);
        Sample sample = Sample().Processors(c.groups, c.nodes).Ticks(c.ticks);
        if (c.closest == kFails) sample.NoCard();
        TestMachine test(sample);
        Lines expected = {Start(c.name)};
        Lines again = expected;
        if (c.closest == kFails)
            expected.push_back("Failed to get the best Numa, using default (0)");
        else if (c.closest != kNone)
            expected = Joined({expected, again = {Closest(1, c.closest), ""}});
        if (c.restored) expected = Joined({expected, kRestore, RestoreLines(1, true)});
        EXPECT_EQ(LogOfRun(test, {.scenario = c.scenario, .second = false, .completes = false}),
                  Joined({expected, {c.refusal}, again, {"", ""}}));
        EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"-");
    }
}

TEST(TunePerformance, ADualRunPutsTheLowerAddressFirst) {
    const struct {
        const char *mac1, *mac2, *failing;
        int scenario, first;
        const char* reason;
    } cases[] = {
        {"00-02-C9-11-22-33", "00-02-C9-11-22-34", "", DUAL_PORT_STREAM, 1, "in order"},
        {"00-02-C9-11-22-34", "00-02-C9-11-22-33", "", DUAL_PORT_STREAM, 2, "swapped"},
        {"00-02-C9-80-22-33", "00-02-C9-7F-22-34", "", DUAL_PORT_STREAM, 2, "unsigned bytes"},
        {"01-02-C9-11-22-33", "00-FF-C9-11-22-33", "", DUAL_PORT_STREAM, 2, "first byte first"},
        {"00-02-C9-11-22-33", "00-02-C9-11-22-33", "", DUAL_PORT_STREAM, 1, "equal"},
        {"00-02-C9-11-22-34", "00-02-C9-11-22-33", "", FORWARDING_STREAM, 1, "only dual runs"},
        {"00-02-C9-11-22-34", "00-02-C9-11-22-33", "GetIfTable2", DUAL_PORT_STREAM, 1, "unknown"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample().Macs(c.mac1, c.mac2));
        test.machine.faults.FailCalls(c.failing, u"", 8);
        const Lines lines = LogOfRun(test, {.scenario = c.scenario});
        ASSERT_GT(lines.size(), 3u);
        EXPECT_EQ(lines[3], "Setting adapter " + std::to_string(c.first) +
                                " key DefaultRecvRingProcessor to -1");
        EXPECT_EQ(test.PortText(c.first, u"DefaultRecvRingProcessor"), u"0");
        EXPECT_EQ(test.PortText(3 - c.first, u"DefaultRecvRingProcessor"), u"4");
    }
}

}  // namespace
