// The Performance tab as its user sees it: how it starts, and what a press of Run Tuning does.

#include <functional>

#include "TuningTest.h"

namespace {

using Kind = Sample::Kind;

constexpr int kSinglePort = 1086;
constexpr int kDualPort = 1087;
constexpr int kForwarding = 1088;
constexpr int kRun = 1090;
constexpr int kDefault = 1095;
constexpr int kMulticast = 1096;
constexpr int kSingleStream = 1098;
constexpr int kHelp = 1049;
constexpr int kScenarios[] = {kSinglePort, kDualPort, kForwarding, kMulticast, kSingleStream};

constexpr char kLogPath[] = "C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log";
const std::string kSucceeded =
    "The task was completed succesfully.\nFor information about the changes that were made, see "
    "log:\n\n" +
    std::string(kLogPath) + ".";
const std::string kRefused = "For more information see log:\n\n" + std::string(kLogPath) + ".";
constexpr char kReboot[] =
    "Tuning was completed successfully.  For the changes to take effect, you need to reboot your "
    "machine.\n\n Click yes to reboot now, or no to reboot later.";
constexpr char16_t kFailedCaption[] = u"Performance tuning failed.";

// Opens the sheet, brings the tab up, does the deed there and cancels the sheet.
void OnTab(TestMachine& test, const std::function<void()>& deed) {
    test.user.Do([&] {
        for (WPARAM index = 0; index < 4 && !GetDlgItem(test.Page(), kRun); ++index)
            SendMessageW(test.SheetWindow(), PSM_SETCURSEL, index, 0);
        ASSERT_NE(GetDlgItem(test.Page(), kRun), nullptr) << "no Performance tab";
        deed();
    });
    EXPECT_TRUE(test.RunSheet());
}

int CheckedButton(TestMachine& test) {
    int checked = 0;
    for (const int control :
         {kSinglePort, kDualPort, kForwarding, kMulticast, kSingleStream, kDefault})
        if (GetDlgItem(test.Page(), control) && test.IsChecked(control)) checked = control;
    return checked;
}

bool IsEnabled(TestMachine& test, int control) {
    const HWND window = GetDlgItem(test.Page(), control);
    return window && IsWindowEnabled(window);
}

TEST(PerformancePage, StartsWithTheStoredScenarioAndWhatThePortsAllow) {
    constexpr int kNoSecond = -1;
    const struct {
        Kind first;
        int second;  // Kind, or none
        const char* stored;
        int checked;
        bool dual;
        bool forwarding;
        const char* reason;
    } cases[] = {
        {Kind::Ethernet, int(Kind::Ethernet), "", kDefault, true, true, "two of a kind"},
        {Kind::Ipoib, int(Kind::Ipoib), "", kDefault, true, true, "two of a kind"},
        {Kind::Ethernet, int(Kind::Ipoib), "", kDefault, false, false, "mixed"},
        {Kind::Ipoib, int(Kind::Ethernet), "", kDefault, false, false, "mixed"},
        {Kind::Ethernet, kNoSecond, "", kDefault, false, true, "no sibling counts as IPoIB"},
        {Kind::Ipoib, kNoSecond, "", kDefault, true, true, "no sibling, IPoIB"},
        {Kind::Ethernet, int(Kind::Ethernet), "1088", kForwarding, true, true, "stored"},
        {Kind::Ethernet, int(Kind::Ethernet), "1098", kSingleStream, true, true, "stored"},
        {Kind::Ipoib, int(Kind::Ipoib), "1098", 0, true, true, "a button that isn't there"},
        {Kind::Ethernet, int(Kind::Ipoib), "1087", kDualPort, false, false, "disabled and checked"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.reason << " " << c.stored);
        Sample sample;
        if (c.second == kNoSecond)
            sample.OnePort(c.first);
        else
            sample.Ports(c.first, static_cast<Kind>(c.second));
        if (*c.stored) sample.PortValue(1, "\"TuningScenario\"=\"" + std::string(c.stored) + "\"");
        TestMachine test(sample);
        OnTab(test, [&] {
            EXPECT_EQ(CheckedButton(test), c.checked);
            EXPECT_EQ(IsEnabled(test, kDualPort), c.dual);
            EXPECT_EQ(IsEnabled(test, kForwarding), c.forwarding);
            EXPECT_TRUE(IsEnabled(test, kRun));
            EXPECT_EQ(GetDlgItem(test.Page(), kSingleStream) != nullptr, c.first == Kind::Ethernet);
        });
    }
}

TEST(PerformancePage, ShowsTheHelpOfTheKindOfPort) {
    constexpr char kHelpFile[] =
        "<help><Performance_ETH>{\\rtf1 wire}</Performance_ETH>"
        "<Performance_IPoIB>{\\rtf1 fabric}</Performance_IPoIB></help>";
    for (const Kind kind : {Kind::Ethernet, Kind::Ipoib}) {
        TestMachine test(Sample().OnePort(kind), 0, kHelpFile);
        OnTab(test, [&] {
            WCHAR text[100] = {};
            GetDlgItemTextW(test.Page(), kHelp, text, ARRAYSIZE(text));
            const std::string shown = platform::ToUtf8(text);
            EXPECT_NE(shown.find(kind == Kind::Ethernet ? "wire" : "fabric"), std::string::npos)
                << shown;
        });
    }
}

TEST(PerformancePage, AFailedStartLeavesRunTuningDisabled) {
    TestMachine test;
    test.machine.faults.FailCalls("CM_Locate_DevNode_ExW", u"", 13);
    OnTab(test, [&] {
        EXPECT_EQ(CheckedButton(test), 0);
        EXPECT_FALSE(IsEnabled(test, kRun));
        SendMessageW(test.Page(), WM_COMMAND, kRun, 0);
    });
    EXPECT_EQ(test.LogBytes(), "");
    EXPECT_EQ(test.Restarts(1), 0u);
}

TEST(PerformancePage, WritesTheWholeLogOfAPress) {
    TestMachine test(Sample().OnePort(Kind::Ethernet));
    test.user.Answer(IDOK);
    OnTab(test, [&] {
        test.Press(kSinglePort);
        EXPECT_EQ(test.LogBytes(), "") << "a choice alone changes nothing";
        test.Press(kRun);
        EXPECT_TRUE(test.IsChecked(kSinglePort)) << "the choice stays";
    });
    EXPECT_EQ(LogOf(test),
              Joined({{"Start Corvanta Tessaron Ethernet general performance tuning.",
                       "Executing: netsh int tcp set global rss = enabled", "",
                       "Executing: netsh int tcp set global timestamps=disabled", "",
                       "No Registry Change Needed for "
                       "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters",
                       "No Registry Change Needed for "
                       "SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters",
                       "Start Corvanta Tessaron Ethernet performance tuning for "
                       "SINGLE_PORT_STREAM.",
                       "Restore Tuning Defaults", ""},
                      RestoreLines(1, true, true, 2),
                      {"Setting adapter 1 key TuningScenario to 1086",
                       "Setting adapter 1 key DefaultRecvRingProcessor to 0",
                       "Setting adapter 1 key TxForwardingProcessor to 7",
                       "Setting adapter 1 key *MaxRssProcessors to 8",
                       "Setting adapter 1 key *RssBaseProcNumber to 0",
                       "Setting adapter 1 key *RssProfile to 4",
                       "Setting adapter 1 key *NumRSSQueues to 8",
                       "Setting adapter 1 key *RssMaxProcNumber to 7",
                       "Corvanta Tessaron Ethernet performance tuning for SINGLE_PORT_STREAM "
                       "completed successfully.",
                       "", ""}}));
}

TEST(PerformancePage, EachChoiceRunsItsScenario) {
    const struct {
        Kind kind;
        int control;
        const char16_t* caption;
        std::string text;
        const char16_t* stored1;
        const char16_t* stored2;
    } cases[] = {
        {Kind::Ethernet, kSinglePort, u"Tuning succeeded", kSucceeded, u"1086", u"-"},
        {Kind::Ethernet, kDualPort, u"Tuning succeeded", kSucceeded, u"1087", u"1087"},
        {Kind::Ethernet, kForwarding, u"Tuning succeeded", kSucceeded, u"1088", u"1088"},
        {Kind::Ethernet, kMulticast, u"Tuning succeeded", kSucceeded, u"1096", u"-"},
        {Kind::Ethernet, kSingleStream, u"Tuning succeeded", kSucceeded, u"1098", u"-"},
        {Kind::Ethernet, kDefault, u"Restore", "Restore succeeded", u"-", u"-"},
        {Kind::Ipoib, kMulticast, u"Tuning succeeded", kSucceeded, u"1096", u"-"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.control);
        TestMachine test(Sample()
                             .Ports(c.kind, c.kind)
                             .PortValue(1, "\"TuningScenario\"=\"1086\"")
                             .PortValue(2, "\"TuningScenario\"=\"1086\""));
        test.user.Answer(IDOK);
        OnTab(test, [&] {
            test.Press(c.control);
            test.Press(kRun);
        });
        ASSERT_EQ(test.user.Boxes().size(), 1u);
        EXPECT_EQ(test.user.Boxes()[0].caption, c.caption);
        EXPECT_EQ(platform::ToUtf8(test.user.Boxes()[0].text), c.text);
        EXPECT_EQ(test.user.Boxes()[0].style, 0u);
        EXPECT_EQ(test.PortText(1, u"TuningScenario"), c.stored1);
        EXPECT_EQ(test.PortText(2, u"TuningScenario"), c.stored2);
        EXPECT_EQ(test.Restarts(1), 1u);
        EXPECT_EQ(test.Restarts(2), 1u);
        EXPECT_EQ(test.Reboots(), 0u);
    }
}

TEST(PerformancePage, ChangedTcpSettingsAskForAReboot) {
    for (const int answer : {IDYES, IDNO}) {
        TestMachine test(Sample().TcpToChange());
        test.user.Answer(IDOK);
        test.user.Answer(IDOK);
        test.user.Answer(answer);
        OnTab(test, [&] {
            test.Press(kMulticast);
            test.Press(kRun);
        });
        ASSERT_EQ(test.user.Boxes().size(), 3u);
        EXPECT_EQ(test.user.Boxes()[0].caption, u"GeneralTuning");
        EXPECT_EQ(test.user.Boxes()[1].caption, u"Tuning succeeded");
        EXPECT_EQ(test.user.Boxes()[2].caption, u"Reboot Your Machine");
        EXPECT_EQ(platform::ToUtf8(test.user.Boxes()[2].text), kReboot);
        EXPECT_EQ(test.user.Boxes()[2].style, 36u);
        EXPECT_EQ(test.Reboots(), answer == IDYES ? 1u : 0u);
        EXPECT_EQ(test.Restarts(1), 0u);
    }
}

TEST(PerformancePage, RebootsWhateverThePrivilegeStepGave) {
    for (const char* call :
         {"LookupPrivilegeValueW", "OpenProcessToken", "AdjustTokenPrivileges"}) {
        TestMachine test(Sample().TcpToChange());
        test.machine.faults.FailCalls(call, u"", ERROR_NOT_ALL_ASSIGNED);
        test.machine.trace.Start();
        for (const int answer : {IDOK, IDOK, IDYES})
            test.user.Answer(answer);
        OnTab(test, [&] { test.Press(kRun); });
        EXPECT_EQ(test.machine.trace.Count("ExitWindowsEx"), 1u) << call;
    }
}

TEST(PerformancePage, StopsWithTheTextOfTheFailedStep) {
    const auto none = [](TestMachine&) {};
    const struct {
        Sample sample;
        std::function<void(TestMachine&)> onTab;
        int control;
        std::vector<int> answers;
        std::string text;
        const char16_t* ring;  // DefaultRecvRingProcessor of port 1 afterwards
        const char* reason;
    } cases[] = {
        {Sample().Ports(Kind::Ipoib, Kind::Ipoib).PortValue(1, "\"TuningScenario\"=\"1098\""),
         none,
         kRun,
         {},
         "Please choose one of the tuning scenarios",
         u"-",
         "no choice"},
        {Sample(),
         [](TestMachine& test) { CheckDlgButton(test.Page(), kSinglePort, BST_CHECKED); },
         kRun,
         {},
         "Please choose one of the tuning scenarios",
         u"-",
         "a scenario and the default"},
        {Sample(),
         [](TestMachine& test) {
             test.machine.faults.FailCalls("CreateFileW", u"", ERROR_SHARING_VIOLATION);
         },
         kSinglePort,
         {},
         "Log allocation failed",
         u"-",
         "the log of the analysis"},
        {Sample(),
         [](TestMachine& test) {
             test.machine.faults.FailCalls("CreateFileW", u"", ERROR_SHARING_VIOLATION, 3);
         },
         kSinglePort,
         {},
         "Log allocation failed",
         u"-1",
         "the log of the run"},
        {Sample().Processors("4", "0,0,-,0"),
         none,
         kSinglePort,
         {},
         "Processors mapping analysis failed",
         u"-",
         "the analysis"},
        {Sample().TcpToChange(),
         none,
         kSinglePort,
         {IDCANCEL},
         "General Tuning Failed",
         u"-",
         "the user declines"},
        {Sample().OnePort(Kind::Ipoib), none, kDualPort, {}, kRefused, u"-1", "no second port"},
        {Sample().Processors("1", "0"), none, kMulticast, {}, kRefused, u"-1", "one processor"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(c.sample);
        for (const int answer : c.answers)
            test.user.Answer(answer);
        test.user.Answer(IDOK);
        OnTab(test, [&] {
            if (c.control != kRun) test.Press(c.control);
            c.onTab(test);
            test.Press(kRun);
        });
        ASSERT_FALSE(test.user.Boxes().empty());
        const ScriptedUser::Box& box = test.user.Boxes().back();
        EXPECT_EQ(box.caption, kFailedCaption);
        EXPECT_EQ(platform::ToUtf8(box.text), c.text);
        EXPECT_EQ(box.style, 16u);
        EXPECT_EQ(test.user.AnswersLeft(), 0u);
        EXPECT_EQ(test.PortText(1, u"DefaultRecvRingProcessor"), c.ring);
        EXPECT_EQ(test.Restarts(1), 0u);
        EXPECT_EQ(test.Reboots(), 0u);
    }
}

// Every press reads the machine anew and starts from the defaults of both ports.
TEST(PerformancePage, ASecondPressStartsFromTheDefaults) {
    TestMachine test;
    for (int i = 0; i < 2; ++i)
        test.user.Answer(IDOK);
    OnTab(test, [&] {
        test.Press(kForwarding);
        test.Press(kRun);
        EXPECT_EQ(test.PortText(2, u"UseSendFwQueue"), u"1");
        test.Press(kSinglePort);
        test.Press(kRun);
    });
    EXPECT_EQ(test.PortText(1, u"TuningScenario"), u"1086");
    EXPECT_EQ(test.PortText(2, u"TuningScenario"), u"-");
    EXPECT_EQ(test.PortText(2, u"UseSendFwQueue"), u"-");
    EXPECT_EQ(test.PortText(2, u"RxIntModerationProfile"), u"0") << "the second port keeps it";
    EXPECT_EQ(test.PortText(1, u"RxIntModerationProfile"), u"1");
    EXPECT_EQ(test.Restarts(1), 2u);
}

TEST(PerformancePage, OnlyTheIdCountsAndACheckedButtonEndsACommand) {
    TestMachine test;
    test.user.Answer(IDOK);
    OnTab(test, [&] {
        SendMessageW(test.Page(), WM_COMMAND, MAKEWPARAM(kDefault, BN_CLICKED), 0);
        SendMessageW(test.Page(), WM_COMMAND, MAKEWPARAM(kHelp, 0x1234), 0);
        EXPECT_EQ(LogOf(test), Lines());
        SendMessageW(test.Page(), WM_COMMAND, MAKEWPARAM(kRun, 0x1234), 0);
    });
    EXPECT_EQ(test.user.Boxes().size(), 1u);
}

}  // namespace
