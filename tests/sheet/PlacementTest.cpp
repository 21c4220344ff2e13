// The drawing of the processors agrees with the registry, on every machine and after every run.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "Program.h"
#include "Text.h"

namespace {

using Line = std::u32string;

const std::string kClassKeys =
    "SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-08002be10318}\\";
constexpr std::size_t kWidth = 100;
constexpr std::size_t kPlaceColumn = 14;
constexpr std::size_t kGridColumn = 29;

Line Points(const std::string& utf8) {
    Line points;
    const std::u16string wide = platform::FromUtf8(utf8);
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const bool isPair = (wide[i] & 0xFC00) == 0xD800 && i + 1 < wide.size();
        points += isPair ? U'\uFFFD' : wide[i];
        if (isPair) ++i;
    }
    return points;
}

std::string Bytes(const Line& line) {
    return platform::ToUtf8(std::u16string(line.begin(), line.end()));
}

std::string Trimmed(const Line& line) {
    const auto first = line.find_first_not_of(U' ');
    if (first == Line::npos) return {};
    return Bytes(line.substr(first, line.find_last_not_of(U' ') - first + 1));
}

// A row of the drawing, put together from all of its lines.
struct Row {
    std::string place;
    std::map<int, char32_t> marks;  // by processor
};
struct DrawnPort {
    std::string heading;
    std::map<std::string, Row> rows;  // by the first word of their name
    std::string notes;
};

class Drawing {
  public:
    explicit Drawing(const std::vector<Line>& lines) {
        std::vector<Line> numbers;
        Line heading;
        bool inHeader = false;
        for (const Line& line : lines) {
            EXPECT_LE(line.size(), kWidth) << Bytes(line);
            const std::size_t start = line.find_first_not_of(U' ');
            if (start == kGridColumn && line.substr(start, 4) == U"node") {
                inHeader = true;
                numbers.clear();
            } else if (inHeader && start != Line::npos) {
                numbers.push_back(line);
            } else if (inHeader) {
                inHeader = false;
                ReadNumbers(numbers);
            } else if (start == 0) {
                heading = line;
            } else if (start == 2) {
                AddRow(Bytes(heading), line);
            } else if (start == kPlaceColumn) {
                ports[m_port].notes += Trimmed(line) + "\n";
            }
        }
    }

    std::vector<DrawnPort> ports;

  private:
    // Which processor stands in which column: numbers side by side, or upright in several lines.
    void ReadNumbers(const std::vector<Line>& lines) {
        m_columns.clear();
        std::map<std::size_t, std::string> digits;
        for (const Line& line : lines) {
            std::size_t column = kGridColumn;
            for (std::size_t i = kGridColumn; i < line.size(); ++i) {
                if (line[i] < U'0' || line[i] > U'9') continue;
                const bool goesOn = lines.size() == 1 && line[i - 1] != U' ';
                if (!goesOn) column = i;
                digits[column] += static_cast<char>(line[i]);
            }
        }
        for (const auto& [column, number] : digits)
            m_columns[column] = std::stoi(number);
    }

    void AddRow(const std::string& heading, const Line& line) {
        auto port = std::find_if(ports.begin(), ports.end(),
                                 [&](const DrawnPort& other) { return other.heading == heading; });
        if (port == ports.end()) port = ports.insert(port, DrawnPort{heading, {}, {}});
        m_port = static_cast<std::size_t>(port - ports.begin());
        const std::string name = Trimmed(line.substr(0, kPlaceColumn));
        Row& row = port->rows[name.substr(0, name.find(' '))];
        row.place = Trimmed(line.substr(kPlaceColumn, kGridColumn - kPlaceColumn));
        for (std::size_t i = kGridColumn; i < line.size(); ++i) {
            if (line[i] == U' ') continue;
            ASSERT_TRUE(m_columns.contains(i)) << Bytes(line);
            EXPECT_TRUE(row.marks.emplace(m_columns[i], line[i]).second) << "drawn twice";
        }
    }

    std::map<std::size_t, int> m_columns;
    std::size_t m_port = 0;  // of the row read last
};

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
    std::map<std::string, std::map<int, char32_t>> expected;
    for (const auto& [name, value] : kSingles) {
        const int at = number(value, -2);
        for (int i = 0; i < processors; ++i)
            expected[name][i] = i == at ? U'●' : U'·';
        const std::string place = at == -2   ? "not set"
                                  : at == -1 ? "driver (-1)"
                                             : std::to_string(at);
        EXPECT_EQ(port.rows.at(name).place, place);
    }
    int left = number("*MaxRssProcessors", 8);
    for (int i = 0; i < processors; ++i) {
        const bool isInRange =
            i >= number("*RssBaseProcNumber", 0) && i <= number("*RssMaxProcNumber", 63);
        expected["RSS"][i] = !isInRange ? U'·' : left-- > 0 ? U'■' : U'□';
    }
    for (const auto& [name, marks] : expected)
        EXPECT_EQ(port.rows.at(name).marks, marks) << name;
    const bool isDefault = number("*RssBaseProcNumber", 0) == 0 &&
                           number("*MaxRssProcessors", 8) == 8 &&
                           number("*RssMaxProcNumber", 63) == 63;
    EXPECT_EQ(port.notes.find("default") != std::string::npos &&
                  port.notes.find("base 0, 8") != std::string::npos,
              isDefault)
        << port.notes;
    const std::map<int, std::string> kScenarios = {{1086, "single port traffic"},
                                                   {1087, "dual port traffic"},
                                                   {1088, "forwarding traffic"},
                                                   {1096, "multicast traffic"},
                                                   {1098, "single stream traffic"}};
    const int scenario = number("TuningScenario", 0);
    const std::size_t comma = port.heading.find(", tuned for ");
    EXPECT_EQ(comma == std::string::npos ? "" : port.heading.substr(comma + 12),
              scenario == 0 ? "" : kScenarios.at(scenario));
}

// The class key of each connection name, as the machine file says.
std::map<std::string, std::string> ClassKeys(const std::string& machine) {
    std::map<std::string, std::string> nameOfGuid, keys;
    std::istringstream text(machine);
    std::string section;
    const auto unquoted = [](const std::string& line, const std::string& start) {
        return line.substr(start.size(), line.size() - start.size() - 1);
    };
    for (int pass = 0; pass < 2; ++pass) {
        text.clear();
        text.seekg(0);
        for (std::string line; std::getline(text, line);) {
            const std::string kName = "\"Name\"=\"", kGuid = "\"NetCfgInstanceId\"=\"";
            if (line.starts_with("[")) section = line.substr(0, line.size() - 1);
            if (pass == 0 && line.starts_with(kName) && section.ends_with("\\Connection"))
                nameOfGuid[section.substr(section.rfind('{'), 38)] = unquoted(line, kName);
            if (pass == 1 && line.starts_with(kGuid))
                keys[nameOfGuid[unquoted(line, kGuid)]] = section.substr(section.rfind('\\') + 1);
        }
    }
    return keys;
}

// Draws the card after each of the deeds of a session, and compares each drawing with the registry.
// deeds: scripts, each for a further state of the machine.
void ExpectAgreementThroughout(const Program& program, const std::string& machine,
                               const std::vector<std::string>& deeds, int processors,
                               std::size_t ports) {
    std::string script = "open Performance\n";
    const auto keys = ClassKeys(FileText(machine));
    for (const std::string& deed : deeds) {
        script += deed + "placement\n";
        for (const auto& [name, key] : keys)
            script += "reg " + kClassKeys + key + "\n";
    }
    const auto result = program.RunWith({machine, "--script", "-"}, script);
    ASSERT_EQ(result.code, 0) << result.err;

    const auto lines = result.Lines();
    const auto isSummary = [](const std::string& line) {
        const std::size_t word = line.find(" processor");
        return word != std::string::npos && word < 4;
    };
    auto at = lines.begin();
    for (const std::string& deed : deeds) {
        SCOPED_TRACE("after " + deed);
        at = std::find_if(at, lines.end(), isSummary);
        ASSERT_NE(at, lines.end());
        std::vector<Line> drawn;
        for (; at != lines.end() && !at->starts_with("["); ++at)
            drawn.push_back(Points(*at));
        std::map<std::string, Values> values;
        std::string key;
        for (; at != lines.end() && !at->starts_with("box ") && !isSummary(*at); ++at) {
            if (at->starts_with("["))
                key = at->substr(at->rfind('\\') + 1, at->size() - at->rfind('\\') - 2);
            const std::size_t equals = at->find("\"=\"");
            if (at->starts_with("\"") && equals != std::string::npos)
                values[key][at->substr(1, equals - 1)] =
                    at->substr(equals + 3, at->size() - equals - 4);
        }
        const Drawing drawing(drawn);
        ASSERT_EQ(drawing.ports.size(), ports);
        for (const DrawnPort& port : drawing.ports) {
            SCOPED_TRACE(port.heading);
            const std::string name = port.heading.substr(0, port.heading.find(", tuned for "));
            ASSERT_TRUE(keys.contains(name));
            ExpectAgreement(port, values[keys.at(name)], processors);
        }
    }
}

// One deed for each scenario that the tab offers, and one that only looks.
std::vector<std::string> Scenarios(const Program& program, const std::string& machine) {
    std::vector<std::string> deeds = {""};
    const auto result = program.RunWith({machine, "--script", "-"}, "open Performance\ncontrols\n");
    for (const char* id : {"1086", "1098", "1087", "1088", "1096", "1095"}) {
        const std::size_t control = result.out.find("control | " + std::string(id) + " |");
        const std::size_t end = result.out.find('\n', control);
        if (control != std::string::npos &&
            result.out.substr(control, end - control).find("shown,enabled") != std::string::npos)
            deeds.push_back("press " + std::string(id) + "\npress 1090\n");
    }
    return deeds;
}

TEST(Placement, AgreesWithTheRegistryForEachSampleAndScenario) {
    const std::map<std::string, int> kProcessors = {
        {"empty-node.reg", 8},   {"mixed-ports.reg", 8},        {"plain-export.reg", 8},
        {"port-types.reg", 8},   {"server-release-4.reg", 16},  {"single-port.reg", 4},
        {"three-nodes.reg", 12}, {"two-port-ethernet.reg", 16}, {"two-port-ipoib.reg", 12},
        {"unicode-name.reg", 8},
    };
    const Program program;
    for (const auto& [sample, processors] : kProcessors) {
        SCOPED_TRACE(sample);
        const std::string machine =
            (std::filesystem::path(SOURCE_DIR) / "samples" / sample).string();
        const auto deeds = Scenarios(program, machine);
        EXPECT_GE(deeds.size(), 5U);
        ExpectAgreementThroughout(program, machine, deeds, processors,
                                  sample == "single-port.reg" ? 1 : 2);
    }
}

TEST(Placement, FitsOnAnyMachine) {
    const auto nodes = [](int processors, int each) {
        std::string text;
        for (int i = 0; i < processors; ++i)
            text += (i ? "," : "") + std::to_string(i / each);
        return text;
    };
    const auto turns = [](int processors, int count) {
        std::string text;
        for (int i = 0; i < processors; ++i)
            text += (i ? "," : "") + std::to_string(i % count);
        return text;
    };
    const struct {
        const char* what;
        const char* groups;
        std::string nodes;
        int processors;
    } kCases[] = {
        {"one processor", "1", "0", 1},
        {"one node of 64", "64", "0", 64},
        {"two nodes in two groups", "32,32", nodes(64, 32), 64},
        {"eight nodes", "64", nodes(64, 8), 64},
        {"nodes that take turns", "24", turns(24, 2), 24},
        {"32 nodes", "64", nodes(64, 2), 64},
        {"one node of 128", "64,64", "0", 128},
        {"a node without processors in front and between", "16", "1,1,1,1,9,9,9,9,9", 16},
        {"far numbers", "60,60,60,60", nodes(240, 60), 240},
        {"nodes that can't be queried", "8", "-,0,0,0,1,1,1,-", 8},
    };
    for (const auto& machine : kCases) {
        SCOPED_TRACE(machine.what);
        const Program program(Sample().Processors(machine.groups, machine.nodes));
        const bool canBeTuned = machine.nodes.find('-') == std::string::npos;
        ExpectAgreementThroughout(program, program.Machine(),
                                  {"", canBeTuned ? "press 1088\npress 1090\n" : "press 1088\n"},
                                  machine.processors, 2);
    }
}

TEST(Placement, SaysWhatAValueIsThatIsNoProcessor) {
    const struct {
        const char* value;
        const char* row;
        const char* place;
        int marks;
        const char* note;
    } kCases[] = {
        {"\"DefaultRecvRingProcessor\"=\"7\"", "receive", "7", 1, ""},
        {"\"DefaultRecvRingProcessor\"=dword:7", "receive", "7", 1, ""},
        {"\"DefaultRecvRingProcessor\"=\"8\"", "receive", "8: beyond", 0, ""},
        {"\"DefaultRecvRingProcessor\"=\"-2\"", "receive", "-2: beyond", 0, ""},
        {"\"TxInterruptProcessor\"=dword:ffffffff", "transmit", "driver (-1)", 0, ""},
        {"\"TxInterruptProcessor\"=\"4294967296\"", "transmit", "far beyond", 0, ""},
        {"\"TxInterruptProcessor\"=\"99999999999999999999999\"", "transmit", "not a number", 0, ""},
        {"\"TxForwardingProcessor\"=\"\"", "forwarding", "not a number", 0, ""},
        {"\"TxForwardingProcessor\"=\"3 \"", "forwarding", "not a number", 0, ""},
        {"\"TxForwardingProcessor\"=hex:33,00", "forwarding", "not a number", 0, ""},
        {"\"*RssBaseProcNumber\"=\"2\"", "RSS", "2-7", 6,
         "*MaxRssProcessors isn't set; the default"},
        {"\"*RssBaseProcNumber\"=\"9\"", "RSS", "none", 0, "beyond the machine's processors"},
        {"\"*RssBaseProcNumber\"=\"-1\"", "RSS", "0-7", 8, "-1, the driver's choice; the default"},
        {"\"*MaxRssProcessors\"=\"3\"", "RSS", "3 of 0-63", 8, ""},
        {"\"*MaxRssProcessors\"=\"0\"", "RSS", "none", 8, ""},
        {"\"*MaxRssProcessors\"=\"x\"", "RSS", "0-7", 8, "*MaxRssProcessors isn't a number; the"},
        {"\"*RssMaxProcNumber\"=\"0\"", "RSS", "0", 1, ""},
        {"\"*RssMaxProcNumber\"=\"999999999999\"", "RSS", "0-7", 8, ""},
        {"\"*NumRSSQueues\"=\"many\"", "RSS", "0-7", 8, "*NumRSSQueues isn't a number"},
    };
    for (const auto& said : kCases) {
        SCOPED_TRACE(said.value);
        const Program program(Sample().PortValue(1, said.value));
        const auto result = program.Run("placement\n");
        std::vector<Line> lines;
        for (const std::string& line : result.Lines())
            lines.push_back(Points(line));
        const Drawing drawing(lines);
        ASSERT_EQ(drawing.ports.size(), 2U) << result.out;
        const DrawnPort& port = drawing.ports.front();
        const Row& row = port.rows.at(said.row);
        EXPECT_EQ(row.place, said.place);
        EXPECT_EQ(std::count_if(row.marks.begin(), row.marks.end(),
                                [](const auto& mark) { return mark.second != U'·'; }),
                  said.marks);
        EXPECT_NE(port.notes.find(said.note), std::string::npos) << port.notes;
    }
}

TEST(Placement, OfDevicesThatAreNoPorts) {
    const Program program;
    const auto bus = program.Run("placement\n", {"--device", Sample::BusInstanceId()});
    EXPECT_EQ(bus.code, 0) << bus.err;
    EXPECT_TRUE(
        bus.out.ends_with(std::string(Sample::BusInstanceId()) + " is no network adapter.\n"))
        << bus.out;
    EXPECT_EQ(bus.out.find("receive"), std::string::npos) << bus.out;
    const auto closed = program.Run("cancel\nplacement\n");
    EXPECT_EQ(closed.code, 2);
    EXPECT_NE(closed.err.find("no sheet is open"), std::string::npos) << closed.err;
}

TEST(Placement, TheReadMeShowsWhatADualPortRunDoes) {
    const std::filesystem::path root(SOURCE_DIR);
    const auto result =
        Program().RunWith({(root / "samples/two-port-ethernet.reg").string(), "--script", "-"},
                          "open Performance\npress 1087\npress 1090\nplacement\n");
    const std::size_t drawing = result.out.rfind("16 processors");
    ASSERT_NE(drawing, std::string::npos) << result.err;
    EXPECT_NE(FileText(root / "README.md").find("\n```\n" + result.out.substr(drawing) + "```\n"),
              std::string::npos)
        << result.out.substr(drawing);
}

}  // namespace
