// The Performance tab as its user sees it: how it starts, and what a press of Run Tuning does.

#include <richedit.h>

#include "TuningTest.h"
#include "resource.h"

namespace {

using Kind = Sample::Kind;

const std::string kLogPath = "C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log.";
const std::string kSucceeded =
    "The task was completed succesfully.\nFor information about the changes that were made, see "
    "log:\n\n" +
    kLogPath;
constexpr char kReboot[] =
    "Tuning was completed successfully.  For the changes to take effect, you need to reboot your "
    "machine.\n\n Click yes to reboot now, or no to reboot later.";

void OnTab(TestMachine& test, const std::function<void()>& deed) {
    OnTab(test, test.CallProvider(), deed);
}

std::vector<int> CheckedButtons(TestMachine& test) {
    std::vector<int> checked;
    for (const int control : {IDC_SINGLE_PORT, IDC_DUAL_PORT, IDC_FORWARDING, IDC_MULTICAST,
                              IDC_SINGLE_STREAM, IDC_BALANCED})
        if (test.IsChecked(control)) checked.push_back(control);
    return checked;
}

bool IsEnabled(TestMachine& test, int control) {
    const HWND window = GetDlgItem(test.Page(), control);
    return window && IsWindowEnabled(window);
}

void ExpectBox(const TestMachine& test, std::size_t index, const char16_t* caption,
               const std::string& text, UINT style) {
    ASSERT_LT(index, test.user.Boxes().size());
    EXPECT_EQ(test.user.Boxes()[index].caption, caption);
    EXPECT_EQ(platform::ToUtf8(test.user.Boxes()[index].text), text);
    EXPECT_EQ(test.user.Boxes()[index].style, style);
}

std::string Stored(const std::string& scenario) {
    return "\"TuningScenario\"=\"" + scenario + "\"";
}

TEST(PerformancePage, StartsWithTheStoredScenarioAndWhatThePortsAllow) {
    constexpr char kHelp[] =
        "<help><Performance_ETH>{\\rtf1 wire}</Performance_ETH>"
        "<Performance_IPoIB>{\\rtf1 fabric}</Performance_IPoIB></help>";
    const Sample ethernet = Sample().OnePort(Kind::Ethernet);
    const Sample ethernets = Sample().Ports(Kind::Ethernet, Kind::Ethernet);
    const Sample ipoib = Sample().OnePort(Kind::Ipoib);
    const Sample ipoibs = Sample().Ports(Kind::Ipoib, Kind::Ipoib);
    const Sample mixed = Sample().Ports(Kind::Ethernet, Kind::Ipoib);
    const struct {
        Sample sample;
        const char* stored;
        std::vector<int> checked;
        bool dual, forwarding;
        const char* reason;
    } cases[] = {
        {ethernets, "", {IDC_BALANCED}, true, true, "two of a kind"},
        {mixed, "", {IDC_BALANCED}, false, false, "mixed"},
        {ethernet, "", {IDC_BALANCED}, false, true, "no sibling counts as IPoIB"},
        {ipoib, "", {IDC_BALANCED}, true, true, "no sibling, IPoIB"},
        {ethernets, "1088", {IDC_FORWARDING}, true, true, "stored"},
        {ethernets, "1098", {IDC_SINGLE_STREAM}, true, true, "stored"},
        {ipoibs, "1098", {}, true, true, "a button that isn't there"},
        {mixed, "1087", {IDC_DUAL_PORT}, false, false, "disabled and checked"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.reason << " " << c.stored);
        Sample sample = c.sample;
        const bool isEthernet = sample.InstanceId(1) == Sample::InstanceId(1, Kind::Ethernet);
        TestMachine test(sample.PortValue(1, *c.stored ? Stored(c.stored) : ""), 0, kHelp);
        OnTab(test, [&] {
            EXPECT_EQ(CheckedButtons(test), c.checked);
            EXPECT_EQ(IsEnabled(test, IDC_DUAL_PORT), c.dual);
            EXPECT_EQ(IsEnabled(test, IDC_FORWARDING), c.forwarding);
            EXPECT_TRUE(IsEnabled(test, IDC_RUN_TUNING));
            EXPECT_EQ(IsEnabled(test, IDC_SINGLE_STREAM), isEthernet);
            WCHAR help[100] = {};
            GetDlgItemTextW(test.Page(), IDC_HELP_TEXT, help, ARRAYSIZE(help));
            EXPECT_EQ(std::u16string(help), isEthernet ? u"wire" : u"fabric");
            // The message gives the colour before.
            EXPECT_EQ(SendDlgItemMessageW(test.Page(), IDC_HELP_TEXT, EM_SETBKGNDCOLOR, 0, 0),
                      0xD2FAFF);
        });
    }
}

TEST(PerformancePage, AFailedStartSaysWhyAndOffersNothing) {
    const struct {
        const char* call;
        std::string argument;
        DWORD error;
        std::string reason;
        bool isLogged = true;
    } cases[] = {
        {"RegOpenKeyExW", Sample::ClassKey(1), ERROR_ACCESS_DENIED,
         "GetKeysInfo: Error opening key: " + Sample::ClassKey(1) + ": 5"},
        {"RegQueryValueExW", "ComponentId", ERROR_FILE_NOT_FOUND,
         "GetKeysInfo: Reading ComponentId failed: 2"},
        {"CM_Get_Parent_Ex", "", 0x0D,
         "GetKeysInfo: CM_Get_Parent_Ex failed for DeviceInstanceID " +
             Sample::InstanceId(2, Kind::Ethernet)},
        {"CreateFileW", kLogPath.substr(0, kLogPath.size() - 1), ERROR_ACCESS_DENIED,
         "GetKeysInfo: Error opening the log: " + kLogPath.substr(0, kLogPath.size() - 1), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const int port = c.argument.empty() ? 2 : 1;
        TestMachine test;
        auto provided = test.CallProvider(port);
        test.machine.faults.FailCalls(c.call, Wide(c.argument), c.error);
        OnTab(test, std::move(provided), [&] {
            EXPECT_TRUE(CheckedButtons(test).empty());
            for (const int control : {IDC_SINGLE_PORT, IDC_DUAL_PORT, IDC_FORWARDING, IDC_MULTICAST,
                                      IDC_SINGLE_STREAM, IDC_BALANCED, IDC_RUN_TUNING})
                EXPECT_FALSE(IsEnabled(test, control)) << control;
            WCHAR help[400] = {};
            GetDlgItemTextW(test.Page(), IDC_HELP_TEXT, help, ARRAYSIZE(help));
            EXPECT_TRUE(platform::ToUtf8(help).find(c.reason) != std::string::npos)
                << platform::ToUtf8(help);
            test.Press(IDC_RUN_TUNING);
        });
        EXPECT_EQ(test.LogLines(), c.isLogged ? Lines({c.reason, ""}) : Lines());
        EXPECT_TRUE(test.user.Boxes().empty());
    }
}

TEST(PerformancePage, EachChoiceRunsItsScenario) {
    const struct {
        Kind kind;
        int choice;
        const char16_t *stored1, *stored2;
    } cases[] = {
        {Kind::Ethernet, IDC_SINGLE_PORT, u"1086", u"-"},
        {Kind::Ethernet, IDC_DUAL_PORT, u"1087", u"1087"},
        {Kind::Ethernet, IDC_FORWARDING, u"1088", u"1088"},
        {Kind::Ethernet, IDC_MULTICAST, u"1096", u"-"},
        {Kind::Ethernet, IDC_SINGLE_STREAM, u"1098", u"-"},
        {Kind::Ethernet, IDC_BALANCED, u"-", u"-"},
        {Kind::Ipoib, IDC_MULTICAST, u"1096", u"-"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.choice);
        TestMachine test(Sample()
                             .Ports(c.kind, c.kind)
                             .PortValue(1, Stored("1086"))
                             .PortValue(2, Stored("1086")));
        test.user.Answer(IDOK);
        OnTab(test, [&] {
            test.Press(c.choice);
            EXPECT_EQ(test.LogBytes(), "\xFF\xFE") << "a choice alone changes nothing";
            test.Press(IDC_RUN_TUNING);
            EXPECT_EQ(CheckedButtons(test), std::vector<int>{c.choice}) << "the choice stays";
        });
        EXPECT_EQ(test.LogLines()[0],
                  GeneralTuningHead(c.kind == Kind::Ethernet ? "Ethernet" : "IPoIB")[0]);
        if (c.choice == IDC_BALANCED)
            ExpectBox(test, 0, u"Restore", "Restore succeeded", 0);
        else
            ExpectBox(test, 0, u"Tuning succeeded", kSucceeded, 0);
        EXPECT_EQ(test.PortText(1, u"TuningScenario"), c.stored1);
        EXPECT_EQ(test.PortText(2, u"TuningScenario"), c.stored2);
        EXPECT_EQ(test.Restarts(1), 1u);
        EXPECT_EQ(test.Restarts(2), 1u);
        EXPECT_EQ(test.Reboots(), 0u);
    }
}

// The click leaves the disabled button checked; the page itself clears it.
TEST(PerformancePage, AChoiceReplacesAStoredScenarioThatIsDisabled) {
    for (const int choice : {IDC_SINGLE_PORT, IDC_BALANCED}) {
        TestMachine test(Sample().OnePort(Kind::Ethernet).PortValue(1, Stored("1087")));
        test.user.Answer(IDOK);
        OnTab(test, [&] {
            EXPECT_EQ(CheckedButtons(test), std::vector<int>{IDC_DUAL_PORT});
            test.Press(choice);
            EXPECT_EQ(CheckedButtons(test), std::vector<int>{choice});
            test.Press(IDC_RUN_TUNING);
        });
        EXPECT_EQ(test.user.Boxes().back().style, 0u);
        EXPECT_EQ(test.PortText(1, u"TuningScenario"), choice == IDC_SINGLE_PORT ? u"1086" : u"-");
        EXPECT_EQ(test.Restarts(1), 1u);
    }
}

TEST(PerformancePage, ChangedTcpSettingsAskForAReboot) {
    for (const int answer : {IDYES, IDNO}) {
        TestMachine test(Sample().TcpToChange());
        for (const int each : {IDOK, IDOK, answer})
            test.user.Answer(each);
        OnTab(test, [&] {
            test.Press(IDC_MULTICAST);
            test.Press(IDC_RUN_TUNING);
        });
        ASSERT_EQ(test.user.Boxes().size(), 3u);
        ExpectBox(test, 1, u"Tuning succeeded", kSucceeded, 0);
        ExpectBox(test, 2, u"Reboot Your Machine", kReboot, 36);
        EXPECT_EQ(test.Reboots(), answer == IDYES);
        EXPECT_EQ(test.Restarts(1), 0u);
    }
}

TEST(PerformancePage, NeedsExactlyOneChoice) {
    for (const std::vector<int>& choice : {{}, std::vector{IDC_SINGLE_PORT, IDC_BALANCED}}) {
        TestMachine test;
        test.user.Answer(IDOK);
        OnTab(test, [&] {
            CheckDlgButton(test.Page(), IDC_BALANCED, BST_UNCHECKED);
            for (const int control : choice)
                CheckDlgButton(test.Page(), control, BST_CHECKED);
            // Only the id of a command counts.
            SendMessageW(test.Page(), WM_COMMAND, MAKEWPARAM(IDC_HELP_TEXT, 0x1234), 0);
            SendMessageW(test.Page(), WM_COMMAND, MAKEWPARAM(IDC_RUN_TUNING, 0x1234), 0);
        });
        ExpectBox(test, 0, u"Performance tuning failed.",
                  "Please choose one of the tuning scenarios", 16);
        EXPECT_EQ(test.LogLines(), Lines());
    }
}

}  // namespace
