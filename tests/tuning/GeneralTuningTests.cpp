// General tuning: the netsh commands, the TCP and AFD settings, and the user's consent.

#include "GeneralTuning.h"

#include "TuningTest.h"

namespace {

constexpr char kTcp[] = "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr char kAfd[] = "SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters";
constexpr char kConsent[] =
    "This feature will tune the Tessaron driver and TCP Registry parameters to improve "
    "performance. For the changes to take effect, you will be asked to reboot your "
    "machine.\n\nClick OK to continue, or Cancel to abort.";
const std::string kStart = "Start Corvanta Tessaron Ethernet general performance tuning.";
const Lines kHead = {kStart, "Executing: netsh int tcp set global rss = enabled", "",
                     "Executing: netsh int tcp set global timestamps=disabled", ""};

std::string NoChange(const char* path) {
    return std::string("No Registry Change Needed for ") + path;
}

std::string Failed(const char* path) {
    return std::string(path) + ": Registry Tuning Failed";
}

struct Outcome {
    bool result;
    bool changed;
    Lines log;
};

Outcome Tune(TestMachine& test, bool ethernet = true) {
    test.Attach();
    AdapterContext context;
    context.first.isEthernet = ethernet;
    context.noRegistryChange = 0;  // as an earlier press may have left it
    const bool result = RunGeneralTuning(context, nullptr);
    return {result, context.noRegistryChange == 0, LogOf(test)};
}

TEST(GeneralTuning, AsksOnceAndChangesWhatDiffers) {
    const std::string newSack =
        std::string("New Registry entry ") + kTcp + "\\SackOpts added with value 0x0";
    const std::string changedAfd = std::string("Change Registry value ") + kAfd +
                                   "\\FastSendDatagramThreshold from 0x400 to 0x10000";
    const struct {
        const char* sack;  // a line of the key; empty: no value
        const char* threshold;
        bool asks;
        Lines lines;
        const char* reason;
    } cases[] = {
        {"\"SackOpts\"=dword:0",
         "\"FastSendDatagramThreshold\"=dword:10000",
         false,
         {NoChange(kTcp), NoChange(kAfd)},
         "all set"},
        {"\"SackOpts\"=-",
         "\"FastSendDatagramThreshold\"=dword:400",
         true,
         {newSack, changedAfd},
         "both differ"},
        {"\"SackOpts\"=-",
         "\"FastSendDatagramThreshold\"=dword:10000",
         true,
         {newSack},
         "a missing value counts as a change"},
        {"\"SackOpts\"=dword:0",
         "\"FastSendDatagramThreshold\"=dword:400",
         true,
         {NoChange(kTcp), changedAfd},
         "the second table alone"},
        {"\"SackOpts\"=\"1\"",
         "\"FastSendDatagramThreshold\"=dword:10000",
         true,
         {std::string("Change Registry value ") + kTcp + "\\SackOpts from 0x31 to 0x0"},
         "a text's first 32 bits"},
        {"\"SackOpts\"=hex:00",
         "\"FastSendDatagramThreshold\"=dword:10000",
         false,
         {NoChange(kTcp), NoChange(kAfd)},
         "a single byte"},
        {"\"SackOpts\"=dword:0",
         "\"FastSendDatagramThreshold\"=hex(b):00,00,01,00,ff,ff,ff,ff",
         false,
         {NoChange(kTcp), NoChange(kAfd)},
         "eight bytes"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample().With(kTcp, c.sack).With(kAfd, c.threshold));
        if (c.asks) test.user.Answer(IDOK);
        const Outcome outcome = Tune(test);
        EXPECT_TRUE(outcome.result);
        EXPECT_EQ(outcome.changed, c.asks);
        EXPECT_EQ(outcome.log, Joined({kHead, c.lines}));
        ASSERT_EQ(test.user.Boxes().size(), c.asks ? 1u : 0u);
        if (c.asks) {
            EXPECT_EQ(test.user.Boxes()[0].caption, u"GeneralTuning");
            EXPECT_EQ(platform::ToUtf8(test.user.Boxes()[0].text), kConsent);
            EXPECT_EQ(test.user.Boxes()[0].style, 65u);
            EXPECT_EQ(test.Number(kTcp, u"SackOpts"), 0u);
            EXPECT_EQ(test.Number(kAfd, u"FastSendDatagramThreshold"), 0x10000u);
        }
    }
}

TEST(GeneralTuning, CancelStopsWithTheWindowSizeDeleted) {
    TestMachine test(Sample().TcpToChange().With(kTcp, "\"GlobalMaxTcpWindowSize\"=dword:1000"));
    test.user.Answer(IDCANCEL);
    const Outcome outcome = Tune(test);
    EXPECT_FALSE(outcome.result);
    EXPECT_FALSE(outcome.changed);
    EXPECT_EQ(outcome.log,
              Joined({kHead,
                      {std::string("Delete Registry value ") + kTcp + "\\GlobalMaxTcpWindowSize",
                       Failed(kTcp)}}));
    EXPECT_EQ(test.Number(kTcp, u"SackOpts"), std::nullopt);
    EXPECT_EQ(test.Number(kTcp, u"GlobalMaxTcpWindowSize"), std::nullopt);
}

TEST(GeneralTuning, TheDeletionAsksForNothing) {
    TestMachine test(Sample().With(kTcp, "\"GlobalMaxTcpWindowSize\"=dword:1000"));
    const Outcome outcome = Tune(test, false);
    EXPECT_TRUE(outcome.result);
    EXPECT_FALSE(outcome.changed);
    EXPECT_EQ(outcome.log[0], "Start Corvanta Tessaron IPoIB general performance tuning.");
    EXPECT_EQ(outcome.log[5],
              std::string("Delete Registry value ") + kTcp + "\\GlobalMaxTcpWindowSize");
}

TEST(GeneralTuning, AFailedCommandStopsNothing) {
    const struct {
        const char* results;
        Lines lines;
    } cases[] = {
        {"32,33", {}},
        {"31,33",
         {"netsh command netsh int tcp set global rss = enabled failed with error       31", ""}},
        {"2,-1",
         {"netsh command netsh int tcp set global rss = enabled failed with error        2", "",
          "netsh command netsh int tcp set global timestamps=disabled failed", ""}},
    };
    for (const auto& c : cases) {
        TestMachine test(Sample().With("SOFTWARE\\StandIn",
                                       "\"NetshResult\"=\"" + std::string(c.results) + "\""));
        const Outcome outcome = Tune(test);
        EXPECT_TRUE(outcome.result);
        EXPECT_EQ(outcome.log, Joined({kHead, c.lines, {NoChange(kTcp), NoChange(kAfd)}}));
    }
}

TEST(GeneralTuning, FailuresAreShownAndLogged) {
    const struct {
        const char* call;
        const char* argument;
        std::uint64_t first;
        DWORD error;
        const char* box;  // how its text begins; null: none
        UINT style;
        Lines lines;
    } cases[] = {
        {"RegOpenKeyExW", kTcp, 1, 5, "Failed to open registry key.", 0x2010, {}},
        {"RegOpenKeyExW", kAfd, 1, 5, "Failed to open registry key.", 0x2010, {NoChange(kTcp)}},
        {"RegQueryValueExW",
         "SackOpts",
         1,
         5,
         "Failed to open registry key.",
         0x2010,
         {Failed(kTcp)}},
        {"RegQueryValueExW",
         "SackOpts",
         2,
         5,
         "Failed to query SackOpts from registry.",
         0,
         {Failed(kTcp)}},
        {"RegQueryValueExW",
         "FastSendDatagramThreshold",
         1,
         5,
         "Failed to open registry key.",
         0x2010,
         {NoChange(kTcp), Failed(kAfd)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.call << " " << c.argument << " " << c.first);
        TestMachine test;
        test.Attach();
        test.machine.faults.FailCalls(c.call, Wide(c.argument), c.error, c.first);
        test.user.Answer(IDOK);
        const Outcome outcome = Tune(test);
        EXPECT_FALSE(outcome.result);
        EXPECT_EQ(outcome.log, Joined({kHead, c.lines}));
        ASSERT_EQ(test.user.Boxes().size(), 1u);
        EXPECT_EQ(test.user.Boxes()[0].caption, u"Error");
        EXPECT_EQ(test.user.Boxes()[0].style, c.style);
        EXPECT_EQ(platform::ToUtf8(test.user.Boxes()[0].text).rfind(c.box, 0), 0u);
    }
}

TEST(GeneralTuning, AnEmptyValueIsAFailure) {
    TestMachine test(Sample().With(kTcp, "\"SackOpts\"=hex:"));
    test.user.Answer(IDOK);
    const Outcome outcome = Tune(test);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.log, Joined({kHead, {Failed(kTcp)}}));
}

TEST(GeneralTuning, AFailedWriteIsAFailure) {
    TestMachine test(Sample().TcpToChange());
    test.user.Answer(IDOK);
    test.machine.faults.FailCalls("RegSetValueExW", u"SackOpts", 5);
    const Outcome outcome = Tune(test);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.log, Joined({kHead, {Failed(kTcp)}}));
}

TEST(GeneralTuning, NeedsItsLog) {
    TestMachine test;
    test.machine.faults.FailCalls("CreateFileW", u"", 5);
    EXPECT_FALSE(Tune(test).result);
}

// A table of more rows than the system has takes finished rows back.
TEST(SetRegistryKeys, TakesFinishedRowsBack) {
    const RegistrySetting rows[] = {
        {u"Missing", REG_DWORD, 1}, {u"Old", REG_DWORD, 2}, {u"Bad", REG_DWORD, 3}};
    const std::string path = kTcp;
    for (const bool revertFails : {false, true}) {
        TestMachine test(Sample().With(kTcp, "\"Old\"=dword:2a"));
        test.Attach();
        test.machine.faults.FailCalls("RegSetValueExW", u"Bad", 5);
        if (revertFails) test.machine.faults.FailCalls("RegSetValueExW", u"Old", 5, 2);
        AdapterContext context;
        context.noRegistryChange = 0;
        ScopedRegKey key;
        ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(kTcp).c_str(), 0, KEY_READ | KEY_WRITE,
                                key.Receive()),
                  ERROR_SUCCESS);
        {
            OpenLog log;
            EXPECT_FALSE(SetRegistryKeys(&log.stream, rows, key.Get(), context, nullptr,
                                         Wide(kTcp).c_str()));
        }
        EXPECT_EQ(LogOf(test),
                  Lines({"New Registry entry " + path + "\\Missing added with value 0x1",
                         "Change Registry value " + path + "\\Old from 0x2a to 0x2",
                         revertFails ? path + ": Reverting Failed, Registry Keys indeterminate."
                                     : "Reverting Old to 2a",
                         Failed(kTcp)}));
        EXPECT_EQ(test.Number(kTcp, u"Old"), revertFails ? 2u : 0x2Au);
        EXPECT_EQ(test.Number(kTcp, u"Missing"), 1u);
    }
}

}  // namespace
