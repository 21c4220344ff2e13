// What an apply of the Port Protocol tab leaves behind, and what refuses it.

#include "MachineFile.h"
#include "PortProtocolTest.h"

using namespace port_protocol;

namespace {

constexpr char kAdapters[] = "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\";
constexpr char16_t kVlans[] =
    u"Upper VLANs have been detected.\r\nPlease remove associated VLANs and repeat the operation.";
constexpr char16_t kTeams[] =
    u"Team members have been detected.\r\nPlease remove associated ports from teams and repeat the "
    u"operation.";
constexpr char kUpperBindings[] = R"("UpperBindings"=hex(7):5c,00,00,00,00,00)";
constexpr char kTeamDeviceName[] = R"("TeamDeviceName"="\\Device\\{B}")";

std::string AdapterEntry(int port) {
    return std::string(kAdapters) + Sample::Guid(port);
}

// A text of the machine file, which has a terminator; what the tab stores has none.
std::string FromFile(const std::string& text) {
    return text + '\0';
}

TEST(PortProtocolApply, ShowsAndStoresTheChoiceAndRestartsTheDevice) {
    const struct {
        const char* flag;
        const char* type;
        std::vector<int> presses;
        const char* state;
        std::string stored;
        DWORD restarts;
        const char* reason;
    } cases[] = {
        {kAll, R"("ib,ib")", {1075, 1084}, "o*o oo*", "eth,auto", 1, "both ports"},
        {kAll, R"("ib,none")", {1075}, "o*o ooo", "eth,none", 1, "the other keeps the default"},
        {kAll, "", {1085}, "oo* oo*", "auto,auto", 1, "from the default: sensing"},
        {"0000001e", "", {1085}, "*o- *o-", "ib,ib", 1, "from the default: InfiniBand"},
        {kEthernetFirst, "", {1085}, "-X- oo*", "eth,auto", 1, "from the default: Ethernet"},
        {"0000061e", "", {1085}, "*o- *o-", "ib,ib", 1, "from the default: can't sense"},
        {"0000009a", "", {1085}, "oo* -X-", "auto,eth", 1, "from the default: by port"},
        {"00000106", "", {1085}, "X-- X--", "ib,ib", 1, "from the default: all they have"},
        {kAll, R"("none,eth")", {1085}, "oo* oo*", "auto,auto", 1, "port 2's type is dropped"},
        {kAll, R"("ib,eth")", {1085}, "HW --- ---", "-", 1, "to the default"},
        {kAll, R"("ib,eth")", {1075, 1074}, "*oo o*o", FromFile("ib,eth"), 0, "there and back"},
        {kAll, "dword:00000001", {1077}, "*oo o*o", "ib,eth", 1, "over a value of another type"},
        {kEthernetFirst, R"("ib,ib")", {1077}, "-X- o*o", "ib,eth", 1, "what port 1 can't have"},
        {kSingle, R"("eth,auto")", {1083}, "oo* (---)", "auto", 1, "one port has one token"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.reason << " " << c.type);
        PortProtocolTest test(Bus(c.flag, c.type));
        if (std::string(c.type).starts_with("dword")) test.user.Answer(IDOK);
        test.OnTab([&] {
            for (const int control : c.presses)
                test.Press(control);
            EXPECT_EQ(test.CanApply(), c.restarts != 0) << "only what differs can be applied";
            EXPECT_EQ(State(test), c.state);
            EXPECT_EQ(test.BusRestarts(), 0u) << "a choice alone changes nothing";
            test.Push(PSBTN_APPLYNOW);
            EXPECT_EQ(State(test), c.state) << "the choice stays";
            EXPECT_FALSE(test.CanApply());
        });
        EXPECT_EQ(test.Stored(), c.stored);
        EXPECT_EQ(test.BusRestarts(), c.restarts);
    }
}

TEST(PortProtocolApply, TheValueIsThereWhenTheDeviceRestarts) {
    PortProtocolTest test(Bus(kAll, R"("ib,ib")"));
    std::string stored;
    test.machine.trace.onCall = [&](const platform::Trace::Record& call) {
        if (stored.empty() && std::string_view(call.name) == "SetupDiCallClassInstaller")
            stored = test.Stored();
    };
    test.OnTab([&] {
        test.Press(1075);
        test.Push(PSBTN_APPLYNOW);
    });
    EXPECT_EQ(stored, "eth,ib");
}

TEST(PortProtocolApply, WithoutAChangeTouchesNothing) {
    PortProtocolTest test(Bus("0000021e", R"("auto,auto")"));
    test.machine.trace.Start();
    test.OnTab([&] { test.Push(PSBTN_OK); });
    EXPECT_EQ(test.machine.trace.Count("CM_Get_Child"), 0u);
    EXPECT_EQ(test.machine.trace.Count("RegSetValueExW"), 0u);
    EXPECT_EQ(test.BusRestarts(), 0u);
}

TEST(PortProtocolApply, VlansAndTeamsOnThePortsRefuseIt) {
    using Entries = std::vector<std::pair<int, const char*>>;  // port and line of its adapter
    const struct {
        Entries entries;
        const char16_t* text;  // null: applied
        const char* reason;
        const char *failing = "", *argument = "";  // a call
    } cases[] = {
        {{{2, kUpperBindings}}, kVlans, "VLAN on port 2"},
        {{{2, kTeamDeviceName}}, kTeams, "team on port 2"},
        {{{1, kUpperBindings}, {1, kTeamDeviceName}}, kVlans, "both on one port"},
        {{{1, kTeamDeviceName}, {2, kUpperBindings}}, kTeams, "port 1 comes first"},
        {{{2, R"("UpperBindings"=hex(7):)"}}, kVlans, "an empty list"},
        {{{1, ""}, {2, R"("VlanID"=dword:5)"}}, nullptr, "entries without either"},
        {{{2, kUpperBindings}},
         kVlans,
         "port 1 has no name",
         "RegQueryValueExW",
         "NetCfgInstanceId"},
        {{{2, kUpperBindings}},
         nullptr,
         "port 1 has no driver",
         "CM_Get_DevNode_Registry_PropertyW"},
        {{{2, kUpperBindings}}, nullptr, "no second port", "CM_Get_Sibling"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        Sample sample = Bus(kAll, R"("ib,eth")");
        for (const auto& [port, line] : c.entries)
            sample.With(AdapterEntry(port), line);
        PortProtocolTest test(sample);
        if (c.text) test.user.Answer(IDOK);
        test.OnTab([&] {
            test.Press(1075);
            test.machine.faults.FailCalls(c.failing, Wide(c.argument), 2, 1, 1);
            test.Push(PSBTN_APPLYNOW);
            EXPECT_EQ(test.machine.faults.Fired(), *c.failing != 0);
            EXPECT_EQ(State(test), "o*o o*o") << "the choice stays";
        });
        ASSERT_EQ(test.user.Boxes().size(), c.text ? 1u : 0u);
        if (c.text) {
            EXPECT_EQ(test.user.Boxes()[0].text, c.text);
            EXPECT_EQ(test.user.Boxes()[0].caption, u"Error");
            EXPECT_EQ(test.user.Boxes()[0].style, 16u);
        }
        EXPECT_EQ(test.Stored(), c.text ? FromFile("ib,eth") : "eth,eth");
        EXPECT_EQ(test.BusRestarts(), c.text ? 0u : 1u);
    }
}

TEST(PortProtocolApply, ARefusedChoiceIsAppliedOnceTheVlanIsGone) {
    PortProtocolTest test(Bus(kAll, R"("ib,eth")").With(AdapterEntry(2), kUpperBindings));
    test.user.Answer(IDOK);
    test.user.Do([&] {
        test.Press(1075);
        test.Push(PSBTN_APPLYNOW);
    });
    test.OnTab([&] {
        ASSERT_FALSE(platform::MergeMachineFile(
            test.machine, "Windows Registry Editor Version 5.00\n\n[-HKEY_LOCAL_MACHINE\\" +
                              AdapterEntry(2) + "]\n"));
        EXPECT_TRUE(test.CanApply()) << "the choice still differs from what is saved";
        test.Push(PSBTN_APPLYNOW);
    });
    EXPECT_EQ(test.Stored(), "eth,eth");
    EXPECT_EQ(test.BusRestarts(), 1u);
}

}  // namespace
