// The probe measures one processor a node and gives the fastest.

#include "ClosestNuma.h"

#include "ProbeContext.h"
#include "TuningTest.h"

namespace {

constexpr char16_t kCard[] = u"0002c90300a5b6c0";
constexpr char kTwoNodes[] = "0,0,0,0,0,0,0,0,1,1,1,1,1,1,1,1";
constexpr char kFourNodes[] = "0,0,0,0,1,1,1,1,2,2,2,2,3,3,3,3";
constexpr DWORD kNoNode = 77;
constexpr Sample::Kind kIpoib = Sample::Kind::Ipoib;

TEST(FindFastestNuma, MeasuresTheFirstProcessorOfEachSlice) {
    const struct {
        const char *groups, *nodes, *ticks;
        std::size_t measured;
        DWORD closest;
        const char* reason;
    } cases[] = {
        {"16", kTwoNodes, "90,40", 2, 1, "two nodes"},
        {"8,8", kTwoNodes, "40,90", 2, 0, "two groups"},
        {"16", kTwoNodes, "50,50", 2, 0, "equal times keep the lower node"},
        {"10", "0,0,0,1,1,1,2,2,2,2", "90,80,70", 4, 2, "10 processors in 3 nodes"},
        {"10", "0,0,0,1,1,1,1,1,1,2", "90,80,70", 4, 3, "their last one is above the highest"},
        {"16", kFourNodes, "2500,2500,10,10", 3, 2, "exactly 5000 ms go on"},
        {"16", kFourNodes, "2500,2501,10,10", 2, 0, "5001 ms end it"},
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

// From the adapter's name to its card, through the context that the measurement needs, and back.
TEST(GetClosestNuma, AFailedCallHasItsLineAndEverythingIsReleased) {
    const std::string lookup = "GetGuidFromIF(AdapterIF Local Area Connection 3) Failed\n";
    const struct {
        bool found;
        std::string error, output;
    } ends[] = {
        {false, "", "GetMacFromIF Failed\n" + lookup},
        {false, "IpoIbMacToPortGuid failed\n", "GetPortGuidFromMac Failed\n" + lookup},
        {false, "", "GetCaGuidFromPortGuid Failed\n" + lookup},
        {false, "", "init_ctx failed\nFindFastestNuma Failed\n"},
        {false, "", "FindFastestNuma Failed\n"},
        {true, "", ""},
    };
    enum { MAC, PORT, CARD, CONTEXT, MEASUREMENT, NONE };
    const struct {
        int failed;  // the step that fails
        const char* call;
        std::uint64_t first;
        std::string error, output = "";
        Sample::Kind kind = Sample::Kind::Ethernet;
    } cases[] = {
        {MAC, "GetIfTable2", 1, "", "GetIfTable2 Failed\n"},
        {PORT, "LoadLibraryExW", 1, "ibal.dll is not available, error = 5\n", "", kIpoib},
        {PORT, "ib_open_al", 1, "ib_open_al failed status = 5\n", "", kIpoib},
        {PORT, "ib_get_ca_guids", 1, "ib_get_ca_guids1 failed status = 5\n", "", kIpoib},
        {PORT, "ib_open_ca", 1, "ib_open_ca failed with status = 5\n", "", kIpoib},
        {PORT, "ib_query_ca", 2, "", "ib_query_ca failed with status = 5\n", kIpoib},
        {CARD, "LoadLibraryExW", 1, "ibal.dll is not available, error = 5\n"},
        {CARD, "operator new", 1, "failed to allocate memory\n"},
        {CONTEXT, "operator new", 3, ""},
        {CONTEXT, "operator new", 4, "failed to allocate qp.\n"},
        {CONTEXT, "operator new", 7, "Couldn't allocate CA GUID array\n"},
        {CONTEXT, "ib_alloc_pd", 1, "Couldn't allocate PD\n"},
        {CONTEXT, "ib_create_cq", 1, "Couldn't create CQ\nib_status = 5\n"},
        {CONTEXT, "ib_create_qp", 1, "Couldn't create QP\n"},
        {CONTEXT, "ib_modify_qp", 1, "Failed to modify QP to INIT\n"},
        {MEASUREMENT, "GetNumaHighestNodeNumber", 1, "",
         "GetNumaHighestNodeNumber failed gle = 5\n"},
        {MEASUREMENT, "GetNumaProcessorNodeEx", 2, "",
         "GetNumaProcessorNode(CurrProcessor 8) failed gle = 5\n"},
        {MEASUREMENT, "SetThreadGroupAffinity", 2, "",
         "SetThreadAffinityMask failed  for processor 8 gle = 5\n"},
        {NONE, "ib_destroy_qp", 1, "Failed to destroy QP\n"},
        {NONE, "ib_dealloc_pd", 1, "Failed to deallocate PD\n"},
        {NONE, "ib_close_al", 2, "Failed to close al\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.call << " " << c.first);
        TestMachine test(Sample().OnePort(c.kind).Processors("16", kTwoNodes));
        test.Attach();
        OpenPort port(1, c.kind != kIpoib);
        port.Named(Sample::ConnectionName(1));
        test.machine.faults.FailCalls(c.call, u"", 5, c.first);
        DWORD node = kNoNode;
        EXPECT_EQ(GetClosestNuma(nullptr, port, node), ends[c.failed].found);
        EXPECT_EQ(Errors(test), c.error + ends[c.failed].error);
        EXPECT_EQ(Output(test), c.output + ends[c.failed].output);
    }
}

}  // namespace
