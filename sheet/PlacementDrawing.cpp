#include "PlacementDrawing.h"

#include <algorithm>

#include "Columns.h"
#include "NodeMap.h"
#include "Placement.h"

namespace sheet {

namespace {

using DrawnLine = std::u32string;
using DrawnLines = std::vector<DrawnLine>;

constexpr std::size_t kWidth = 100;
constexpr std::size_t kNameColumn = 2;
constexpr std::size_t kPlaceColumn = 14;
constexpr std::size_t kGridColumn = kPlaceColumn + kWidestPlace + 2;
constexpr std::size_t kMostInBlock = 64;  // processors of a node that stand in one row

DrawnLine Points(std::string_view text) {
    return CodePoints(FromUtf8(text));
}

void PutAt(DrawnLine& line, std::size_t column, const DrawnLine& piece) {
    if (line.size() < column + piece.size()) line.resize(column + piece.size(), U' ');
    std::copy(piece.begin(), piece.end(), line.begin() + static_cast<std::ptrdiff_t>(column));
}

// A line of a name that may hold anything.
DrawnLine Heading(const DrawnLine& text) {
    return Shortened(Printable(text), static_cast<int>(kWidth));
}

// How close processors and nodes stand, from the widest on.
struct Spacing {
    std::size_t cell;
    std::size_t gap;
};
constexpr Spacing kSpacings[] = {{3, 3}, {2, 3}, {2, 2}, {1, 2}, {1, 1}};

// A node's processors, or some of them, side by side.
struct Block {
    DrawnLine title;
    std::vector<DWORD> processors;
    std::size_t column;
};
using Band = std::vector<Block>;

class Grid {
  public:
    explicit Grid(const NodeMap& map)
        : m_digits(std::to_string(std::max<DWORD>(map.processors, 1) - 1).size()) {
        for (const Spacing& spacing : kSpacings) {
            m_spacing = spacing;
            LayOut(map);
            if (m_bands.size() == 1 && m_end <= kWidth) break;
        }
    }

    const std::vector<Band>& Bands() const { return m_bands; }
    // The names of the nodes, and below them the numbers of their processors.
    DrawnLines Header(const Band& band) const {
        DrawnLines lines(1 + (IsUpright() ? m_digits : 1));
        for (const Block& block : band) {
            PutAt(lines[0], block.column, Title(block));
            if (block.processors.empty()) PutAt(lines[1], block.column, U"none");
            for (std::size_t i = 0; i < block.processors.size(); ++i)
                PutNumber(lines, block.column + i * m_spacing.cell, block.processors[i]);
        }
        std::erase(lines, DrawnLine());  // hundreds, where this band has none
        return lines;
    }
    void PutMarks(DrawnLine& line, const Band& band, const std::vector<Mark>& marks) const {
        static constexpr char32_t kPoints[] = U"·●■□";
        for (const Block& block : band) {
            for (std::size_t i = 0; i < block.processors.size(); ++i) {
                const Mark mark = marks[block.processors[i]];
                PutAt(line, block.column + i * m_spacing.cell,
                      DrawnLine(1, kPoints[static_cast<std::size_t>(mark)]));
            }
        }
    }

  private:
    // Numbers that would touch stand upright, a digit a line.
    bool IsUpright() const { return m_digits >= m_spacing.cell; }

    std::size_t CellsWidth(const Block& block) const {
        if (block.processors.empty()) return 0;
        return (block.processors.size() - 1) * m_spacing.cell + (IsUpright() ? 1 : m_digits);
    }

    // The name with a line to the end of its processors.
    DrawnLine Title(const Block& block) const {
        const std::size_t width = CellsWidth(block);
        if (width < block.title.size() + 2) return block.title;
        return block.title + U" " + DrawnLine(width - block.title.size() - 1, U'─');
    }

    void PutNumber(DrawnLines& lines, std::size_t column, DWORD processor) const {
        const DrawnLine number = Points(std::to_string(processor));
        if (!IsUpright()) {
            PutAt(lines[1], column, number);
            return;
        }
        for (std::size_t i = 0; i < number.size(); ++i)
            PutAt(lines[1 + m_digits - number.size() + i], column, DrawnLine(1, number[i]));
    }

    void LayOut(const NodeMap& map) {
        m_bands.assign(1, {});
        for (const NodeMap::Node& node : map.nodes) {
            std::size_t first = 0;
            do {
                const std::size_t count = std::min(node.processors.size() - first, kMostInBlock);
                const auto begin = node.processors.begin() + static_cast<std::ptrdiff_t>(first);
                Add({Points(node.name), {begin, begin + static_cast<std::ptrdiff_t>(count)}, 0});
                first += count;
            } while (first < node.processors.size());
        }
    }

    // Puts a block behind the last one, or at the start of a new band.
    void Add(Block block) {
        const std::size_t width = std::max(CellsWidth(block), block.title.size());
        block.column = m_bands.back().empty() ? kGridColumn : m_end + m_spacing.gap;
        if (block.column + width > kWidth && !m_bands.back().empty()) {
            m_bands.emplace_back();
            block.column = kGridColumn;
        }
        m_end = block.column + width;
        m_bands.back().push_back(std::move(block));
    }

    std::size_t m_digits;
    Spacing m_spacing{};
    std::vector<Band> m_bands;
    std::size_t m_end = 0;  // of the last block
};

std::string Summary(const NodeMap& map) {
    if (map.processors == 0) return "The system doesn't tell its processors.";
    std::string text = std::to_string(map.processors);
    text += map.processors == 1 ? " processor, " : " processors, ";
    if (map.highestNode == 0) return text + "one NUMA node";
    return text + "NUMA nodes 0 to " + std::to_string(map.highestNode);
}

// What the drawing's signs mean; only those that occur are told.
constexpr struct {
    const char32_t* sign;
    const char32_t* meaning;
} kLegend[] = {
    {U"●", U"● does this work"},
    {U"■", U"■ RSS takes it"},
    {U"□", U"□ in RSS's range, beyond its count"},
    {U" ×", U"×n: in n queues"},
    {U"driver (-1)", U"driver (-1): the driver chooses"},
    {U"beyond", U"beyond: no such processor"},
};

DrawnLines Legend(const DrawnLines& drawing) {
    DrawnLines legend(1);
    for (const auto& entry : kLegend) {
        if (std::none_of(drawing.begin(), drawing.end(), [&](const DrawnLine& line) {
                return line.find(entry.sign) != DrawnLine::npos;
            }))
            continue;
        const DrawnLine meaning = entry.meaning;
        if (legend.back().size() + meaning.size() + 3 > kWidth) legend.emplace_back();
        if (!legend.back().empty()) legend.back() += U"   ";
        legend.back() += meaning;
    }
    return legend;
}

struct PortDrawing {
    DrawnLine heading;
    Placement placement;
};

std::vector<PortDrawing> ReadPorts(const CardPorts& card, const NodeMap& map) {
    std::vector<PortDrawing> ports;
    for (const Port& port : card.ports) {
        PortDrawing drawing{CodePoints(port.name), PlacementOf(port, map.processors)};
        if (!drawing.placement.scenario.empty())
            drawing.heading += Points(", tuned for " + drawing.placement.scenario);
        drawing.heading = Heading(drawing.heading);
        ports.push_back(std::move(drawing));
    }
    return ports;
}

void Append(DrawnLines& lines, const DrawnLines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

void DrawPort(DrawnLines& lines, const PortDrawing& port, const Grid& grid, const Band& band,
              bool isLastBand) {
    lines.push_back(port.heading);
    for (const WorkRow& row : port.placement.rows) {
        DrawnLine line;
        PutAt(line, kNameColumn, Points(row.name));
        PutAt(line, kPlaceColumn, Points(row.place));
        grid.PutMarks(line, band, row.marks);
        lines.push_back(std::move(line));
    }
    if (!isLastBand) return;
    for (const std::string& note : port.placement.notes)
        lines.push_back(DrawnLine(kPlaceColumn, U' ') + Points(note));
}

std::string ToText(const DrawnLines& lines) {
    std::string text;
    for (const DrawnLine& line : lines)
        text += ToUtf8(line.substr(0, line.find_last_not_of(U' ') + 1)) + "\n";
    return text;
}

}  // namespace

std::string DrawPlacement(const Text& instanceId) {
    const NodeMap map = ReadNodeMap();
    const CardPorts card = ReadCardPorts(instanceId);
    const std::vector<PortDrawing> ports = ReadPorts(card, map);
    const Grid grid(map);
    DrawnLines lines = {Points(Summary(map))};
    for (const Band& band : grid.Bands()) {
        lines.emplace_back();
        Append(lines, grid.Header(band));
        for (const PortDrawing& port : ports) {
            lines.emplace_back();
            DrawPort(lines, port, grid, band, &band == &grid.Bands().back());
        }
    }
    lines.emplace_back();
    if (ports.empty()) {
        lines.push_back(Heading(CodePoints(instanceId) + U" is no network adapter."));
    } else {
        Append(lines, Legend(lines));
    }
    if (!card.isTreeRead)
        lines.push_back(U"The device tree doesn't tell whether there is a second port.");
    return ToText(lines);
}

}  // namespace sheet
