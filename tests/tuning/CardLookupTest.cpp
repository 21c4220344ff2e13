// From a connection's name to its card, and the MAC addresses of IPoIB ports.

#include "CardLookup.h"

#include <bit>

#include "LibraryState.h"
#include "TuningTest.h"

namespace {

struct Guid {
    BYTE g[8];
};

std::string Mac(const BYTE (&mac)[6]) {
    std::string text;
    for (const BYTE b : mac) {
        text += "0123456789abcdef"[b >> 4];
        text += "0123456789abcdef"[b & 15];
    }
    return text;
}

TEST(IpoIbPortGuidToMac, TakesTheFirstRuleThatFits) {
    const ULONG none = 0xFFFFFFFF;
    const struct {
        Guid guid;
        ULONG mask;
        const char *mac, *reason;
        ULONG counter = 0;
        int result = 0;
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
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0x7F, "020000000001", "seven bits"},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0, "020001020304", "no mask, and the counter", 0x01020303},
        {{{1, 2, 3, 4, 5, 6, 7, 8}}, 0, "000000000000", "the counter has run through", none, 28},
    };
    TestMachine test;
    test.Attach();
    for (const auto& c : cases) {
        Library().fallbackMacCount = c.counter;
        BYTE mac[6] = {};
        EXPECT_EQ(IpoIbPortGuidToMac(std::bit_cast<net64_t>(c.guid), c.mask, mac), c.result)
            << c.reason;
        EXPECT_EQ(Mac(mac), c.mac) << c.reason;
    }
}

// The second port would get the first number again, and be taken.
TEST(CardLookup, EndsWhenTheCounterHasRunThrough) {
    TestMachine test(Sample().NoCard().With("SOFTWARE\\StandIn\\Cards\\1111111111111111",
                                            "\"Ports\"=\"0102030405060708;1112131415161718\""));
    test.Attach();
    Library().fallbackMacCount = ~ULONG{0};
    AdapterIfInfo info;
    info.mac[0] = 2;
    info.mac[5] = 1;
    EXPECT_EQ(IpoIbMacToPortGuid(info), 0);
    EXPECT_EQ(info.portGuid, 0u);
    EXPECT_EQ(Output(test), "IpoIbPortGuidToMac failed\n");
}

// The layer's library is asked for an IPoIB port only.
TEST(CardLookup, FollowsAPortToItsCard) {
    const struct {
        Sample::Kind kind;
        const char* mac;
        bool card;
        const char *portGuid, *cardGuid, *output;
    } cases[] = {
        {Sample::Kind::Ethernet, "00-02-C9-11-22-33", true, "0202c9fffe112233", "0002c90300a5b6c0",
         ""},
        {Sample::Kind::Ethernet, "02-02-C9-11-22-33", true, "0002c9fffe112233", "0002c90300a5b6c0",
         ""},
        {Sample::Kind::Ipoib, "00-02-C9-11-22-34", true, "0002c90200112234", "0002c90300a5b6c0",
         "Matched\n"},
        {Sample::Kind::Ipoib, "00-02-C9-11-22-34", false, "0000000000000000", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.portGuid);
        Sample sample = Sample().Ports(c.kind, c.kind).Macs("00-02-C9-11-22-35", c.mac);
        if (!c.card) sample.NoCard();
        TestMachine test(sample);
        test.Attach();
        AdapterIfInfo info;
        Wide(Sample::ConnectionName(2)).copy(info.alias, ARRAYSIZE(info.alias) - 1);
        ASSERT_EQ(GetMacFromIF(info), 0);
        EXPECT_EQ(info.isEthernetInterface, c.kind == Sample::Kind::Ethernet);
        test.machine.trace.Start();
        EXPECT_EQ(GetPortGuidFromMac(info), 0);
        EXPECT_EQ(test.machine.trace.Count("LoadLibraryExW"), c.kind == Sample::Kind::Ipoib);
        EXPECT_EQ(platform::ToUtf8(info.portGuidText), c.portGuid);
        EXPECT_EQ(GetCaGuidFromPortGuid(info), 0) << "no match is no failure";
        EXPECT_EQ(platform::ToUtf8(info.caGuidText), c.cardGuid);
        EXPECT_EQ(Output(test), c.output);
    }
}

}  // namespace
