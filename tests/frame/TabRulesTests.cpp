#include "TabRules.h"

#include <gtest/gtest.h>

#include <string>

namespace {

enum class Device { Ethernet, EthernetMember, Ipoib, IpoibMember, VlanMiniport, TeamMiniport };

AdapterFlags Flags(Device device) {
    AdapterFlags flags;
    flags.isIpoib = device == Device::Ipoib || device == Device::IpoibMember;
    flags.isTeamMember = device == Device::EthernetMember || device == Device::IpoibMember;
    flags.isVlanMiniport = device == Device::VlanMiniport;
    flags.isTeamMiniport = device == Device::TeamMiniport;
    return flags;
}

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
        Device device;
        const char* name;
        const char* workstation;
        const char* server;  // of release 4 or later
        const char* withoutMux;
    } rows[] = {
        {Device::Ethernet, "Ethernet", "IPVT", "IP", "IP"},
        {Device::EthernetMember, "Ethernet, team member", "IPT", "IP", "IP"},
        {Device::Ipoib, "IPoIB", "IPT", "IPT", "IP"},
        {Device::IpoibMember, "IPoIB, team member", "IPT", "IPT", "IP"},
        {Device::VlanMiniport, "VLAN", "", "", ""},
        {Device::TeamMiniport, "team", "V", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const AdapterFlags flags = Flags(row.device);
        EXPECT_EQ(Tabs(flags, {true, false}), row.workstation);
        EXPECT_EQ(Tabs(flags, {true, true}), row.server);
        EXPECT_EQ(Tabs(flags, {false, false}), row.withoutMux);
        EXPECT_EQ(Tabs(flags, {false, true}), row.withoutMux);
    }
}

}  // namespace
