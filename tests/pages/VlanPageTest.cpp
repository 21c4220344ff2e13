// The VLAN tab's list, its status and its right to configure.

#include "VlanTest.h"

namespace {

using namespace vlan;

const std::string kUsual = "Corvanta Virtual Miniport Driver";

TEST(VlanPage, ShowsTheVlansThatTheRegistryHolds) {
    const std::string end(1, '\0');
    const struct {
        const char* reason;
        std::string bindings;  // characters
        std::string key, line;
        std::string rows;
    } cases[] = {
        {"the newest comes last", Devices({3, 2, 1}) + end, "", "",
         "V1 1 1 Up;V2 2 2 Up;V3 3 3 Up;"},
        {"one character", end, "", "", ""},
        {"without an end", Devices({2}) + "\\Device\\" + Guid(1), "", "", "V1 1 1 Up;V2 2 2 Up;"},
        {"behind an empty name", Devices({2}) + end + Devices({1}) + end, "", "",
         "V1 1 1 Up;V2 2 2 Up;"},
        {"no device names", "{x}" + end + "\\Device\\" + end + Devices({9, 1}), "", "",
         "V1 1 1 Up;"},
        {"one name twice", Devices({2, 1, 2}), "", "", "V2 2 2 Up;V1 1 1 Up;V2 2 2 Up;"},
        {"the case counts", Devices({2, 1}), ParamKey(1),
         "\"NetCfgInstanceId\"=\"{0a000000-0000-4000-8000-000000001001}\"", "V2 2 2 Up;"},
        {"the first key counts", Devices({1}), ParamKey(3),
         "\"NetCfgInstanceId\"=\"" + Guid(1) + "\"", "V1 1 1 Up;"},
        {"no id", Devices({2, 1}), ParamKey(1), "\"VlanID\"=-", "V2 2 2 Up;"},
        {"no name", Devices({1}), ParamKey(1), "\"VlanName\"=-", kUsual + " 1 1 Up;"},
        {"no priority", Devices({1}), ParamKey(1), "\"Priority\"=-", "V1 1 0 Up;"},
        {"too long a name", Devices({1}), ParamKey(1),
         "\"VlanName\"=\"" + std::string(300, 'x') + "\"", kUsual + " 1 1 Up;"},
        {"no link", Devices({1}), InterfaceKey(1), "\"Up\"=dword:0", "V1 1 1 Down;"},
        {"not in the table", Devices({1}), InterfaceKey(1), "\"Hidden\"=dword:1", "V1 1 1 Down;"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        VlanTest test(WithVlans(3)
                          .With(kAdapters + Sample::Guid(1), Bindings(c.bindings))
                          .With(c.key, c.line));
        test.user.Do([&] {
            EXPECT_EQ(test.Rows(), c.rows);
            EXPECT_EQ(test.Buttons(), c.rows.empty() ? "N--" : "NRM");
        });
        EXPECT_TRUE(test.RunSheet());
        // What was missing is there now; what can't be read is left as it is.
        const auto stored = test.Bytes(ParamKey(1), u"VlanName");
        const std::string line = c.line;
        EXPECT_EQ(stored->second.size(), line.find("xxx") != line.npos ? 602u
                                         : line == "\"VlanName\"=-"    ? 66u
                                                                       : 6u);
        EXPECT_EQ(test.Text(ParamKey(1), u"Priority"), line == "\"Priority\"=-" ? u"0" : u"1");
    }
}

// Each search looks at the class key anew where the last one could not go on.
TEST(VlanPage, AClassKeyThatDoesNotOpenEndsTheSearchesThatComeToIt) {
    const struct {
        std::uint64_t times;
        std::string rows;
    } cases[] = {{1, "V1 1 1 Up;V2 2 2 Up;"}, {2, "V1 1 1 Up;"}, {9, "V1 1 1 Up;"}};
    for (const auto& c : cases) {
        VlanTest test(WithVlans(3));
        test.machine.faults.FailCalls("RegOpenKeyExW", Wide(ParamKey(2)), ERROR_ACCESS_DENIED, 1,
                                      c.times);
        test.user.Do([&] { EXPECT_EQ(test.Rows(), c.rows); });
        EXPECT_TRUE(test.RunSheet());
    }
}

TEST(VlanPage, AStartThatFailsLeavesATabThatDoesNothing) {
    const struct {
        const char* call;
        std::u16string argument, box;
    } cases[] = {
        {"RegQueryValueExW", u"InstalledPath", u"Failed to query InstalledPath from registry."},
        {"RegQueryValueExW", u"UpperBindings", u"Failed to query UpperBindings from registry."},
        {"CreateMutexW", u"", u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call + platform::ToUtf8(c.argument));
        VlanTest test(WithVlans(1));
        test.user.DoFirst(
            [&] { test.machine.faults.FailCalls(c.call, c.argument, ERROR_ACCESS_DENIED); });
        if (!c.box.empty()) test.user.Answer(IDOK);
        test.user.Do([&] {
            EXPECT_EQ(test.Rows(), "");
            test.Press(IDC_VLAN_NEW);
            EXPECT_EQ(GetForegroundWindow(), test.SheetWindow());
            SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_OK, 0);
        });
        EXPECT_TRUE(test.RunSheet());
        EXPECT_EQ(test.Texts().empty() ? u"" : test.Texts()[0], c.box);
    }
}

TEST(VlanPage, ItsStatusIsReadEvery15SecondsWhileItIsActive) {
    VlanTest test(WithVlans(2));
    const auto passes = [&] { return test.machine.trace.Count("GetAdaptersAddresses") / 2; };
    test.DoAfter(1000, [&] {
        test.Merge(InterfaceKey(2), "\"Up\"=dword:0");
        test.machine.trace.Start();
    });
    test.DoAfter(13000, [&] { EXPECT_EQ(test.Rows(), "V1 1 1 Up;V2 2 2 Up;"); });
    test.DoAfter(2000, [&] {
        EXPECT_EQ(test.Rows(), "V1 1 1 Up;V2 2 2 Down;");
        EXPECT_EQ(passes(), 1u);
        test.Leave();
    });
    test.DoAfter(60000, [&] {
        EXPECT_EQ(passes(), 1u);
        test.machine.faults.FailCalls("GetAdaptersAddresses", u"", ERROR_ACCESS_DENIED);
        test.user.Answer(0);
        test.Enter();
    });
    // The box of the first pass is up; the next passes have nothing new to say.
    test.DoAfter(40000, [&] {
        EXPECT_EQ(test.Rows(), "V1 1 1 Up;V2 2 2 Down;");
        test.machine.faults.Disarm();
        VlanTest::Push(IDOK);
    });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_EQ(test.Texts(), std::vector<std::u16string>{
                                u"VLAN status refresh failed to query system.\r\nError message: "
                                u"Access is denied.\r\n"});
    EXPECT_FALSE(test.Polls());
}

// The second sheet's tab has the right only after the first has given it back.
TEST(VlanPage, OneTabAtATimeHasTheRightToConfigure) {
    for (const bool threadFails : {false, true}) {
        VlanTest test(WithVlans(1));
        if (threadFails)
            test.machine.faults.FailCalls("CreateThread", u"", ERROR_NOT_ENOUGH_MEMORY, 2, 1);
        test.user.Do([&] {
            EXPECT_EQ(Library().activeConfigTabCount, threadFails ? 0 : 1);
            EXPECT_EQ(test.Buttons(), threadFails ? "---" : "NRM");
            if (!threadFails) test.user.Answer(IDOK);
            const HWND sheet = test.OpenSecondSheet();
            const HWND page =
                reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
            const HWND button = GetDlgItem(page, IDC_VLAN_NEW);
            EXPECT_EQ(IsWindowEnabled(button), threadFails);
            test.Leave();
            EXPECT_EQ(IsWindowEnabled(button), threadFails) << "not before its next activation";
            SendMessageW(sheet, PSM_SETCURSEL, 0, 0);
            SendMessageW(sheet, PSM_SETCURSEL, 2, 0);
            EXPECT_TRUE(IsWindowEnabled(button));
            VlanTest::CloseSecondSheet(sheet);
        });
        EXPECT_TRUE(test.RunSheet());
        ASSERT_EQ(test.user.Boxes().size(), threadFails ? 0u : 1u);
        if (threadFails) continue;
        EXPECT_EQ(test.user.Boxes()[0].caption, u"Teaming tab management");
        EXPECT_TRUE(test.Texts()[0].starts_with(u"VLAN operations are disabled on this"));
    }
}

TEST(VlanPage, ATeamMemberKeepsItsVlansAndGetsNoNewOnes) {
    VlanTest test(WithVlans(1));
    test.user.Do([&] {
        test.Leave();
        test.Merge(kAdapters + Sample::Guid(1), "\"TeamDeviceName\"=\"\"");
        test.user.Answer(IDOK);
        test.Enter();
        EXPECT_EQ(test.Buttons(), "-RM");
        test.Merge(InterfaceKey(1), "\"Up\"=dword:0");
    });
    test.DoAfter(20000, [&] {
        EXPECT_EQ(test.Rows(), "V1 1 1 Down;");
        EXPECT_EQ(test.Buttons(), "-RM");
    });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_EQ(test.user.Boxes()[0].caption, u"VLAN tab management");
}

// Calls of the opening, a pass, New, Modify and Remove with so many VLANs, for each of them.
std::vector<double> CallsPerVlan(int count) {
    VlanTest test(WithVlans(count));
    test.user.agrees = true;
    std::vector<double> calls;
    const auto note = [&] {
        calls.push_back(static_cast<double>(test.machine.trace.Records().size()) / count);
        test.machine.trace.Clear();
    };
    test.machine.trace.Start();
    test.user.Do(note);
    test.DoAfter(16000, note);
    for (const int command : {IDC_VLAN_NEW, IDC_VLAN_MODIFY}) {
        test.user.Do([&, command] {
            test.Select(count);  // the component that a search comes to last
            test.Press(command);
            note();
        });
        const bool isNew = command == IDC_VLAN_NEW;
        const std::string id = std::to_string(isNew ? 4095 : count);
        test.user.Do([=] { VlanTest::Edit(isNew ? u"x" : u"y", Wide(id), 3); });
    }
    test.user.Do([&] {
        test.Press(IDC_VLAN_REMOVE);
        note();
    });
    EXPECT_TRUE(test.RunSheet());
    return calls;
}

TEST(VlanPage, WhatItAsksPerVlanStaysTheSame) {
    const double limits[] = {24, 24, 40, 24, 24};
    const std::vector<double> few = CallsPerVlan(256);
    const std::vector<double> many = CallsPerVlan(4094);
    ASSERT_EQ(many.size(), std::size(limits));
    for (std::size_t i = 0; i < many.size(); ++i) {
        EXPECT_LT(many[i], limits[i]);
        EXPECT_NEAR(many[i], few[i], few[i] / 10);
    }
}

}  // namespace
