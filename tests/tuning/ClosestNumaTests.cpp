// The probe measures one processor a node and gives the fastest.

#include "ClosestNuma.h"

#include "ProbeContext.h"
#include "TuningTest.h"

namespace {

constexpr char16_t kCard[] = u"0002c90300a5b6c0";

std::string Runs(std::initializer_list<int> sizes) {
    std::string text;
    int node = 0;
    for (const int size : sizes) {
        for (int i = 0; i < size; ++i)
            text += (text.empty() ? "" : ",") + std::to_string(node);
        ++node;
    }
    return text;
}

TEST(FindFastestNuma, MeasuresTheFirstProcessorOfEachSlice) {
    const struct {
        const char* groups;
        std::string nodes;
        const char* ticks;
        std::size_t measured;
        DWORD closest;
        const char* reason;
    } cases[] = {
        {"16", Runs({8, 8}), "90,40", 2, 1, "two nodes"},
        {"8,8", Runs({8, 8}), "40,90", 2, 0, "two groups"},
        {"16", Runs({4, 4, 4, 4}), "90,80,30,60", 4, 2, "four nodes"},
        {"16", Runs({8, 8}), "50,50", 2, 0, "equal times keep the lower node"},
        {"10", Runs({3, 3, 4}), "90,80,70", 4, 2, "10 processors in 3 nodes"},
        {"16", Runs({4, 4, 4, 4}), "2500,2500,10,10", 3, 2, "exactly 5000 ms go on"},
        {"16", Runs({4, 4, 4, 4}), "2500,2501,10,10", 2, 0, "5001 ms end it"},
        {"16", Runs({4, 4, 4, 4}), "9000,10,10,10", 1, 0, "one is always measured"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample().Processors(c.groups, c.nodes).Ticks(c.ticks));
        test.machine.trace.Start();
        DWORD node = 77;
        EXPECT_EQ(FindFastestNuma(kCard, node), 0);
        EXPECT_EQ(node, c.closest);
        EXPECT_EQ(test.machine.trace.Count("SetThreadGroupAffinity"), c.measured);
        EXPECT_EQ(test.machine.Get<platform::Streams>().error, "");
    }
}

// The last slice of an uneven machine counts as a node of its own, one above the highest.
TEST(FindFastestNuma, AnUnevenMachineHasACandidateAboveTheHighestNode) {
    TestMachine test(Sample()
                         .Processors("10", "0,0,0,1,1,1,2,2,2,3")
                         .Ticks("90,80,70,10")
                         .With("SOFTWARE\\StandIn\\Processors", "\"HighestNode\"=dword:2"));
    DWORD node = 77;
    EXPECT_EQ(FindFastestNuma(kCard, node), 0);
    EXPECT_EQ(node, 3u);
}

TEST(FindFastestNuma, FailsWithItsLineAndReleasesEverything) {
    const struct {
        const char* call;
        std::uint64_t first;
        const char* error;
        const char* output;
    } cases[] = {
        {"operator new", 1, "", "init_ctx failed\n"},
        {"operator new", 2, "failed to allocate qp.\n", "init_ctx failed\n"},
        {"operator new", 3, "failed to allocate qp_attr.\n", "init_ctx failed\n"},
        {"operator new", 4, "Couldn't allocate work buf.\n", "init_ctx failed\n"},
        {"operator new", 5, "Couldn't allocate CA GUID array\n", "init_ctx failed\n"},
        {"operator new", 6, "Couldn't allocate CA attributes buffer\n", "init_ctx failed\n"},
        {"ib_open_al", 1, "ib_open_al failed status = 5\n", "init_ctx failed\n"},
        {"ib_open_ca", 1, "ib_open_ca failed with status = 5\n", "init_ctx failed\n"},
        {"ib_alloc_pd", 1, "Couldn't allocate PD\n", "init_ctx failed\n"},
        {"ib_reg_mem", 1, "Couldn't allocate MR\n", "init_ctx failed\n"},
        {"ib_create_cq", 1, "Couldn't create CQ\nib_status = 5\n", "init_ctx failed\n"},
        {"ib_create_qp", 1, "Couldn't create QP\n", "init_ctx failed\n"},
        {"ib_modify_qp", 1, "Failed to modify QP to INIT\n", "init_ctx failed\n"},
        {"ib_query_qp", 1, "Failed to modify QP to INIT\n", "init_ctx failed\n"},
        {"GetNumaHighestNodeNumber", 1, "", "GetNumaHighestNodeNumber failed gle = 5\n"},
        {"GetNumaProcessorNodeEx", 2, "", "GetNumaProcessorNode(CurrProcessor 8) failed gle = 5\n"},
        {"SetThreadGroupAffinity", 2, "",
         "SetThreadAffinityMask failed  for processor 8 gle = 5\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        TestMachine test(Sample().Processors("16", Runs({8, 8})));
        test.machine.faults.FailCalls(c.call, u"", 5, c.first);
        DWORD node = 77;
        EXPECT_EQ(FindFastestNuma(kCard, node), 1);
        const auto& streams = test.machine.Get<platform::Streams>();
        EXPECT_EQ(streams.error, c.error);
        EXPECT_EQ(streams.output, c.output);
    }
}

TEST(FindFastestNuma, GoesOnReleasingWhenAReleaseFails) {
    const struct {
        const char* call;
        const char* error;
    } cases[] = {
        {"ib_destroy_qp", "Failed to destroy QP\n"},
        {"ib_destroy_cq", "Failed to destroy CQ\n"},
        {"ib_dereg_mr", "Failed to deregister MR\n"},
        {"ib_dealloc_pd", "Failed to deallocate PD\n"},
        {"ib_close_ca", "Failed to close ca\n"},
        {"ib_close_al", "Failed to close al\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        TestMachine test;
        test.machine.faults.FailCalls(c.call, u"", 5);
        DWORD node = 77;
        EXPECT_EQ(FindFastestNuma(kCard, node), 0);
        EXPECT_EQ(test.machine.Get<platform::Streams>().error, c.error);
    }
}

TEST(FindFastestNuma, FailsWithMoreNodesThanProcessors) {
    TestMachine test(Sample()
                         .Processors("2", "0,1")
                         .With("SOFTWARE\\StandIn\\Processors", "\"HighestNode\"=dword:5"));
    DWORD node = 77;
    EXPECT_EQ(FindFastestNuma(kCard, node), 1);
    EXPECT_EQ(test.machine.Get<platform::Streams>().output,
              "FindFastestNuma: fewer processors than nodes\n");
}

TEST(InitCtx, NeedsTheCard) {
    const struct {
        const char16_t* guid;
        const char* error;
    } cases[] = {
        {u"0002c90300a5b6c1", "device with guid 0002c90300a5b6c1 was not found\n"},
        {u"0002C90300A5B6C0", "device with guid 0002C90300A5B6C0 was not found\n"},
        {u"", "device with guid  was not found\n"},
    };
    for (const auto& c : cases) {
        TestMachine test;
        EXPECT_EQ(init_ctx(c.guid), nullptr);
        EXPECT_EQ(test.machine.Get<platform::Streams>().error, c.error);
    }
    TestMachine test(Sample().NoCard());
    EXPECT_EQ(init_ctx(kCard), nullptr);
    EXPECT_EQ(test.machine.Get<platform::Streams>().error, "");
}

struct Named : OpenPort {
    Named(int port, bool ethernet) : OpenPort(port, ethernet) {
        const std::u16string name = Wide(Sample::ConnectionName(port));
        std::copy(name.begin(), name.end(), connectionName);
    }
};

TEST(GetClosestNuma, ReadsTheMaskOfAnIpoibPort) {
    // A port GUID outside the known prefixes, whose MAC the mask selects.
    const Sample base = Sample()
                            .OnePort(Sample::Kind::Ipoib)
                            .Macs("00-02-C9-11-22-33", "00-02-C9-11-22-34")
                            .Processors("16", Runs({8, 8}))
                            .NoCard()
                            .With("SOFTWARE\\StandIn\\Cards\\1111111111111111",
                                  "\"Ports\"=\"0102030405060708\"\n\"DoorbellTicks\"=\"90,40\"");
    const struct {
        const char* mac;
        const char* mask;  // a line of the class key, or null
        bool found;
        Lines log;
    } cases[] = {
        {"01-02-03-06-07-08", nullptr, true, {}},
        {"01-02-03-06-07-08",
         "\"GuidMask\"=\"231\"",
         true,
         {"Getting adapter 1 key GuidMask value: 231"}},
        {"03-04-05-06-07-08",
         "\"GuidMask\"=\"63\"",
         true,
         {"Getting adapter 1 key GuidMask value: 63"}},
        {"01-02-03-06-07-08",
         "\"GuidMask\"=\"0\"",
         false,
         {"Getting adapter 1 key GuidMask value: 0"}},
        {"01-02-03-06-07-08",
         "\"GuidMask\"=\"mask\"",
         false,
         {"Getting adapter 1 key GuidMask value: mask"}},
        {"01-02-03-06-07-08", "\"GuidMask\"=hex:e7,00,00,00", true, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mask ? c.mask : "none");
        Sample sample = base;
        sample.Macs(c.mac, "00-02-C9-11-22-34");
        if (c.mask) sample.PortValue(1, c.mask);
        TestMachine test(sample);
        test.Attach();
        const Named port(1, false);
        DWORD node = 77;
        {
            OpenLog log;
            EXPECT_EQ(GetClosestNuma(&log.stream, port, node), c.found);
        }
        EXPECT_EQ(LogOf(test), c.log);
        EXPECT_EQ(node, c.found ? 1u : 77u);
    }
}

TEST(GetClosestNuma, PrintsWhichStepFailed) {
    const struct {
        const char* call;
        const char* argument;
        const char* output;
    } cases[] = {
        {"GetIfTable2", "",
         "GetIfTable2 Failed\nGetMacFromIF Failed\n"
         "GetGuidFromIF(AdapterIF Local Area Connection 3) Failed\n"},
        {"LoadLibraryW", "ibal.dll",
         "GetCaGuidFromPortGuid Failed\n"
         "GetGuidFromIF(AdapterIF Local Area Connection 3) Failed\n"},
        {"ib_create_qp", "", "init_ctx failed\nFindFastestNuma Failed\n"},
    };
    for (const auto& c : cases) {
        TestMachine test;
        const Named port(1, true);
        test.machine.faults.FailCalls(c.call, Wide(c.argument), 5);
        DWORD node = 77;
        EXPECT_FALSE(GetClosestNuma(nullptr, port, node));
        EXPECT_EQ(test.machine.Get<platform::Streams>().output, c.output);
    }
}

}  // namespace
