// From a connection's name to its card, and the MAC addresses of IPoIB ports.

#include "CardLookup.h"

#include <bit>

#include "LibraryState.h"
#include "TuningTest.h"

namespace {

struct Guid {
    BYTE g[8];
};

net64_t Net(const Guid& guid) {
    return std::bit_cast<net64_t>(guid);
}

std::string Mac(const BYTE (&mac)[6]) {
    std::string text;
    for (const BYTE b : mac) {
        text += "0123456789abcdef"[b >> 4];
        text += "0123456789abcdef"[b & 15];
    }
    return text;
}

std::string TextOf(const WCHAR* text) {
    return platform::ToUtf8(text);
}

TEST(IpoIbPortGuidToMac, TakesTheFirstRuleThatFits) {
    const struct {
        Guid guid;
        ULONG mask;
        const char* mac;
        const char* reason;
    } cases[] = {
        {{{0, 2, 0xC9, 2, 0, 0x11, 0x22, 0x33}}, 0, "0002c9112233", "vendor, kind 2"},
        {{{0, 2, 0xC9, 3, 0, 0x11, 0x22, 0x33}}, 0xFF, "0202c9112233", "vendor, kind 3"},
        {{{0, 2, 0xC9, 2, 1, 0x11, 0x22, 0x33}}, 0xE7, "020000000001", "vendor, other kind"},
        {{{0, 8, 0xF1, 9, 0xA0, 0xB1, 0x0C, 0x1D}}, 0xE7, "0008f1acacda", "second vendor"},
        {{{0, 8, 0xF1, 9, 0xA0, 0xFF, 0xFF, 0x03}}, 0, "0008f15ffc01", "the sum in eight bits"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0xE7, "010203060708", "the default mask"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0x3F, "030405060708", "the last six"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0xFC, "010203040506", "the first six"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0x7E, "020304050607", "the middle"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0xFFFFFFE7, "010203060708", "bits above the eighth"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0x7F, "020000000001", "seven bits"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0x1F, "020000000001", "five bits"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0, "020000000001", "no mask"},
    };
    for (const auto& c : cases) {
        TestMachine test;
        test.Attach();
        BYTE mac[6] = {};
        EXPECT_EQ(IpoIbPortGuidToMac(Net(c.guid), c.mask, mac), 0) << c.reason;
        EXPECT_EQ(Mac(mac), c.mac) << c.reason;
    }
}

TEST(IpoIbPortGuidToMac, CountsUpUntilTheCounterHasRunThrough) {
    TestMachine test;
    test.Attach();
    const net64_t other = Net({{1, 2, 3, 4, 5, 6, 7, 8}});
    BYTE mac[6] = {};
    Library().fallbackMacCount = 0x01020303;
    EXPECT_EQ(IpoIbPortGuidToMac(other, 0, mac), 0);
    EXPECT_EQ(Mac(mac), "020001020304");
    Library().fallbackMacCount = 0xFFFFFFFF;
    EXPECT_EQ(IpoIbPortGuidToMac(other, 0, mac), 28);
    EXPECT_EQ(Mac(mac), "020001020304");
    EXPECT_EQ(IpoIbPortGuidToMac(other, 0, mac), 0) << "it starts over";
}

AdapterIfInfo InfoOf(const char* alias) {
    AdapterIfInfo info;
    const std::u16string text = Wide(alias);
    std::copy(text.begin(), text.end(), info.alias);
    return info;
}

TEST(GetMacFromIF, TakesTheInterfaceOfThatName) {
    const Sample sample = Sample()
                              .Ports(Sample::Kind::Ethernet, Sample::Kind::Ipoib)
                              .Macs("00-02-C9-11-22-33", "00-02-C9-AA-BB-CC");
    const struct {
        const char* alias;
        int result;
        const char* mac;
        bool ethernet;
    } cases[] = {
        {"Local Area Connection 3", 0, "0002c9112233", true},
        {"Local Area Connection 4", 0, "0002c9aabbcc", false},
        {"local area connection 3", 1, "000000000000", false},
        {"Local Area Connection", 1, "000000000000", false},
    };
    for (const auto& c : cases) {
        TestMachine test(sample);
        AdapterIfInfo info = InfoOf(c.alias);
        EXPECT_EQ(GetMacFromIF(info), c.result) << c.alias;
        EXPECT_EQ(Mac(info.mac), c.mac) << c.alias;
        EXPECT_EQ(info.isEthernetInterface, c.ethernet) << c.alias;
        EXPECT_EQ(test.machine.Get<platform::Streams>().output,
                  c.result ? c.alias + std::string(" was not found\n") : "");
    }
    TestMachine test(sample);
    test.machine.faults.FailCalls("GetIfTable2", u"", 8);
    AdapterIfInfo info = InfoOf("Local Area Connection 3");
    EXPECT_EQ(GetMacFromIF(info), 1);
    EXPECT_EQ(test.machine.Get<platform::Streams>().output, "GetIfTable2 Failed\n");
}

TEST(CardLookup, FollowsAnEthernetPortWithoutTheLayer) {
    const struct {
        const char* mac;
        const char* portGuid;
    } cases[] = {{"00-02-C9-11-22-33", "0202c9fffe112233"},
                 {"02-02-C9-11-22-33", "0002c9fffe112233"}};
    for (const auto& c : cases) {
        TestMachine test(Sample().Macs(c.mac, "00-02-C9-11-22-34"));
        AdapterIfInfo info = InfoOf(Sample::ConnectionName(1));
        ASSERT_EQ(GetMacFromIF(info), 0);
        test.machine.trace.Start();
        ASSERT_EQ(GetPortGuidFromMac(info), 0);
        EXPECT_EQ(test.machine.trace.Count("LoadLibraryW"), 0u);
        EXPECT_EQ(TextOf(info.portGuidText), c.portGuid);
        ASSERT_EQ(GetCaGuidFromPortGuid(info), 0);
        EXPECT_EQ(TextOf(info.caGuidText), "0002c90300a5b6c0");
    }
}

TEST(CardLookup, FollowsAnIpoibPortThroughItsDerivedMac) {
    TestMachine test(Sample()
                         .Ports(Sample::Kind::Ipoib, Sample::Kind::Ipoib)
                         .Macs("00-02-C9-11-22-33", "00-02-C9-11-22-34"));
    test.Attach();
    AdapterIfInfo info = InfoOf(Sample::ConnectionName(2));
    ASSERT_EQ(GetMacFromIF(info), 0);
    ASSERT_EQ(GetPortGuidFromMac(info), 0);
    EXPECT_EQ(TextOf(info.portGuidText), "0002c90200112234");
    ASSERT_EQ(GetCaGuidFromPortGuid(info), 0);
    EXPECT_EQ(TextOf(info.caGuidText), "0002c90300a5b6c0");
    EXPECT_EQ(test.machine.Get<platform::Streams>().output, "Matched\n");
}

TEST(CardLookup, NoMatchIsNoFailure) {
    TestMachine test(Sample().OnePort(Sample::Kind::Ipoib).NoCard());
    test.Attach();
    AdapterIfInfo info = InfoOf(Sample::ConnectionName(1));
    ASSERT_EQ(GetMacFromIF(info), 0);
    EXPECT_EQ(GetPortGuidFromMac(info), 0);
    EXPECT_EQ(info.portGuid, 0u);
    EXPECT_EQ(GetCaGuidFromPortGuid(info), 0);
    EXPECT_EQ(TextOf(info.caGuidText), "");
}

TEST(CardLookup, AFailingLayerIsReported) {
    const struct {
        const char* call;
        DWORD status;
        std::uint64_t first;
        const char* error;
        const char* output;
    } cases[] = {
        {"ib_open_al", 7, 1, "ib_open_al failed status = 7\n", ""},
        {"ib_get_ca_guids", 7, 1, "ib_get_ca_guids1 failed status = 7\n", ""},
        {"ib_get_ca_guids", 7, 2, "ib_get_ca_guids2 failed with status = 7\n", ""},
        {"ib_open_ca", 7, 1, "ib_open_ca failed with status = 7\n", ""},
        {"ib_query_ca", 7, 1, "Failed to query device props", ""},
        {"ib_query_ca", 7, 2, "", "ib_query_ca failed with status = 7\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        TestMachine test(Sample().OnePort(Sample::Kind::Ipoib));
        test.Attach();
        test.machine.faults.FailCalls(c.call, u"", c.status, c.first);
        AdapterIfInfo info = InfoOf(Sample::ConnectionName(1));
        EXPECT_EQ(GetPortGuidFromMac(info), 1);
        const auto& streams = test.machine.Get<platform::Streams>();
        EXPECT_EQ(streams.error, c.error + std::string("IpoIbMacToPortGuid failed\n"));
        EXPECT_EQ(streams.output, c.output);
    }
}

TEST(CardLookup, RunsWhereThereIsNoLayer) {
    TestMachine test(Sample().OnePort(Sample::Kind::Ipoib));
    test.Attach();
    test.machine.faults.FailCalls("LoadLibraryW", u"ibal.dll", ERROR_MOD_NOT_FOUND);
    AdapterIfInfo info = InfoOf(Sample::ConnectionName(1));
    EXPECT_EQ(GetPortGuidFromMac(info), 1);
    EXPECT_EQ(GetCaGuidFromPortGuid(info), 1);
}

}  // namespace
