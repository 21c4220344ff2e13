// The drawing of the processors agrees with the registry, on every machine and after every run.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "Program.h"
#include "Text.h"

namespace {

using Line = std::u16string;

const std::string kSamples = SOURCE_DIR "/samples/";
const std::string kClassKeys =
    "SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-08002be10318}\\";
constexpr std::size_t kWidth = 100;
constexpr std::size_t kPlaceColumn = 14;
constexpr std::size_t kGridColumn = 29;

std::string Trimmed(const Line& line) {
    const auto first = line.find_first_not_of(u' ');
    if (first == Line::npos) return {};
    return platform::ToUtf8(line.substr(first, line.find_last_not_of(u' ') - first + 1));
}

// A port's part of the drawing, put together from all of its bands.
struct DrawnPort {
    struct Row {
        std::string place;
        std::map<int, char16_t> marks;  // by processor
    };
    std::string heading;
    std::map<std::string, Row> rows;  // by the first word of their name
    std::string notes;
};

// Which processor stands in which column: numbers side by side, or upright in several lines.
std::map<std::size_t, int> ReadNumbers(const std::vector<Line>& lines) {
    std::map<std::size_t, std::string> digits;
    for (const Line& line : lines) {
        std::size_t column = kGridColumn;
        for (std::size_t i = kGridColumn; i < line.size(); ++i) {
            if (line[i] < u'0' || line[i] > u'9') continue;
            if (lines.size() > 1 || line[i - 1] == u' ') column = i;
            digits[column] += static_cast<char>(line[i]);
        }
    }
    std::map<std::size_t, int> numbers;
    for (const auto& [column, number] : digits)
        numbers[column] = std::stoi(number);
    return numbers;
}

std::vector<DrawnPort> ReadDrawing(const std::vector<Line>& lines) {
    std::vector<DrawnPort> ports;
    auto port = ports.end();
    std::vector<Line> header;
    std::map<std::size_t, int> processors;  // by column
    for (const Line& line : lines) {
        EXPECT_LE(line.size(), kWidth) << platform::ToUtf8(line);
        const std::size_t start = line.find_first_not_of(u' ');
        if (start == kGridColumn && line.substr(start, 4) == u"node") {
            header.assign(1, {});
        } else if (!header.empty() && start != Line::npos) {
            header.push_back(line);
        } else if (!header.empty()) {
            header.erase(header.begin());
            processors = ReadNumbers(std::exchange(header, {}));
        } else if (start == 0) {
            port = std::find_if(ports.begin(), ports.end(), [&](const DrawnPort& other) {
                return other.heading == platform::ToUtf8(line);
            });
            if (port == ports.end()) port = ports.insert(port, {platform::ToUtf8(line), {}, {}});
        } else if (start == 2) {
            const std::string name = Trimmed(line.substr(0, kPlaceColumn));
            DrawnPort::Row& row = port->rows[name.substr(0, name.find(' '))];
            row.place = Trimmed(line.substr(kPlaceColumn, kGridColumn - kPlaceColumn));
            for (std::size_t i = kGridColumn; i < line.size(); ++i) {
                if (line[i] == u' ') continue;
                EXPECT_TRUE(processors.contains(i)) << platform::ToUtf8(line);
                EXPECT_TRUE(row.marks.emplace(processors[i], line[i]).second) << "drawn twice";
            }
        } else if (start == kPlaceColumn) {
            port->notes += Trimmed(line) + "\n";
        }
    }
    std::erase_if(ports, [](const DrawnPort& other) { return other.rows.empty(); });  // the legend
    return ports;
}

using Values = std::map<std::string, std::string>;  // texts by name

// What the values of a class key must look like.
void ExpectAgreement(const DrawnPort& port, const Values& values, int processors) {
    const auto number = [&](const char* name, int otherwise) {
        const auto found = values.find(name);
        return found == values.end() ? otherwise : std::stoi(found->second);
    };
    const std::pair<const char*, const char*> kSingles[] = {
        {"receive", "DefaultRecvRingProcessor"},
        {"transmit", "TxInterruptProcessor"},
        {"forwarding", "TxForwardingProcessor"},
    };
    std::map<std::string, std::map<int, char16_t>> expected;
    for (const auto& [name, value] : kSingles) {
        const int at = number(value, -2);
        for (int i = 0; i < processors; ++i)
            expected[name][i] = i == at ? u'●' : u'·';
        const std::string place = at == -2   ? "not set"
                                  : at == -1 ? "driver (-1)"
                                             : std::to_string(at);
        EXPECT_EQ(port.rows.at(name).place, place);
    }
    int left = number("*MaxRssProcessors", 8);
    for (int i = 0; i < processors; ++i) {
        const bool isInRange =
            i >= number("*RssBaseProcNumber", 0) && i <= number("*RssMaxProcNumber", 63);
        expected["RSS"][i] = !isInRange ? u'·' : left-- > 0 ? u'■' : u'□';
    }
    for (const auto& [name, marks] : expected)
        EXPECT_EQ(port.rows.at(name).marks, marks) << name;
}

struct Look {
    std::vector<Line> drawn;
    std::map<std::string, Values> values;  // by class key
};

// What a session has printed of its placements, each followed by class keys.
std::vector<Look> ReadLooks(const std::vector<std::string>& lines) {
    std::vector<Look> looks;
    std::string key;
    for (const std::string& line : lines) {
        const std::size_t summary = line.find(" processor");
        const std::size_t equals = line.find("\"=\"");
        if (summary != std::string::npos && summary < 4) {
            looks.emplace_back();
            key.clear();
        } else if (line.starts_with("[")) {
            key = line.substr(line.size() - 5, 4);
        } else if (!looks.empty() && key.empty()) {
            looks.back().drawn.push_back(platform::FromUtf8(line));
        } else if (!looks.empty() && line.starts_with("\"") && equals != std::string::npos) {
            looks.back().values[key][line.substr(1, equals - 1)] =
                line.substr(equals + 3, line.size() - equals - 4);
        }
    }
    return looks;
}

// Draws the card after each of the presses of a session, and compares each drawing with the
// registry. keys: the ports' class keys, in the ports' order.
void ExpectAgreementThroughout(const std::string& machine, const std::vector<std::string>& keys,
                               const std::vector<std::string>& presses, int processors) {
    std::string script = "open Performance\n";
    for (const std::string& press : presses) {
        script += press + "placement\n";
        for (const std::string& key : keys)
            script += "reg " + kClassKeys + key + "\n";
    }
    const auto result = Program().RunWith({machine, "--script", "-"}, script);
    ASSERT_EQ(result.code, 0) << result.err;
    const std::vector<Look> looks = ReadLooks(result.Lines());
    ASSERT_EQ(looks.size(), presses.size());
    for (std::size_t i = 0; i < looks.size(); ++i) {
        SCOPED_TRACE("after " + presses[i]);
        const std::vector<DrawnPort> ports = ReadDrawing(looks[i].drawn);
        ASSERT_EQ(ports.size(), keys.size());
        const bool isTuned = presses[i].ends_with("press 1090\n");
        const std::string scenario = isTuned ? presses[i].substr(6, 4) : "";
        EXPECT_EQ(std::any_of(keys.begin(), keys.end(),
                              [&](const std::string& key) {
                                  const Values& values = looks[i].values.at(key);
                                  const auto value = values.find("TuningScenario");
                                  return value != values.end() && value->second == scenario;
                              }),
                  isTuned && scenario != "1095");
        for (std::size_t port = 0; port < ports.size(); ++port) {
            SCOPED_TRACE(ports[port].heading);
            ExpectAgreement(ports[port], looks[i].values.at(keys[port]), processors);
        }
    }
}

// The scenarios that the tab of the first port offers.
std::vector<std::string> Offered(const std::string& machine) {
    const auto shown =
        Program().RunWith({machine, "--script", "-"}, "open Performance\ncontrols\n");
    std::vector<std::string> offered;
    for (const std::string& line : shown.Lines()) {
        if (line.ends_with("enabled,unchecked") || line.ends_with("enabled,checked"))
            offered.push_back(line.substr(std::string("control | ").size(), 4));
    }
    return offered;
}

TEST(Placement, AgreesWithTheRegistryForEachSampleAndScenario) {
    struct Card {
        int processors;
        std::vector<std::string> keys;
    };
    const std::map<std::string, Card> kCards = {
        {"empty-node.reg", {8, {"0017", "0018"}}},
        {"mixed-ports.reg", {8, {"0013", "0014"}}},
        {"plain-export.reg", {8, {"0021", "0022"}}},
        {"port-types.reg", {8, {"0024", "0023"}}},
        {"server-release-4.reg", {16, {"0006", "0007"}}},
        {"single-port.reg", {4, {"0008"}}},
        {"large-server.reg", {128, {"0015", "0016"}}},
        {"three-nodes.reg", {12, {"0015", "0016"}}},
        {"two-port-ethernet.reg", {16, {"0011", "0012"}}},
        {"two-port-ipoib.reg", {12, {"0009", "0010"}}},
        {"unicode-name.reg", {8, {"0019", "0020"}}},
    };
    for (const auto& file : std::filesystem::directory_iterator(kSamples)) {
        if (file.path().extension() != ".reg") continue;
        SCOPED_TRACE(file.path());
        const auto card = kCards.find(file.path().filename());
        ASSERT_NE(card, kCards.end()) << "isn't in the table";
        const std::vector<std::string> scenarios = Offered(file.path());
        ASSERT_GE(scenarios.size(), 4U);
        std::vector<std::string> presses = {""};
        for (const std::string& id : scenarios)
            presses.push_back("press " + id + "\npress 1090\n");
        ExpectAgreementThroughout(file.path(), card->second.keys, presses, card->second.processors);
    }
}

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
        {"a node without processors in front and between", "16", "1,1,1,1,9,9,9,9,9", 16},
        {"far numbers", "60,60,60,60", nodes(240, 60), 240},
        {"nodes that can't be queried", "8", "-,0,0,0,1,1,1,-", 8},
    };
    for (const auto& machine : kCases) {
        SCOPED_TRACE(machine.what);
        const Program program(Sample().Processors(machine.groups, machine.nodes));
        // Not with a node that can't be queried, or holds more than 64.
        const bool canBeTuned =
            machine.nodes.find('-') == std::string::npos && machine.nodes != "0";
        const auto key = [](int port) { return Sample::ClassKey(port).substr(kClassKeys.size()); };
        ExpectAgreementThroughout(program.Machine(), {key(1), key(2)},
                                  {"", canBeTuned ? "press 1088\npress 1090\n" : "press 1088\n"},
                                  machine.processors);
    }
}

TEST(Placement, SaysWhatAValueIsThatIsNoProcessor) {
    const struct {
        const char *value, *row, *place;
        const char* note = "";
    } kCases[] = {
        {"\"DefaultRecvRingProcessor\"=\"8\"", "receive", "8: beyond"},
        {"\"TxInterruptProcessor\"=dword:ffffffff", "transmit", "driver (-1)"},
        {"\"TxForwardingProcessor\"=hex:33,00", "forwarding", "not a number"},
        {"\"*RssBaseProcNumber\"=\"2\"", "RSS", "2-7", "*MaxRssProcessors isn't set; the default"},
        {"\"*RssBaseProcNumber\"=\"9\"", "RSS", "none", "beyond the machine's processors"},
        {"\"*MaxRssProcessors\"=\"3\"", "RSS", "3 of 0-63"},
    };
    for (const auto& said : kCases) {
        SCOPED_TRACE(said.value);
        const auto result = Program(Sample().PortValue(1, said.value)).Run("placement\n");
        const auto ports = ReadDrawing(ReadLooks(result.Lines()).at(0).drawn);
        ASSERT_EQ(ports.size(), 2U) << result.out;
        EXPECT_EQ(ports.front().rows.at(said.row).place, said.place);
        EXPECT_TRUE(Has(ports.front().notes, said.note)) << ports.front().notes;
    }
}

TEST(Placement, TheReadMeShowsWhatADualPortRunDoes) {
    const auto result = Program().RunWith({kSamples + "two-port-ethernet.reg", "--script", "-"},
                                          "open Performance\npress 1087\npress 1090\nplacement\n");
    const std::size_t drawing = result.out.rfind("16 processors");
    ASSERT_NE(drawing, std::string::npos) << result.err;
    EXPECT_NE(
        FileText(SOURCE_DIR "/README.md").find("\n```\n" + result.out.substr(drawing) + "```\n"),
        std::string::npos)
        << result.out.substr(drawing);
}

}  // namespace
