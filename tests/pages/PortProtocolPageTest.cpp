// The Port Protocol tab as it opens, and what a choice shows.

#include "PortProtocolTest.h"

using namespace port_protocol;

namespace {

// As many characters, without a terminator, as a value in bytes.
std::string Unterminated(const std::string& ascii) {
    std::string line = "hex(1):";
    for (const char character : ascii) {
        char bytes[8];
        std::snprintf(bytes, sizeof(bytes), "%02x,00,", static_cast<unsigned char>(character));
        line += bytes;
    }
    if (!ascii.empty()) line.pop_back();
    return line;
}

TEST(PortProtocolPage, StartsWithWhatTheRegistryHolds) {
    const std::string x246(246, 'x');
    const struct {
        Sample sample;
        const char* captions;
        const char* state;
        const char* reason;
    } cases[] = {
        {Bus(kAll), "", "HW --- ---", "nothing chosen"},
        {Bus(kAll, R"("ib,eth")"), "", "*oo o*o", "two types"},
        {Bus(kAll, R"("auto,none")"), "", "oo* ooo", "none for port 2 only"},
        {Bus(kAll, R"("none,eth")"), "", "HW --- ---", "none for port 1"},
        {Bus(kAll, R"("ib")"), "W", "*oo *oo", "no comma"},
        {Bus(kAll, R"("IB,ethx")"), "EE", "*oo *oo", "another case, and more than a token"},
        {Bus(kAll, R"("eth, eth")"), "E", "o*o *oo", "a blank"},
        {Bus(kAll, R"("eth,ib,auto")"), "E", "o*o *oo", "all behind the first comma"},
        {Bus(kAll, Unterminated("eth," + x246)), "E", "o*o *oo", "500 bytes"},
        {Bus(kAll, Unterminated("eth,x" + x246)), "W", "*oo *oo", "502 bytes"},
        {Bus(kAll, "dword:00000002"), "W", "*oo *oo", "a number"},
        {Bus(kSingle), "", "HW --- (---)", "one port, nothing chosen"},
        {Bus(kSingle, R"("auto,nonsense")"), "", "oo* (---)", "what stands behind a comma"},
        {Sample().With(ParametersPath(), R"("PortType"="eth")"), "", "o*- (---)",
         "no capabilities"},
        {Sample(), "W", "*o- *o-", "no key"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        PortProtocolTest test(c.sample);
        for (const char* box = c.captions; *box; ++box)
            test.user.Answer(IDOK);
        test.OnTab([&] {
            EXPECT_EQ(State(test), c.state);
            EXPECT_EQ(test.Captions(), c.captions);
            EXPECT_FALSE(test.CanApply());
        });
        for (const auto& box : test.user.Boxes()) {
            EXPECT_EQ(box.text, kInvalid);
            EXPECT_EQ(box.style, 16u);
        }
    }
}

TEST(PortProtocolPage, OffersWhatThePortsAreCapableOf) {
    const struct {
        const char* flag;
        const char* types;
        const char* state;
        const char* reason;
    } cases[] = {
        {"0000001e", "auto,auto", "*o- *o-", "no sensing"},
        {"0000021e", "auto,auto", "o*- *o-", "port 1 is Ethernet where it can't sense"},
        {"0000041e", "auto,auto", "*o- o*-", "port 2 is"},
        {"0000069e", "auto,auto", "oo* o*-", "which doesn't count where port 1 can sense"},
        {"0000071e", "auto,auto", "o*- oo*", "or port 2"},
        {"0000000e", "eth,eth", "o*- X--", "port 2 without Ethernet"},
        {"0000001a", "ib,ib", "*o- -X-", "port 2 without InfiniBand"},
        {"00000016", "eth,eth", "X-- o*-", "port 1 without Ethernet"},
        {"00000194", "eth,none", "o*o ooo", "port 1 with neither, and a type for one port only"},
        {"00000008", "ib", "-X- (---)", "a lone port without InfiniBand"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        PortProtocolTest test(Bus(c.flag, std::string("\"") + c.types + "\""));
        test.OnTab([&] { EXPECT_EQ(State(test), c.state); });
    }
}

TEST(PortProtocolPage, ShowsWhatThePortsRun) {
    const struct {
        const char* flag;
        const char* setting;  // the line's right side, or null for none
        const char* port1;
        const char* port2;
    } cases[] = {
        {kAll, "dword:00020001", "IB", "Eth"},      {kAll, "dword:00010002", "Eth", "IB"},
        {kAll, "dword:00010001", "IB", "IB"},       {kAll, nullptr, "Eth", "Eth"},
        {kSingle, "dword:00010001", "IB", ""},      {kAll, "hex:01,00", "IB", "Eth"},
        {kAll, "hex:01,00,01,00,00", "Eth", "Eth"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.flag << " " << (c.setting ? c.setting : "none"));
        Sample sample = Bus(c.flag);
        if (c.setting) sample.With(ParametersPath(), std::string("\"PortSetting\"=") + c.setting);
        PortProtocolTest test(sample);
        test.OnTab([&] {
            EXPECT_EQ(TextOf(test, 1079), c.port1);
            EXPECT_EQ(TextOf(test, 1080), c.port2);
            const bool single = c.flag == kSingle;
            EXPECT_EQ(TextOf(test, 1082), single ? "" : "Port2:");
            EXPECT_EQ(IsWindowVisible(GetDlgItem(test.Page(), 1097)), !single);
        });
    }
}

}  // namespace
