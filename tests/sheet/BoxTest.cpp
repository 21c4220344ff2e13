// Message boxes in a transcript, and the clock of a script.

#include <gtest/gtest.h>

#include "Program.h"

namespace {

const char kConsent[] =
    "box | GeneralTuning | 65 | This feature will tune the Tessaron driver and TCP Registry "
    "parameters to improve performance. For the changes to take effect, you will be asked to "
    "reboot your machine.\\n\\nClick OK to continue, or Cancel to abort. | ";
const char kSucceeded[] =
    "box | Tuning succeeded | 0 | The task was completed succesfully.\\nFor information about the "
    "changes that were made, see log:\\n\\nC:\\\\Windows\\\\System32\\\\LogFiles\\\\"
    "PerformanceTuning.log. | ok\n";
const char kReboot[] =
    "box | Reboot Your Machine | 36 | Tuning was completed successfully.  For the changes to take "
    "effect, you need to reboot your machine.\\n\\n Click yes to reboot now, or no to reboot "
    "later. | ";
const char kFailed[] = "box | Performance tuning failed. | 16 | General Tuning Failed | ok\n";

TEST(Boxes, AreAnsweredWithWhatWasQueuedElseWithOkOrYes) {
    const struct {
        const char* name;
        std::string script;
        std::string out;
    } kCases[] = {
        {"nothing queued", "press 1086\npress 1090\n",
         std::string(kConsent) + "ok\n" + kSucceeded + kReboot + "yes\n"},
        {"queued", "press 1086\nanswer ok\nanswer ok\nanswer no\npress 1090\n",
         std::string(kConsent) + "ok\n" + kSucceeded + kReboot + "no\n"},
        {"consent cancelled", "press 1086\nanswer cancel\npress 1090\n",
         std::string(kConsent) + "cancel\n" + kFailed},
        {"left up, then answered", "press 1086\nanswer hold\npress 1090\nbox cancel\n",
         std::string(kConsent) + "cancel\n" + kFailed},
        {"left up, its button pressed by id", "press 1086\nanswer hold\npress 1090\npress 2\n",
         std::string(kConsent) + "cancel\n" + kFailed},
        {"left up to the end of the script", "press 1086\nanswer hold\npress 1090\n",
         std::string(kConsent) + "ok\n" + kSucceeded + kReboot + "yes\n"},
    };
    const Program program(Sample().TcpToChange());
    for (const auto& boxes : kCases) {
        SCOPED_TRACE(boxes.name);
        const auto result = program.Run("open Performance\n" + boxes.script);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.out, boxes.out);
    }
}

TEST(Boxes, ABoxThatIsUpBlocksTheSheetAndIsShown) {
    const Program program(Sample().TcpToChange());
    const std::string hold = "open Performance\npress 1086\nanswer hold\npress 1090\n";
    const auto controls = program.Run(hold + "controls\nbox cancel\n");
    EXPECT_NE(controls.out.find("| Button | OK | shown,enabled"), std::string::npos)
        << controls.out;
    EXPECT_NE(program.Run(hold + "show\nbox cancel\n").out.find("┌─ GeneralTuning ─"),
              std::string::npos);
    for (const char* blocked : {"ok", "apply", "cancel", "open Performance", "press 1090"}) {
        const auto result = program.Run(hold + blocked + "\n");
        EXPECT_EQ(result.code, 2) << blocked;
    }
}

TEST(Clock, ACommandComesWhenItsTimeHasCome) {
    // The question is up for a minute, as the log's time stamps show.
    const Program program(Sample().TcpToChange());
    const auto result = program.Run(
        "open Performance\npress 1086\nanswer hold\nat 60000 box ok\nanswer ok\nanswer no\n"
        "press 1090\nwait 30000\nlog\nwait 40000\nlog\n");
    ASSERT_EQ(result.code, 0) << result.err;
    const auto lines = result.Lines();
    const std::size_t box = result.out.find("box | GeneralTuning");
    EXPECT_EQ(result.out.find(" 8:06 : "), result.out.find(" 8:06 : ", box));
    EXPECT_NE(result.out.find("19-11-2026 8:05 : Start Corvanta Tessaron Ethernet general"),
              std::string::npos);
    EXPECT_NE(result.out.find("19-11-2026 8:06 : New Registry entry"), std::string::npos);
    EXPECT_LT(box, result.out.find("19-11-2026 8:06 : New Registry entry"));
}

TEST(Clock, CommandsThatAreDueDoNotCutAWaitShort) {
    const Program program(Sample().With("SOFTWARE\\Microsoft", ""));
    const auto result = program.Run(
        "at 1000 reg SOFTWARE\\StandIn\\Processors\n"
        "at 500 reg SOFTWARE\\Corvanta\n"
        "wait 2000\nreg SOFTWARE\\Microsoft\n");
    EXPECT_EQ(result.code, 0) << result.err;
    const auto lines = result.Lines();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines.front(), "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]");
    EXPECT_EQ(lines[2], "[HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Processors]");
    EXPECT_EQ(lines.back(), "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft]");
}

}  // namespace
