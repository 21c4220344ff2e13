// The drawing of the processors: what it shows of the registry, and that it fits every machine.

#include <gtest/gtest.h>

#include <algorithm>

#include "Program.h"
#include "Text.h"

namespace {

const std::string kTwoPorts = SOURCE_DIR "/samples/two-port-ethernet.reg";
const std::string kFirstPort = "TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&01";

constexpr char kUnusualMachine[] = R"(6 processors, NUMA nodes 0 to 9

                             node 0    node 1   nodes 2-8   node 9
                             1  3  5   0  2     none        4

Local Area Connection 3
  receive     4              ·  ·  ·   ·  ·                 ●
  transmit    driver (-1)    ·  ·  ·   ·  ·                 ·
  forwarding  not set        ·  ·  ·   ·  ·                 ·
  RSS         2 of 1-4       ■  □  ·   ·  ■                 □

Local Area Connection 4
  receive     not set        ·  ·  ·   ·  ·                 ·
  transmit    not set        ·  ·  ·   ·  ·                 ·
  forwarding  not set        ·  ·  ·   ·  ·                 ·
  RSS         0-5            ■  ■  ■   ■  ■                 ■
              not set, by default: base 0, 8 processors, highest 63

● does this work   ■ RSS takes it   □ in RSS's range, beyond its count
driver (-1): the driver chooses
)";

TEST(Placement, ShowsWhatTheRegistryHolds) {
    const Program program(
        Sample()
            .Processors("3,3", "1,0,1,0,9,0")
            .PortValue(1,
                       "\"DefaultRecvRingProcessor\"=\"4\"\n\"TxInterruptProcessor\"=\"-1\"\n"
                       "\"*RssBaseProcNumber\"=\"1\"\n\"*RssMaxProcNumber\"=\"4\"\n"
                       "\"*MaxRssProcessors\"=\"2\""));
    EXPECT_EQ(program.Run("placement\n").out, kUnusualMachine);
}

TEST(Placement, TheReadMeShowsWhatADualPortRunDoes) {
    const auto result = Program().RunWith({kTwoPorts, "--device", kFirstPort, "--script", "-"},
                                          "open Performance\npress 1087\npress 1090\nplacement\n");
    const std::size_t drawing = result.out.rfind("16 processors");
    ASSERT_NE(drawing, std::string::npos) << result.err;
    EXPECT_NE(
        FileText(SOURCE_DIR "/README.md").find("\n```\n" + result.out.substr(drawing) + "```\n"),
        std::string::npos)
        << result.out.substr(drawing);
}

// Each processor has a mark in each of a port's four rows, in whatever band it stands.
TEST(Placement, FitsOnAnyMachine) {
    const auto nodes = [](int processors, int each, int count = 64) {
        std::string text;
        for (int i = 0; i < processors; ++i)
            text += (i ? "," : "") + std::to_string(i / each % count);
        return text;
    };
    const struct {
        const char* what;
        const char* groups;
        std::string nodes;
        int processors;
    } kCases[] = {
        {"two nodes in two groups", "32,32", nodes(64, 32), 64},
        {"nodes that take turns", "24", nodes(24, 1, 2), 24},
        {"32 nodes", "64", nodes(64, 2), 64},
        {"one node of 128", "64,64", "0", 128},
        {"far numbers", "60,60,60,60", nodes(240, 60), 240},
        {"nodes that can't be queried", "8", "-,0,0,0,1,1,1,-", 8},
    };
    for (const auto& machine : kCases) {
        SCOPED_TRACE(machine.what);
        const Program program(Sample().Processors(machine.groups, machine.nodes));
        int marks = 0;
        for (const std::string& line : program.Run("placement\n").Lines()) {
            const std::u16string text = platform::FromUtf8(line);
            EXPECT_LE(text.size(), 100U) << line;
            if (!line.starts_with("  ")) continue;  // the legend has marks, too
            marks += static_cast<int>(std::count_if(text.begin(), text.end(), [](char16_t mark) {
                return std::u16string_view(u"·●■□").find(mark) != std::u16string_view::npos;
            }));
        }
        EXPECT_EQ(marks, 2 * 4 * machine.processors);
    }
}

TEST(Placement, SaysWhatAValueIsThatIsNoProcessor) {
    const struct {
        const char *value, *row;
        const char* note = "";
    } kCases[] = {
        {"\"DefaultRecvRingProcessor\"=\"8\"", "\n  receive     8: beyond "},
        {"\"TxInterruptProcessor\"=dword:ffffffff", "\n  transmit    driver (-1) "},
        {"\"TxForwardingProcessor\"=hex:33,00", "\n  forwarding  not a number "},
        {"\"*RssBaseProcNumber\"=\"2\"", " 2-7 ", "*MaxRssProcessors isn't set; the default"},
        {"\"*RssBaseProcNumber\"=\"9\"", " none ", "beyond the machine's processors"},
        {"\"*MaxRssProcessors\"=\"3\"", " 3 of 0-63 "},
    };
    for (const auto& said : kCases) {
        const auto result = Program(Sample().PortValue(1, said.value)).Run("placement\n");
        EXPECT_TRUE(Has(result.out, said.row)) << result.out;
        EXPECT_TRUE(Has(result.out, said.note)) << result.out;
    }
}

}  // namespace
