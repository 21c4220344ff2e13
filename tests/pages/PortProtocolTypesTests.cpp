// The rules of the Port Protocol tab without a window: texts, capabilities, and what the buttons
// show.

#include "PortTypes.h"

#include <gtest/gtest.h>

#include <string>

#include "Fixture.h"
#include "Text.h"

namespace {

constexpr PortType kTypes[] = {ePORT_TYPE_NONE, ePORT_TYPE_IB, ePORT_TYPE_ETH, ePORT_TYPE_AUTO};
constexpr char kNothing[] = "---";

// The three buttons of a port, a character each: - disabled, X disabled and checked, o enabled,
// * enabled and checked.
std::string Shown(const PortButtons& port) {
    const auto button = [&](PortType type, bool enabled) {
        return port.checked == type ? (enabled ? '*' : 'X') : (enabled ? 'o' : '-');
    };
    return {button(ePORT_TYPE_IB, port.canChoose), button(ePORT_TYPE_ETH, port.canChoose),
            button(ePORT_TYPE_AUTO, port.canSense)};
}

struct Rendering {
    bool infiniBand;
    bool ethernet;
    bool sensing;
    bool autoIsEthernet;
    const char* shown[4];  // by type: none, ib, eth, auto
};
constexpr Rendering kRenderings[] = {
    // neither protocol: as with both
    {false, false, false, false, {"oo-", "*o-", "o*-", "*o-"}},
    {false, false, false, true, {"oo-", "*o-", "o*-", "o*-"}},
    {false, false, true, false, {"ooo", "*oo", "o*o", "oo*"}},
    {false, false, true, true, {"ooo", "*oo", "o*o", "oo*"}},
    // Ethernet only
    {false, true, false, false, {"-X-", "-X-", "-X-", "-X-"}},
    {false, true, false, true, {"-X-", "-X-", "-X-", "-X-"}},
    {false, true, true, false, {"-X-", "-X-", "-X-", "-X-"}},
    {false, true, true, true, {"-X-", "-X-", "-X-", "-X-"}},
    // InfiniBand only
    {true, false, false, false, {"X--", "X--", "X--", "X--"}},
    {true, false, false, true, {"X--", "X--", "X--", "X--"}},
    {true, false, true, false, {"X--", "X--", "X--", "X--"}},
    {true, false, true, true, {"X--", "X--", "X--", "X--"}},
    // both
    {true, true, false, false, {"oo-", "*o-", "o*-", "*o-"}},
    {true, true, false, true, {"oo-", "*o-", "o*-", "o*-"}},
    {true, true, true, false, {"ooo", "*oo", "o*o", "oo*"}},
    {true, true, true, true, {"ooo", "*oo", "o*o", "oo*"}},
};

struct Masks {
    DWORD infiniBand;
    DWORD ethernet;
    DWORD sensing;
    DWORD autoIsEthernet;
};
constexpr Masks kMasks[] = {{0x02, 0x08, 0x80, 0x200}, {0x04, 0x10, 0x100, 0x400}};

const char* Expected(DWORD flag, const Masks& masks, PortType type) {
    for (const Rendering& row : kRenderings) {
        if (row.infiniBand == ((flag & masks.infiniBand) != 0) &&
            row.ethernet == ((flag & masks.ethernet) != 0) &&
            row.sensing == ((flag & masks.sensing) != 0) &&
            row.autoIsEthernet == ((flag & masks.autoIsEthernet) != 0))
            return row.shown[type];
    }
    return "no row";
}

TEST(PortRendering, FollowsTheCapabilitiesOfEachPort) {
    for (DWORD flag = 0; flag < 0x800; ++flag) {
        const bool single = (flag & 0x14) == 0;
        EXPECT_EQ(IsSinglePort(flag), single) << flag;
        for (const PortType type1 : kTypes) {
            for (const PortType type2 : kTypes) {
                const PortControls shown = RenderPortControls({flag, single}, {type1, type2});
                const bool hardware = type1 == ePORT_TYPE_NONE;
                const char* port1 = hardware ? kNothing : Expected(flag, kMasks[0], type1);
                const char* port2 =
                    hardware || single ? kNothing : Expected(flag, kMasks[1], type2);
                ASSERT_EQ(shown.hardwareDefault, hardware);
                ASSERT_EQ(shown.port2Shown, !single) << flag;
                ASSERT_EQ(Shown(shown.port1), port1) << flag << " " << type1;
                ASSERT_EQ(Shown(shown.port2), port2) << flag << " " << type1 << " " << type2;
            }
        }
    }
}

TEST(PortRendering, WithoutAnyCapabilitiesThereAreStillTwoPorts) {
    const PortControls shown = RenderPortControls({0, false}, {ePORT_TYPE_ETH, ePORT_TYPE_IB});
    EXPECT_TRUE(shown.port2Shown);
    EXPECT_EQ(Shown(shown.port1), "o*-");
    EXPECT_EQ(Shown(shown.port2), "*o-");
}

TEST(PortTypeOf, CapabilitiesIsTheOnlyProtocolElseSensingElseInfiniBand) {
    const struct {
        DWORD flag;
        PortType port1;
        PortType port2;
    } rows[] = {
        {0x000, ePORT_TYPE_IB, ePORT_TYPE_IB},     {0x01E, ePORT_TYPE_IB, ePORT_TYPE_IB},
        {0x008, ePORT_TYPE_ETH, ePORT_TYPE_IB},    {0x010, ePORT_TYPE_IB, ePORT_TYPE_ETH},
        {0x002, ePORT_TYPE_IB, ePORT_TYPE_IB},     {0x198, ePORT_TYPE_ETH, ePORT_TYPE_ETH},
        {0x186, ePORT_TYPE_IB, ePORT_TYPE_IB},     {0x09E, ePORT_TYPE_AUTO, ePORT_TYPE_IB},
        {0x11E, ePORT_TYPE_IB, ePORT_TYPE_AUTO},   {0x180, ePORT_TYPE_AUTO, ePORT_TYPE_AUTO},
        {0x79E, ePORT_TYPE_AUTO, ePORT_TYPE_AUTO}, {0x61E, ePORT_TYPE_IB, ePORT_TYPE_IB},
    };
    for (const auto& row : rows) {
        const PortTypes types = TypesFromCapabilities(row.flag);
        EXPECT_EQ(types.port1, row.port1) << std::hex << row.flag;
        EXPECT_EQ(types.port2, row.port2) << std::hex << row.flag;
    }
}

TEST(PortTypeOf, ATokenIsExactAndWithCase) {
    const struct {
        TextView token;
        bool known;
        PortType type;
    } rows[] = {
        {u"ib", true, ePORT_TYPE_IB},
        {u"eth", true, ePORT_TYPE_ETH},
        {u"auto", true, ePORT_TYPE_AUTO},
        {u"none", true, ePORT_TYPE_NONE},
        {u"", false, {}},
        {u"IB", false, {}},
        {u"i", false, {}},
        {u"ibx", false, {}},
        {u" ib", false, {}},
        {u"eth ", false, {}},
        {u"eth,ib", false, {}},
        {TextView(u"ib\0", 3), false, {}},
    };
    for (const auto& row : rows) {
        PortType type = {};
        EXPECT_EQ(ParsePortType(row.token, type), row.known) << platform::ToUtf8(row.token);
        EXPECT_EQ(type, row.type) << platform::ToUtf8(row.token);
    }
}

TEST(PortTypeText, IsWhatTheReaderTakesBack) {
    TestMachine test;
    for (const PortType type1 : kTypes) {
        for (const PortType type2 : kTypes) {
            const ScopedBstr both = BuildPortType({type1, type2}, false);
            const TextView text(both.Get(), SysStringLen(both.Get()));
            const std::size_t comma = text.find(u',');
            ASSERT_NE(comma, TextView::npos);
            PortTypes read;
            EXPECT_TRUE(ParsePortType(text.substr(0, comma), read.port1));
            EXPECT_TRUE(ParsePortType(text.substr(comma + 1), read.port2));
            EXPECT_TRUE(EqualTypes(read, {type1, type2}, false));

            const ScopedBstr one = BuildPortType({type1, type2}, true);
            EXPECT_EQ(TextView(one.Get()), text.substr(0, comma));
        }
    }
}

}  // namespace
