// What an apply of the Port Protocol tab leaves behind, what refuses it, and what a failure does.

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

// What somebody else does to the registry meanwhile.
void Merge(TestMachine& test, const std::string& path, const std::string& line) {
    ASSERT_FALSE(platform::MergeMachineFile(
        test.machine, "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\" + path +
                          "]\n" + line + "\n"));
}

TEST(PortProtocolApply, StoresTheChoiceAndRestartsTheDevice) {
    const struct {
        const char* flag;
        const char* type;
        std::vector<int> presses;
        std::string stored;
        DWORD restarts;
        const char* reason;
    } cases[] = {
        {kAll, R"("ib,ib")", {1075, 1084}, "eth,auto", 1, "both ports"},
        {kAll, R"("ib,eth")", {1083}, "auto,eth", 1, "one of two ports"},
        {kAll, R"("ib,none")", {1075}, "eth,none", 1, "the other port keeps the default"},
        {kAll, "", {1085, 1077}, "auto,eth", 1, "from the default"},
        {kAll, R"("ib,eth")", {1085}, "-", 1, "to the default"},
        {kAll, R"("none,eth")", {1085, 1085}, "-", 1, "also of port 2"},
        {kAll, "", {1085, 1085}, "-", 0, "there and back"},
        {kAll, R"("ib,eth")", {1075, 1074}, FromFile("ib,eth"), 0, "there and back"},
        {kAll, "dword:00000001", {1077}, "ib,eth", 1, "over a value of another type"},
        {kEthernetFirst, R"("ib,ib")", {1077}, "ib,eth", 1, "a type that port 1 can't have stays"},
        {kSingle, R"("eth")", {1074}, "ib", 1, "one port"},
        {kSingle, R"("eth,auto")", {1083}, "auto", 1, "one port has one token"},
        {kSingle, R"("eth")", {1085}, "-", 1, "one port to the default"},
        {kSingle, "", {1085}, "auto", 1, "one port from the default"},
    };
    for (const WPARAM button : {PSBTN_APPLYNOW, PSBTN_OK}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << c.reason << " " << c.type << " " << button);
            PortProtocolTest test(Bus(c.flag, c.type));
            if (std::string(c.type).starts_with("dword")) test.user.Answer(IDOK);
            test.OnTab([&] {
                for (const int control : c.presses)
                    test.Press(control);
                EXPECT_TRUE(test.CanApply());
                const std::string state = test.State();
                test.Push(button);
                if (button != PSBTN_APPLYNOW) return;
                EXPECT_EQ(test.State(), state) << "the choice stays";
                EXPECT_FALSE(test.CanApply());
            });
            EXPECT_EQ(test.Stored(), c.stored);
            EXPECT_EQ(test.BusRestarts(), c.restarts);
            EXPECT_EQ(test.Restarts(1), 0u);
        }
    }
}

TEST(PortProtocolApply, WithoutAChangeTouchesNothing) {
    PortProtocolTest test(Bus("0000021e", R"("auto,auto")"));
    test.machine.trace.Start();
    test.OnTab([&] { test.Push(PSBTN_OK); });
    EXPECT_EQ(test.machine.trace.Count("CM_Get_Child"), 0u);
    EXPECT_EQ(test.machine.trace.Count("RegSetValueExW"), 0u);
    EXPECT_EQ(test.BusRestarts(), 0u);
}

TEST(PortProtocolApply, WhatThePortsRunIsReadWhenTheTabOpens) {
    Sample sample = Bus(kAll, R"("ib,ib")");
    sample.With(ParametersPath(), "\"PortSetting\"=dword:00010001");
    PortProtocolTest test(sample);
    test.OnTab([&] {
        test.Press(1075);
        Merge(test, ParametersPath(), R"("PortSetting"=dword:00010002)");
        test.Push(PSBTN_APPLYNOW);
        EXPECT_EQ(test.TextOf(1079), "IB");
    });
    test.OnTab([&] { EXPECT_EQ(test.TextOf(1079), "Eth"); });
}

TEST(PortProtocolApply, VlansAndTeamsOnThePortsRefuseIt) {
    struct Fault {
        const char* call;
        const char16_t* argument;
        std::uint64_t count;
    };
    const struct {
        std::vector<std::pair<int, const char*>> values;  // port and line in its adapter's entry
        std::vector<Fault> faults;
        const char16_t* text;  // null: applied
        const char* reason;
    } cases[] = {
        {{{1, kUpperBindings}}, {}, kVlans, "VLAN on port 1"},
        {{{2, kUpperBindings}}, {}, kVlans, "VLAN on port 2"},
        {{{2, kTeamDeviceName}}, {}, kTeams, "team on port 2"},
        {{{1, kUpperBindings}, {1, kTeamDeviceName}}, {}, kVlans, "both on one port"},
        {{{1, kTeamDeviceName}, {2, kUpperBindings}}, {}, kTeams, "port 1 comes first"},
        {{{2, R"("UpperBindings"=hex(7):)"}}, {}, kVlans, "an empty list"},
        {{{2, R"("TeamDeviceName"="")"}}, {}, kTeams, "an empty name"},
        {{{1, ""}, {2, R"("VlanID"=dword:5)"}}, {}, nullptr, "entries without either"},
        {{{2, kUpperBindings}},
         {{"RegQueryValueExW", u"NetCfgInstanceId", 1}},
         kVlans,
         "port 1 without an adapter is passed over"},
        {{{2, kUpperBindings}},
         {{"CM_Get_DevNode_Registry_PropertyW", u"", 1}},
         nullptr,
         "port 1 without a driver ends the search"},
        {{{1, kUpperBindings}}, {{"CM_Get_Child", u"", 1}}, nullptr, "no ports"},
        {{{2, kUpperBindings}}, {{"CM_Get_Sibling", u"", 1}}, nullptr, "no second port"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        Sample sample = Bus(kAll, R"("ib,eth")");
        for (const auto& [port, line] : c.values)
            sample.With(AdapterEntry(port), line);
        PortProtocolTest test(sample);
        if (c.text) test.user.Answer(IDOK);
        test.OnTab([&] {
            test.Press(1075);
            for (const Fault& fault : c.faults)
                test.machine.faults.FailCalls(fault.call, fault.argument, 2, 1, fault.count);
            test.Push(PSBTN_APPLYNOW);
            EXPECT_EQ(test.State(), "o*o o*o") << "the choice stays";
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
    test.OnTab([&] {
        test.Press(1075);
        test.Push(PSBTN_APPLYNOW);
        Merge(test, AdapterEntry(2), R"("UpperBindings"=-)");
        EXPECT_FALSE(test.CanApply()) << "the sheet went on as after a success";
        test.Press(1075);
        EXPECT_TRUE(test.CanApply()) << "the choice still differs from what is saved";
        test.Push(PSBTN_APPLYNOW);
    });
    EXPECT_EQ(test.Stored(), "eth,eth");
    EXPECT_EQ(test.BusRestarts(), 1u);
}

TEST(PortProtocolApply, AFailureIsShownAndTheDeviceRestartedAllTheSame) {
    const std::u16string key = Wide(ParametersPath());
    constexpr char16_t kNoOpen[] =
        u"Failed to open registry key.\r\nError message: Access is denied.\r\n";
    constexpr char16_t kNoSet[] =
        u"Failed to set value to registry key.\r\nError message: Access is denied.\r\n";
    const struct {
        int press;
        const char* call;
        std::u16string argument;
        const char16_t* text;
        std::string stored;
        DWORD restarts;
    } cases[] = {
        {1075, "RegOpenKeyExW", key, kNoOpen, FromFile("ib,eth"), 1},
        {1075, "RegSetValueExW", u"PortType", kNoSet, FromFile("ib,eth"), 1},
        {1085, "RegOpenKeyExW", key, kNoOpen, FromFile("ib,eth"), 1},
        {1085, "RegQueryValueExW", u"PortType", kNoOpen, FromFile("ib,eth"), 1},
        {1085, "RegDeleteValueW", u"PortType", kNoOpen, FromFile("ib,eth"), 1},
        {1075, "SetupDiCreateDeviceInfoListExW", u"", nullptr, "eth,eth", 0},
        {1075, "SetupDiCallClassInstaller", u"", nullptr, "eth,eth", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.press << " " << c.call);
        PortProtocolTest test(Bus(kAll, R"("ib,eth")"));
        if (c.text) test.user.Answer(IDOK);
        test.OnTab([&] {
            test.Press(c.press);
            test.machine.faults.FailCalls(c.call, c.argument, ERROR_ACCESS_DENIED);
            test.Push(PSBTN_APPLYNOW);
            test.machine.faults.Disarm();
            SendMessageW(test.Page(), WM_COMMAND, static_cast<WPARAM>(c.press), 0);
            EXPECT_FALSE(test.CanApply()) << "the choice counts as saved";
        });
        ASSERT_EQ(test.user.Boxes().size(), c.text ? 1u : 0u);
        if (c.text) {
            EXPECT_EQ(test.user.Boxes()[0].text, c.text);
            EXPECT_EQ(test.user.Boxes()[0].style, 0x2010u);
        }
        EXPECT_EQ(test.Stored(), c.stored);
        EXPECT_EQ(test.BusRestarts(), c.restarts);
    }
}

TEST(PortProtocolApply, AValueThatIsGoneAlreadyIsDeletedWithoutABox) {
    PortProtocolTest test(Bus(kAll, R"("ib,eth")"));
    test.OnTab([&] {
        test.Press(1085);
        Merge(test, ParametersPath(), R"("PortType"=-)");
        test.Push(PSBTN_OK);
    });
    EXPECT_EQ(test.Stored(), "-");
    EXPECT_EQ(test.BusRestarts(), 1u);
}

TEST(PortProtocolApply, WithoutTheKeyNothingCanBeStored) {
    for (const int press : {1075, 1085}) {
        PortProtocolTest test;
        test.user.Answer(IDOK);
        test.user.Answer(IDOK);
        test.OnTab([&] {
            test.Press(press);
            test.Push(PSBTN_APPLYNOW);
        });
        ASSERT_EQ(test.Captions(), "WE") << press;
        EXPECT_TRUE(test.user.Boxes()[1].text.starts_with(u"Failed to open registry key."));
        EXPECT_EQ(test.BusRestarts(), 1u);
    }
}

// The calls of an apply, in order.
std::vector<std::string> CallsOfAnApply() {
    std::vector<std::string> calls;
    PortProtocolTest test(Bus(kAll, R"("ib,eth")"));
    test.OnTab([&] {
        test.Press(1075);
        test.machine.trace.Start();
        test.Push(PSBTN_APPLYNOW);
        test.machine.trace.Stop();
        for (const auto& record : test.machine.trace.Records())
            calls.emplace_back(record.name);
    });
    return calls;
}

// The value is the old or the new one, nothing is left open, and the next sheet works.
TEST(PortProtocolApply, SurvivesEachFailedCall) {
    const std::vector<std::string> calls = CallsOfAnApply();
    ASSERT_FALSE(calls.empty());
    for (const bool lasting : {false, true}) {
        for (std::uint64_t n = 1; n <= calls.size(); ++n) {
            const std::string& call = calls[n - 1];
            // A text that can't be allocated ends the process, as it does on Windows.
            if (call == "SysAllocString") continue;
            SCOPED_TRACE(testing::Message() << n << " " << call);
            PortProtocolTest test(Bus(kAll, R"("ib,eth")"));
            for (int box = 0; box < 4; ++box)
                test.user.Answer(IDOK);
            test.OnTab([&] {
                test.Press(1075);
                test.machine.faults.FailNth(n, lasting);
                test.machine.faults.Mark();
                test.Push(PSBTN_APPLYNOW);
                EXPECT_TRUE(test.machine.faults.Fired());
                test.machine.faults.Disarm();
            });
            EXPECT_TRUE(test.Stored() == FromFile("ib,eth") || test.Stored() == "eth,eth");
            test.OnTab([&] {
                test.Press(1085);
                test.Push(PSBTN_OK);
            });
            EXPECT_EQ(test.Stored(), "-");
        }
    }
}

}  // namespace
