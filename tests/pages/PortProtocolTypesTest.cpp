// The rules of the Port Protocol tab without a window: texts, capabilities, and what the buttons
// show.

#include "PortTypes.h"

#include <gtest/gtest.h>

#include <string>

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

// What the buttons of a port that has both protocols show, by its type: none, ib, eth, auto.
struct Rendering {
    bool sensing;
    bool autoIsEthernet;
    const char* shown[4];
};
constexpr Rendering kRenderings[] = {
    {false, false, {"oo-", "*o-", "o*-", "*o-"}},
    {false, true, {"oo-", "*o-", "o*-", "o*-"}},
    {true, false, {"ooo", "*oo", "o*o", "oo*"}},
    {true, true, {"ooo", "*oo", "o*o", "oo*"}},
};

struct Masks {
    DWORD infiniBand;
    DWORD ethernet;
    DWORD sensing;
    DWORD autoIsEthernet;
};
constexpr Masks kMasks[] = {{0x02, 0x08, 0x80, 0x200}, {0x04, 0x10, 0x100, 0x400}};

const char* Expected(DWORD flag, const Masks& masks, PortType type) {
    const bool infiniBand = (flag & masks.infiniBand) != 0;
    const bool ethernet = (flag & masks.ethernet) != 0;
    if (infiniBand != ethernet) return ethernet ? "-X-" : "X--";
    for (const Rendering& row : kRenderings) {
        if (row.sensing == ((flag & masks.sensing) != 0) &&
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
                const PortControls shown = PortControlsFor({flag, single}, {type1, type2});
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

}  // namespace
