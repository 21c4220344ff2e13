// A run orders and places the ports, restores, tunes, and tells it all in the log.

#include "ScenarioRun.h"

#include "TuningTest.h"

namespace {

using Kind = Sample::Kind;

constexpr int kNoScenario = 5;
constexpr char kSingleCore[] = "Tuning for single core CPUs is not supported, aborting.";
constexpr char kNoAdapter[] = "Failed to retrieve Adapter's information, Invalid input.";

std::string Start(const char* kind, const std::string& name) {
    return std::string("Start Corvanta Tessaron ") + kind + " performance tuning for " + name + ".";
}

std::string End(const char* kind, const std::string& name) {
    return std::string("Corvanta Tessaron ") + kind + " performance tuning for " + name +
           " completed successfully.";
}

const Lines kRestore = {"Restore Tuning Defaults", ""};

// Runs a scenario over the machine's processors and gives the log.
Lines RunOf(TestMachine& test, int scenario, bool second, bool expected = true,
            bool ethernet = true) {
    test.Attach();
    OpenPort a1(1, ethernet);
    OpenPort a2(2, ethernet);
    ProcessorsInfo processors;
    EXPECT_TRUE(GetProcessorsInfo(nullptr, processors));
    {
        OpenLog log;
        EXPECT_EQ(TunePerformance(log.stream, &a1, second ? &a2 : nullptr, processors, scenario),
                  expected);
    }
    return LogOf(test);
}

// Two ports on cards of their own; each card's times by node.
Sample TwoCards(const char* nodes, const char* ticks1, const char* ticks2) {
    return Sample()
        .Processors("6", nodes)
        .NoCard()
        .With("SOFTWARE\\StandIn\\Cards\\1111111111111111",
              "\"Ports\"=\"0202c9fffe112233\"\n\"DoorbellTicks\"=\"" + std::string(ticks1) + "\"")
        .With("SOFTWARE\\StandIn\\Cards\\2222222222222222",
              "\"Ports\"=\"0202c9fffe112234\"\n\"DoorbellTicks\"=\"" + std::string(ticks2) + "\"");
}

TEST(TunePerformance, TellsWhereThePortsArePlaced) {
    const char* kOne = "0,0,0,0,0,0";
    const char* kTwo = "0,0,0,1,1,1";
    const char* kThree = "0,0,1,1,2,2";
    const struct {
        const char* nodes;
        const char* ticks1;
        const char* ticks2;
        bool second;
        Lines lines;
        const char* reason;
    } cases[] = {
        {kOne, "1", "1", true, {}, "one node isn't measured"},
        {kTwo,
         "9,1",
         "1,9",
         true,
         {"Closest to Adapter #1 NUMA node is 1", "", "Closest to Adapter #2 NUMA node is 0", ""},
         "a node each"},
        {kTwo,
         "9,1",
         "9,1",
         true,
         {"Closest to Adapter #1 NUMA node is 1", "", "Closest to Adapter #2 NUMA node is 1", "",
          "Use opposite NUMA node(0) for Adapter #2", ""},
         "the second moves"},
        {kTwo,
         "9,1",
         "9,1",
         false,
         {"Closest to Adapter #1 NUMA node is 1", "", "Use opposite NUMA node(0) for Adapter #2",
          ""},
         "the second node's default moves even without a second port"},
        {kTwo, "1,9", "1,9", false, {"Closest to Adapter #1 NUMA node is 0", ""}, "no clash"},
        {kThree,
         "9,9,1",
         "9,9,1",
         true,
         {"Closest to Adapter #1 NUMA node is 2", "", "Closest to Adapter #2 NUMA node is 2", "",
          "Use opposite NUMA node(0) for Adapter #2", ""},
         "three nodes wrap"},
        {kThree,
         "9,1,9",
         "9,1,9",
         true,
         {"Closest to Adapter #1 NUMA node is 1", "", "Closest to Adapter #2 NUMA node is 1", "",
          "Use opposite NUMA node(2) for Adapter #2", ""},
         "three nodes go up"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(TwoCards(c.nodes, c.ticks1, c.ticks2));
        EXPECT_EQ(RunOf(test, kNoScenario, c.second),
                  Joined({{Start("Ethernet", "")}, c.lines, {End("Ethernet", ""), "", ""}}));
    }
}

TEST(TunePerformance, GoesOnWithTheDefaultNodes) {
    TestMachine test(Sample().Processors("6", "0,0,0,1,1,1").NoCard());
    EXPECT_EQ(
        RunOf(test, kNoScenario, true),
        Lines({Start("Ethernet", ""), "Failed to get the best Numa, using default (0)",
               "Failed to get the best Numa, using default (1)", End("Ethernet", ""), "", ""}));
}

TEST(TunePerformance, SaysNothingOfAPortWithoutAName) {
    TestMachine test(Sample().Processors("6", "0,0,0,1,1,1"));
    test.machine.faults.FailCalls("RegQueryValueExW", u"NetCfgInstanceId", 2);
    EXPECT_EQ(RunOf(test, kNoScenario, true),
              Lines({Start("Ethernet", ""), End("Ethernet", ""), "", ""}));
}

TEST(TunePerformance, RestoresWhatTheScenarioTouches) {
    const Lines first = RestoreLines(1, true, true, 2);
    const Lines second = RestoreLines(2, false, true, 2);
    const struct {
        int scenario;
        const char* name;
        bool second;
        Lines restore;
        std::size_t tuned;  // lines of the tuner
    } cases[] = {
        {SINGLE_PORT_STREAM, "SINGLE_PORT_STREAM", true, Joined({kRestore, first}), 8},
        {SINGLE_STREAM, "SINGLE_STREAM", true, Joined({kRestore, first}), 10},
        {DUAL_PORT_STREAM, "DUAL_PORT_STREAM", true, Joined({kRestore, first, second}), 18},
        {FORWARDING_STREAM, "FORWARDING_STREAM", true, Joined({kRestore, first, second}), 34},
        {FORWARDING_STREAM, "FORWARDING_STREAM", false, Joined({kRestore, first}), 17},
        {MCAST_STREAM, "MCAST_STREAM", true, {}, 9},
        {RESTORE_DEFAULTS, "RESTORE_DEFAULTS", true, Joined({kRestore, first, second}), 0},
        {kNoScenario, "", true, {}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TestMachine test;
        const Lines lines = RunOf(test, c.scenario, c.second);
        const Lines head = Joined({{Start("Ethernet", c.name)}, c.restore});
        const Lines tail = {End("Ethernet", c.name), "", ""};
        ASSERT_EQ(lines.size(), head.size() + c.tuned + tail.size());
        EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(head.size())),
                  head);
        EXPECT_EQ(Lines(lines.end() - 3, lines.end()), tail);
    }
}

TEST(TunePerformance, ARefusedRunRepeatsItsLastLine) {
    const Lines restore1 = Joined({kRestore, RestoreLines(1, true, true, 2)});
    const struct {
        const char* nodes;
        int scenario;
        Lines lines;
    } cases[] = {
        {"0", SINGLE_PORT_STREAM,
         Joined({{Start("Ethernet", "SINGLE_PORT_STREAM")},
                 restore1,
                 {kSingleCore, Start("Ethernet", "SINGLE_PORT_STREAM"), "", ""}})},
        {"0",
         MCAST_STREAM,
         {Start("Ethernet", "MCAST_STREAM"), kSingleCore, Start("Ethernet", "MCAST_STREAM"), "",
          ""}},
        {"0,0,0,0", DUAL_PORT_STREAM,
         Joined({{Start("Ethernet", "DUAL_PORT_STREAM")},
                 restore1,
                 {kNoAdapter, Start("Ethernet", "DUAL_PORT_STREAM"), "", ""}})},
        {"0,1", SINGLE_STREAM,
         Joined({{Start("Ethernet", "SINGLE_STREAM"), "Closest to Adapter #1 NUMA node is 0", ""},
                 restore1,
                 {kSingleCore, "Closest to Adapter #1 NUMA node is 0", "", "", ""}})},
    };
    for (const auto& c : cases) {
        TestMachine test(
            Sample()
                .Processors(std::to_string((std::string(c.nodes).size() + 1) / 2), c.nodes)
                .Ticks("10,90"));
        EXPECT_EQ(RunOf(test, c.scenario, false, false), c.lines);
    }
}

// A literal line isn't a formatted one: the start line is repeated.
TEST(TunePerformance, ARefusalAfterAFailedMeasurementRepeatsTheStart) {
    TestMachine test(Sample().Processors("2", "0,1").NoCard());
    const std::string start = Start("Ethernet", "MCAST_STREAM");
    EXPECT_EQ(RunOf(test, MCAST_STREAM, false, false),
              Lines({start, "Failed to get the best Numa, using default (0)", kSingleCore, start,
                     "", ""}));
}

// The measurement of an uneven machine can name a node that has no processors.
TEST(TunePerformance, ANodeAboveTheHighestIsRefused) {
    TestMachine test(TwoCards("0,0,0,1,1,1", "9,1", "9,1"));
    test.Attach();
    OpenPort a1(1);
    ProcessorsInfo processors = {};
    processors.nodes[0] = Row(3, 0);
    processors.nodes[1] = Row(0);
    processors.highestNode = 1;
    {
        OpenLog log;
        EXPECT_FALSE(TunePerformance(log.stream, &a1, nullptr, processors, SINGLE_PORT_STREAM));
    }
    EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"-");
}

TEST(TunePerformance, ADualRunPutsTheLowerAddressFirst) {
    const struct {
        const char* mac1;
        const char* mac2;
        int scenario;
        int first;
        const char* reason;
    } cases[] = {
        {"00-02-C9-11-22-33", "00-02-C9-11-22-34", DUAL_PORT_STREAM, 1, "in order"},
        {"00-02-C9-11-22-34", "00-02-C9-11-22-33", DUAL_PORT_STREAM, 2, "swapped"},
        {"00-02-C9-80-22-33", "00-02-C9-7F-22-34", DUAL_PORT_STREAM, 2, "unsigned bytes"},
        {"01-02-C9-11-22-33", "00-FF-C9-11-22-33", DUAL_PORT_STREAM, 2, "first byte first"},
        {"00-02-C9-11-22-33", "00-02-C9-11-22-33", DUAL_PORT_STREAM, 1, "equal"},
        {"00-02-C9-11-22-34", "00-02-C9-11-22-33", FORWARDING_STREAM, 1, "only dual runs"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample().Macs(c.mac1, c.mac2));
        const Lines lines = RunOf(test, c.scenario, true);
        ASSERT_GT(lines.size(), 3u);
        EXPECT_EQ(lines[3], "Setting adapter " + std::to_string(c.first) +
                                " key DefaultRecvRingProcessor to -1");
        EXPECT_EQ(test.PortText(c.first, u"DefaultRecvRingProcessor"), u"0");
        EXPECT_EQ(test.PortText(3 - c.first, u"DefaultRecvRingProcessor"), u"4");
    }
    TestMachine test(Sample().Macs("00-02-C9-11-22-34", "00-02-C9-11-22-33"));
    test.machine.faults.FailCalls("GetIfTable2", u"", 8);
    RunOf(test, DUAL_PORT_STREAM, true);
    EXPECT_EQ(test.PortText(1, u"DefaultRecvRingProcessor"), u"0")
        << "an unknown address leaves the order";
}

TEST(TunePerformance, NamesTheKindOfPort) {
    TestMachine test(Sample().Ports(Kind::Ipoib, Kind::Ipoib));
    const Lines lines = RunOf(test, MCAST_STREAM, true, true, false);
    ASSERT_EQ(lines.size(), 13u);
    EXPECT_EQ(lines.front(), Start("IPoIB", "MCAST_STREAM"));
    EXPECT_EQ(lines[10], End("IPoIB", "MCAST_STREAM"));
}

}  // namespace
