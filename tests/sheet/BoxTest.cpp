// Message boxes in a transcript, and the clock of a script.

#include <gtest/gtest.h>

#include <regex>

#include "Program.h"

namespace {

// The boxes of a transcript: captions and answers.
std::string Boxes(const Program::Result& result) {
    return std::regex_replace(result.out, std::regex("box \\| (.*?) \\| .* \\| (.*)\n"),
                              "$1: $2; ");
}

TEST(Boxes, AreAnsweredWithWhatWasQueuedElseWithOkOrYes) {
    const std::string agreed =
        "GeneralTuning: ok; Tuning succeeded: ok; Reboot Your Machine: yes; ";
    const std::string refused = "GeneralTuning: cancel; Performance tuning failed.: ok; ";
    const struct {
        const char* reason;
        std::string script;
        std::string boxes;
    } kCases[] = {
        {"nothing queued", "press 1090\n", agreed},
        {"queued", "answer ok\nanswer ok\nanswer no\npress 1090\n",
         "GeneralTuning: ok; Tuning succeeded: ok; Reboot Your Machine: no; "},
        {"consent cancelled", "answer cancel\npress 1090\n", refused},
        {"left up, then answered", "answer hold\npress 1090\nbox cancel\n", refused},
        {"left up to the end of the script", "answer hold\npress 1090\n", agreed},
    };
    const Program program(Sample().TcpToChange());
    for (const auto& answered : kCases) {
        SCOPED_TRACE(answered.reason);
        const auto result = program.Run("open Performance\npress 1086\n" + answered.script);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(Boxes(result), answered.boxes);
        EXPECT_TRUE(Has(result.out, "box | GeneralTuning | 65 | This feature will tune"));
        EXPECT_TRUE(Has(result.out, "reboot your machine.\\n\\nClick OK to continue"));
    }
}

TEST(Boxes, ABoxThatIsUpBlocksTheSheetAndIsShown) {
    const Program program(Sample().TcpToChange());
    const std::string hold = "open Performance\npress 1086\nanswer hold\npress 1090\n";
    EXPECT_TRUE(Has(program.Run(hold + "show\n").out, "┌─ GeneralTuning ─"));
    for (const char* blocked : {"ok", "apply", "cancel", "open Performance", "press 1090"})
        EXPECT_EQ(program.Run(hold + blocked + "\n").code, 2) << blocked;
}

TEST(Boxes, ARefusalCarriesNothingOn) {
    const char* const refused[] = {"answer hold\npress 1090\npress 9999\n",
                                   "answer yes\npress 1090\n"};
    for (const char* script : refused) {
        SCOPED_TRACE(script);
        const Program program(Sample().TcpToChange());
        const auto result =
            program.Run("open Performance\npress 1086\n" + std::string(script), {"--trace"});
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(Has(result.out, " | cancel\n")) << result.out;
        EXPECT_TRUE(Has(result.err, "call | RegQueryValueExW | "));
        EXPECT_FALSE(Has(result.err, "call | RegSetValueExW | ")) << result.err;
    }
}

TEST(Boxes, AnEmptyTextIsATextAndABreakStaysInItsLine) {
    const Program program(Sample()
                              .PortValue(1, R"("EnumPropPages32"=hex(1):)")
                              .PortValue(2, R"("DriverVersion"=hex(1):31,00,0d,00,32,00,00,00)")
                              .With("SOFTWARE\\StandIn", R"("NetshResult"=hex(1):)"));
    const auto result = program.Run("controls\nshow\n");
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(Has(result.out, "| Driver Version | 1\\n2 |")) << result.out;
    EXPECT_FALSE(Has(result.out, "\r"));
}

TEST(Clock, CommandsThatAreDueDoNotCutAWaitShort) {
    const Program program(Sample().With("SOFTWARE\\Last", ""));
    const auto result = program.Run(
        "at 1000 reg SOFTWARE\\StandIn\\Processors\nat 500 reg SOFTWARE\\Corvanta\n"
        "wait 2000\nreg SOFTWARE\\Last\n");
    EXPECT_EQ(result.code, 0) << result.err;
    const std::size_t first = result.out.find("\\Corvanta]");
    const std::size_t second = result.out.find("\\Processors]");
    EXPECT_LT(first, second);
    EXPECT_LT(second, result.out.find("\\Last]"));
}

}  // namespace
