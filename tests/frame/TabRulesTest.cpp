#include "TabRules.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The tabs by their first letters, in order.
std::string Tabs(const AdapterFlags& flags, const MachineFacts& machine) {
    std::string tabs;
    if (InformationTabApplies(flags)) tabs += 'I';
    if (PerformanceTabApplies(flags)) tabs += 'P';
    if (VlanTabApplies(flags, machine)) tabs += 'V';
    if (TeamingTabApplies(flags, machine)) tabs += 'T';
    return tabs;
}

TEST(TabRules, EachKindOfDeviceGetsItsTabs) {
    const struct {
        bool vlan, team, member, ipoib;
        const char* workstation;
        const char* server;  // of release 4 or later
        const char *withoutMux, *name;
    } rows[] = {
        {false, false, false, false, "IPVT", "IP", "IP", "Ethernet"},
        {false, false, true, false, "IPT", "IP", "IP", "Ethernet, team member"},
        {false, false, false, true, "IPT", "IPT", "IP", "IPoIB"},
        {false, false, true, true, "IPT", "IPT", "IP", "IPoIB, team member"},
        {true, false, false, false, "", "", "", "VLAN"},
        {false, true, false, false, "V", "", "", "team"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AdapterFlags flags;
        flags.isVlanMiniport = row.vlan;
        flags.isTeamMiniport = row.team;
        flags.isTeamMember = row.member;
        flags.isIpoib = row.ipoib;
        EXPECT_EQ(Tabs(flags, {true, false}), row.workstation);
        EXPECT_EQ(Tabs(flags, {true, true}), row.server);
        EXPECT_EQ(Tabs(flags, {false, false}), row.withoutMux);
        EXPECT_EQ(Tabs(flags, {false, true}), row.withoutMux);
    }
}

}  // namespace
