// General tuning: the netsh commands, the TCP and AFD settings, and the user's consent.

#include "GeneralTuning.h"

#include "TuningTest.h"

namespace {

const std::string kTcp = "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
const std::string kAfd = "SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters";
const std::string kWindowSize = "\"GlobalMaxTcpWindowSize\"=dword:1000";
const std::string kWindowSizeDeleted = "Delete Registry value " + kTcp + "\\GlobalMaxTcpWindowSize";
const std::string kTcpFailed = kTcp + ": Registry Tuning Failed";

// Runs it on port 1's tab. The context is as an earlier press may have left it.
void ExpectTuning(TestMachine& test, bool result, bool changed, const Lines& lines,
                  const std::string& kind = "Ethernet") {
    test.Attach();
    AdapterContext context;
    context.first.isEthernet = kind == "Ethernet";
    context.noRegistryChange = 0;
    EXPECT_EQ(RunGeneralTuning(context, nullptr), result);
    EXPECT_EQ(context.noRegistryChange == 0, changed);
    EXPECT_EQ(test.LogLines(), Joined({GeneralTuningHead(kind), lines}));
}

void ExpectBox(const TestMachine& test, const char16_t* caption, const std::string& text,
               UINT style) {
    ASSERT_EQ(test.user.Boxes().size(), 1u);
    EXPECT_EQ(test.user.Boxes()[0].caption, caption);
    EXPECT_TRUE(platform::ToUtf8(test.user.Boxes()[0].text).starts_with(text));
    EXPECT_EQ(test.user.Boxes()[0].style, style);
}

TEST(GeneralTuning, AsksOnceAndChangesWhatDiffers) {
    const Lines unchanged = {kNoTcpChange, kNoAfdChange};
    const std::string newSack = "New Registry entry " + kTcp + "\\SackOpts added with value 0x0";
    const std::string sackOfText = "Change Registry value " + kTcp + "\\SackOpts from 0x31 to 0x0";
    const std::string threshold =
        "Change Registry value " + kAfd + "\\FastSendDatagramThreshold from 0x400 to 0x10000";
    const struct {
        const char* sack;       // SackOpts in a machine file's form
        const char* threshold;  // FastSendDatagramThreshold
        bool asks;
        Lines lines;
        const char* reason;
    } cases[] = {
        {"dword:0", "dword:10000", false, unchanged, "all set"},
        {"-", "dword:400", true, {newSack, threshold}, "both differ"},
        {"-", "dword:10000", true, {newSack}, "a missing value counts as a change"},
        {"dword:0", "dword:400", true, {kNoTcpChange, threshold}, "the second table alone"},
        {"\"1\"", "dword:10000", true, {sackOfText}, "a text's first 32 bits"},
        {"hex:00", "dword:10000", false, unchanged, "a single byte"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(
            Sample()
                .With(kTcp, "\"SackOpts\"=" + std::string(c.sack))
                .With(kAfd, "\"FastSendDatagramThreshold\"=" + std::string(c.threshold)));
        if (!c.asks) {
            ExpectTuning(test, true, false, c.lines);
            continue;
        }
        test.user.Answer(IDOK);
        ExpectTuning(test, true, true, c.lines);
        ExpectBox(test, u"GeneralTuning",
                  "This feature will tune the Tessaron driver and TCP Registry parameters to "
                  "improve performance. For the changes to take effect, you will be asked to "
                  "reboot your machine.\n\nClick OK to continue, or Cancel to abort.",
                  65);
        EXPECT_EQ(test.Number(kTcp, u"SackOpts"), 0u);
        EXPECT_EQ(test.Number(kAfd, u"FastSendDatagramThreshold"), 0x10000u);
    }
}

TEST(GeneralTuning, CancelStopsWithTheWindowSizeDeleted) {
    TestMachine test(Sample().TcpToChange().With(kTcp, kWindowSize));
    test.user.Answer(IDCANCEL);
    ExpectTuning(test, false, false, {kWindowSizeDeleted, kTcpFailed});
    EXPECT_EQ(test.Number(kTcp, u"SackOpts"), std::nullopt);
    EXPECT_EQ(test.Number(kTcp, u"GlobalMaxTcpWindowSize"), std::nullopt);
}

TEST(GeneralTuning, TheDeletionAsksForNothing) {
    TestMachine test(Sample().With(kTcp, kWindowSize));
    ExpectTuning(test, true, false, {kWindowSizeDeleted, kNoTcpChange, kNoAfdChange}, "IPoIB");
}

TEST(GeneralTuning, AFailedCommandStopsNothing) {
    const std::string rss = "netsh command netsh int tcp set global rss = enabled failed";
    const std::string stamps = "netsh command netsh int tcp set global timestamps=disabled failed";
    const struct {
        const char* results;
        Lines lines;
    } cases[] = {
        {"32,33", {}},
        {"31,33", {rss + " with error       31", ""}},
        {"2,-1", {rss + " with error        2", "", stamps, ""}},
    };
    for (const auto& c : cases) {
        TestMachine test(Sample().With("SOFTWARE\\StandIn",
                                       "\"NetshResult\"=\"" + std::string(c.results) + "\""));
        ExpectTuning(test, true, false, Joined({c.lines, {kNoTcpChange, kNoAfdChange}}));
    }
}

// A table of more rows than the system has takes finished rows back.
TEST(SetRegistryKeys, TakesFinishedRowsBack) {
    const RegistrySetting rows[] = {
        {u"Missing", REG_DWORD, 1}, {u"Old", REG_DWORD, 2}, {u"Bad", REG_DWORD, 3}};
    TestMachine test(Sample().With(kTcp, "\"Old\"=dword:2a"));
    test.Attach();
    test.machine.faults.FailCalls("RegSetValueExW", u"Bad", 5);
    AdapterContext context;
    context.noRegistryChange = 0;
    RegistryKey key;
    ASSERT_EQ(key.Open(Wide(kTcp).c_str(), KEY_READ | KEY_WRITE), ERROR_SUCCESS);
    const Lines lines = Logged(test, [&](LogStream* log) {
        EXPECT_FALSE(SetRegistryKeys(log, rows, key, context, nullptr, Wide(kTcp).c_str()));
    });
    EXPECT_EQ(lines, Lines({"New Registry entry " + kTcp + "\\Missing added with value 0x1",
                            "Change Registry value " + kTcp + "\\Old from 0x2a to 0x2",
                            "Reverting Old to 2a", kTcpFailed}));
    EXPECT_EQ(test.Number(kTcp, u"Old"), 0x2Au);
    EXPECT_EQ(test.Number(kTcp, u"Missing"), 1u);
}

}  // namespace
