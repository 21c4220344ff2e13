// The probe measures one processor a node and gives the fastest.

#include "ClosestNuma.h"

#include "ProbeContext.h"
#include "TuningTest.h"

namespace {

constexpr char16_t kCard[] = u"0002c90300a5b6c0";
constexpr char kTwoNodes[] = "0,0,0,0,0,0,0,0,1,1,1,1,1,1,1,1";
constexpr char kFourNodes[] = "0,0,0,0,1,1,1,1,2,2,2,2,3,3,3,3";
constexpr DWORD kNoNode = 77;
constexpr char kNoContext[] = "init_ctx failed\n";

TEST(FindFastestNuma, MeasuresTheFirstProcessorOfEachSlice) {
    const struct {
        const char *groups, *nodes, *ticks;
        std::size_t measured;
        DWORD closest;
        const char* reason;
    } cases[] = {
        {"16", kTwoNodes, "90,40", 2, 1, "two nodes"},
        {"8,8", kTwoNodes, "40,90", 2, 0, "two groups"},
        {"16", kFourNodes, "90,80,30,60", 4, 2, "four nodes"},
        {"16", kTwoNodes, "50,50", 2, 0, "equal times keep the lower node"},
        {"10", "0,0,0,1,1,1,2,2,2,2", "90,80,70", 4, 2, "10 processors in 3 nodes"},
        {"10", "0,0,0,1,1,1,1,1,1,2", "90,80,70", 4, 3, "their last one is above the highest"},
        {"16", kFourNodes, "2500,2500,10,10", 3, 2, "exactly 5000 ms go on"},
        {"16", kFourNodes, "2500,2501,10,10", 2, 0, "5001 ms end it"},
        {"16", kFourNodes, "9000,10,10,10", 1, 0, "one is always measured"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample().Processors(c.groups, c.nodes).Ticks(c.ticks));
        test.machine.trace.Start();
        DWORD node = kNoNode;
        EXPECT_EQ(FindFastestNuma(kCard, node), 0);
        EXPECT_EQ(node, c.closest);
        EXPECT_EQ(test.machine.trace.Count("SetThreadGroupAffinity"), c.measured);
        EXPECT_EQ(Errors(test), "");
    }
}

TEST(FindFastestNuma, AFailedCallHasItsLineAndEverythingIsReleased) {
    const struct {
        const char *call, *error;
        const char* output = kNoContext;
        std::uint64_t first = 1;
        int result = 1;
    } cases[] = {
        {"operator new", "", kNoContext, 1},
        {"operator new", "failed to allocate qp.\n", kNoContext, 2},
        {"operator new", "failed to allocate qp_attr.\n", kNoContext, 3},
        {"operator new", "Couldn't allocate work buf.\n", kNoContext, 4},
        {"operator new", "Couldn't allocate CA GUID array\n", kNoContext, 5},
        {"operator new", "Couldn't allocate CA attributes buffer\n", kNoContext, 6},
        {"ib_open_al", "ib_open_al failed status = 5\n"},
        {"ib_open_ca", "ib_open_ca failed with status = 5\n"},
        {"ib_alloc_pd", "Couldn't allocate PD\n"},
        {"ib_reg_mem", "Couldn't allocate MR\n"},
        {"ib_create_cq", "Couldn't create CQ\nib_status = 5\n"},
        {"ib_create_qp", "Couldn't create QP\n"},
        {"ib_modify_qp", "Failed to modify QP to INIT\n"},
        {"ib_query_qp", "Failed to modify QP to INIT\n"},
        {"GetNumaHighestNodeNumber", "", "GetNumaHighestNodeNumber failed gle = 5\n"},
        {"GetNumaProcessorNodeEx", "", "GetNumaProcessorNode(CurrProcessor 8) failed gle = 5\n", 2},
        {"SetThreadGroupAffinity", "", "SetThreadAffinityMask failed  for processor 8 gle = 5\n",
         2},
        {"ib_destroy_qp", "Failed to destroy QP\n", "", 1, 0},
        {"ib_destroy_cq", "Failed to destroy CQ\n", "", 1, 0},
        {"ib_dereg_mr", "Failed to deregister MR\n", "", 1, 0},
        {"ib_dealloc_pd", "Failed to deallocate PD\n", "", 1, 0},
        {"ib_close_ca", "Failed to close ca\n", "", 1, 0},
        {"ib_close_al", "Failed to close al\n", "", 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.call << " " << c.first);
        TestMachine test(Sample().Processors("16", kTwoNodes));
        test.machine.faults.FailCalls(c.call, u"", 5, c.first);
        DWORD node = kNoNode;
        EXPECT_EQ(FindFastestNuma(kCard, node), c.result);
        EXPECT_EQ(Errors(test), c.error);
        EXPECT_EQ(Output(test), c.output);
    }
}

TEST(FindFastestNuma, FailsWithMoreNodesThanProcessors) {
    TestMachine test(Sample()
                         .Processors("2", "0,1")
                         .With("SOFTWARE\\StandIn\\Processors", "\"HighestNode\"=dword:5"));
    DWORD node = kNoNode;
    EXPECT_EQ(FindFastestNuma(kCard, node), 1);
    EXPECT_EQ(Output(test), "FindFastestNuma: fewer processors than nodes\n");
}

TEST(InitCtx, NeedsTheCard) {
    for (const std::string guid : {"0002c90300a5b6c1", "0002C90300A5B6C0", ""}) {
        TestMachine test;
        EXPECT_EQ(init_ctx(Wide(guid).c_str()), nullptr);
        EXPECT_EQ(Errors(test), "device with guid " + guid + " was not found\n");
    }
    TestMachine test(Sample().NoCard());
    EXPECT_EQ(init_ctx(kCard), nullptr);
    EXPECT_EQ(Errors(test), "");
}

TEST(GetClosestNuma, ReadsTheMaskOfAnIpoibPort) {
    const struct {
        const char* mac;  // derived from the port's GUID 0102030405060708
        const char* mask;
        const char* logged;  // the text that the log shows, or null for no line
        bool found;
    } cases[] = {
        {"01-02-03-06-07-08", "\"Other\"=\"\"", nullptr, true},
        {"01-02-03-06-07-08", "\"GuidMask\"=\"231\"", "231", true},
        {"03-04-05-06-07-08", "\"GuidMask\"=\"63\"", "63", true},
        {"01-02-03-06-07-08", "\"GuidMask\"=\"0\"", "0", false},
        {"01-02-03-06-07-08", "\"GuidMask\"=\"mask\"", "mask", false},
        {"01-02-03-06-07-08", "\"GuidMask\"=hex:e7,00,00,00", nullptr, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mask);
        TestMachine test(Sample()
                             .OnePort(Sample::Kind::Ipoib)
                             .Macs(c.mac, "")
                             .Processors("16", kTwoNodes)
                             .NoCard()
                             .With("SOFTWARE\\StandIn\\Cards\\1111111111111111",
                                   "\"Ports\"=\"0102030405060708\"\n\"DoorbellTicks\"=\"90,40\"")
                             .PortValue(1, c.mask));
        test.Attach();
        OpenPort port(1, false);
        port.Named(Sample::ConnectionName(1));
        DWORD node = kNoNode;
        Lines expected;
        if (c.logged) expected = {"Getting adapter 1 key GuidMask value: " + std::string(c.logged)};
        EXPECT_EQ(
            Logged(test,
                   [&](LogStream* log) { EXPECT_EQ(GetClosestNuma(log, port, node), c.found); }),
            expected);
        EXPECT_EQ(node, c.found ? 1u : kNoNode);
    }
}

TEST(GetClosestNuma, PrintsWhichStepFailed) {
    const std::string lookup = "GetGuidFromIF(AdapterIF Local Area Connection 3) Failed\n";
    const struct {
        const char* call;
        std::string output;
    } cases[] = {
        {"GetIfTable2", "GetIfTable2 Failed\nGetMacFromIF Failed\n" + lookup},
        {"LoadLibraryW", "GetCaGuidFromPortGuid Failed\n" + lookup},
        {"ib_create_qp", "init_ctx failed\nFindFastestNuma Failed\n"},
    };
    for (const auto& c : cases) {
        TestMachine test;
        OpenPort port(1);
        port.Named(Sample::ConnectionName(1));
        test.machine.faults.FailCalls(c.call, u"", 5);
        DWORD node = kNoNode;
        EXPECT_FALSE(GetClosestNuma(nullptr, port, node));
        EXPECT_EQ(Output(test), c.output);
    }
}

}  // namespace
