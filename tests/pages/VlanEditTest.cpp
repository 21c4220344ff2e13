// The VLAN tab's commands: what the edit dialog accepts, what is asked, and what comes of it.

#include "VlanTest.h"

namespace {

using namespace vlan;

constexpr char16_t kInvalid[] = u"You entered invalid values.";
constexpr char16_t kRange[] = u"VLAN ID value is out of range.The valid range is 1 to 4095.";

TEST(VlanEdit, RefusesWhatIsNoVlan) {
    const std::u16string taken = u"This VLAN ID already exists. Enter a different name.";
    const struct {
        int command;
        std::u16string name, id;
        int priority;  // -1: as it is
        std::u16string box;
        int focus;
        std::string key{}, line{};  // of the first VLAN
    } inputs[] = {
        {IDC_VLAN_NEW, u"", u"", 0, kInvalid, IDC_VLAN_NAME},
        {IDC_VLAN_NEW, u"x", u"", 0, kInvalid, IDC_VLAN_ID},
        {IDC_VLAN_NEW, u"V2", u"1", 0,
         u"The VLAN name and ID values already exist. Enter different values.", IDC_VLAN_NAME},
        {IDC_VLAN_NEW, u"x", u"2", 0, taken, IDC_VLAN_ID},
        {IDC_VLAN_NEW, u"V2", u"9", 0, u"This VLAN name already exists. Enter a different name.",
         IDC_VLAN_NAME},
        {IDC_VLAN_NEW, u"x", u"0", 0, kRange, IDC_VLAN_ID},
        {IDC_VLAN_NEW, u"x", u"4096", 0, kRange, IDC_VLAN_ID},
        {IDC_VLAN_NEW, u"x", u"4294967297", 0, kRange, IDC_VLAN_ID},
        {IDC_VLAN_NEW, u"x", u"1x", 0, kRange, IDC_VLAN_ID},
        {IDC_VLAN_NEW, u"x", std::u16string(250, u'9'), 0, kRange, IDC_VLAN_ID},
        {IDC_VLAN_MODIFY, u"V1", u"2", 0, taken, IDC_VLAN_ID},
        {IDC_VLAN_MODIFY, u"V1", u"a", -1, kRange, IDC_VLAN_ID, ParamKey(1), "\"VlanID\"=\"a\""},
        {IDC_VLAN_MODIFY, u"V1", u"1", -1, kInvalid, IDC_VLAN_PRIORITY, ParamKey(1),
         "\"Priority\"=\"70\""},
        {IDC_VLAN_MODIFY, u"V1", u"1", -1, kInvalid, IDC_VLAN_PRIORITY, ParamKey(1),
         "\"Priority\"=\"\""},
    };
    for (const auto& input : inputs) {
        SCOPED_TRACE(platform::ToUtf8(input.name + u" " + input.id) + " " + input.line);
        VlanTest test(WithVlans(2).With(input.key, input.line));
        test.user.Do([&] { test.Press(input.command); });
        test.user.Do([&] {
            const HWND dialog = GetForegroundWindow();
            test.user.Answer(IDOK);
            VlanTest::Edit(input.name, input.id, input.priority);
            EXPECT_EQ(GetFocus(), GetDlgItem(dialog, input.focus));
            EXPECT_EQ(GetForegroundWindow(), dialog);
            SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        });
        EXPECT_TRUE(test.RunSheet());
        EXPECT_EQ(test.Texts(), std::vector{input.box});
        EXPECT_EQ(test.Restarts(1), 0u);
    }
}

TEST(VlanEdit, ModifiesTheSelectedVlanOrTheFirst) {
    const struct {
        int row;
        std::u16string name, id;
        int priority;
        bool asks;
        std::string rows;
    } cases[] = {
        {-1, u"V1", u"1", 7, true, "V1 1 7 Up;V2 2 2 Up;"},
        {1, u"v1", u"1000", -1, true, "V1 1 1 Up;v1 1000 2 Up;"},
        {1, std::u16string(120, u'x'), u"2", -1, true,
         "V1 1 1 Up;" + std::string(99, 'x') + " 2 2 Up;"},
        {1, u"V2", u"002", -1, true, "V1 1 1 Up;V2 002 2 Up;"},
        {1, u"V2", u"2", -1, false, "V1 1 1 Up;V2 2 2 Up;"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rows);
        VlanTest test(WithVlans(2));
        test.user.Do([&] {
            if (c.row >= 0) test.Select(c.row);
            test.Press(IDC_VLAN_MODIFY);
            EXPECT_EQ(test.Rows(), c.rows);
            EXPECT_EQ(test.Buttons(), "NRM");
        });
        test.user.Do([&] {
            if (c.asks) test.user.Answer(IDYES);
            VlanTest::Edit(c.name, c.id, c.priority);
        });
        EXPECT_TRUE(test.RunSheet());
        EXPECT_EQ(test.Restarts(1), c.asks ? 1u : 0u);
        const std::string key = ParamKey(c.row < 0 ? 1 : 2);
        EXPECT_EQ(test.Text(key, u"VlanName"), c.name.substr(0, 99));
        EXPECT_EQ(test.Text(key, u"VlanID"), c.id);
        EXPECT_EQ(test.Bytes(key, u"VlanID")->second.size(), 2 * c.id.size() + 2);
        EXPECT_EQ(test.Texts().size(), c.asks ? 1u : 0u);
    }
}

TEST(VlanEdit, AddsAndRemoves) {
    VlanTest test(WithVlans(1));
    test.user.agrees = true;
    test.user.Do([&] {
        test.Press(IDC_VLAN_NEW);
        EXPECT_EQ(test.Rows(), "new 4095 3 Down;V1 1 1 Up;");
        EXPECT_EQ(test.Restarts(1), 1u);
        test.Press(IDC_VLAN_REMOVE);
        EXPECT_EQ(test.Rows(), "V1 1 1 Up;");
        EXPECT_EQ(test.Restarts(1), 1u) << "others are left";
        test.Press(IDC_VLAN_REMOVE);
        EXPECT_EQ(test.Rows(), "");
        EXPECT_EQ(test.Buttons(), "N--");
        EXPECT_EQ(test.Restarts(1), 2u);
    });
    test.user.Do([] { VlanTest::Edit(u"new", u"4095", 3); });
    EXPECT_TRUE(test.RunSheet());
    const std::vector<std::u16string> asked = {
        kQuestion, u"You are about to remove VLAN new.\r\nAre you sure?",
        u"You are about to remove VLAN V1.\r\nAre you sure?", kQuestion};
    EXPECT_EQ(test.Texts(), asked);
}

// "0001" is another text than "1", so only the layer can refuse it.
TEST(VlanEdit, AddsThe4095thVlanAndRefusesThe4096th) {
    VlanTest test(Sample().Vlans(4094));
    test.user.agrees = true;
    test.user.Do([&] {
        constexpr unsigned count = 4095;
        for (int command = 0; command < 2; ++command) {
            test.Press(IDC_VLAN_NEW);
            EXPECT_EQ(SendDlgItemMessageW(test.Page(), IDC_VLAN_LIST, LVM_GETITEMCOUNT, 0, 0),
                      count);
            EXPECT_EQ(test.Number("SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum", u"Count"),
                      count);
            EXPECT_EQ(test.Bytes(kAdapters + Sample::Guid(1), u"UpperBindings")->second.size(),
                      std::size_t{count} * 2 * (46 + 1) + 2);
        }
    });
    test.user.Do([] { VlanTest::Edit(u"x", u"4095"); });
    test.user.Do([] { VlanTest::Edit(u"y", u"0001"); });
    EXPECT_TRUE(test.RunSheet());
    const std::vector<std::u16string> asked = {kQuestion, kQuestion,
                                               u"Failed to add VLAN adapter."};
    EXPECT_EQ(test.Texts(), asked);
    EXPECT_EQ(test.Restarts(1), 1u);
}

// Neither the box nor the dialog of a command lets the sheet go.
TEST(VlanEdit, ASheetStaysAsLongAsACommandRuns) {
    VlanTest test(WithVlans(2));
    test.user.Do([&] { test.Press(IDC_VLAN_NEW); });
    const auto tryToLeave = [&] {
        const HWND front = GetForegroundWindow();
        const WPARAM buttons[] = {PSBTN_CANCEL, PSBTN_OK};
        for (int way = 0; way < 3; ++way) {
            test.user.Answer(IDOK);
            if (way < 2)
                SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, buttons[way], 0);
            else
                test.Leave();
            EXPECT_EQ(GetForegroundWindow(), front);
        }
        EXPECT_TRUE(test.Polls());
        return front;
    };
    test.user.Do([&] { SendMessageW(tryToLeave(), WM_COMMAND, IDC_VLAN_CANCEL, 0); });
    test.user.Do([&] {
        test.user.Answer(0);
        test.Press(IDC_VLAN_REMOVE);
    });
    test.user.Do([&] { SendDlgItemMessageW(tryToLeave(), IDNO, BM_CLICK, 0, 0); });
    test.user.Do([&] { test.Leave(); });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_EQ(test.user.Boxes().size(), 7u);
    for (const std::u16string& text : test.Texts())
        EXPECT_TRUE(text == u"Applying changes in progress" || text.starts_with(u"You are about"));
}

}  // namespace
