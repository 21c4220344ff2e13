#include "ControlText.h"

#include <algorithm>

#include "Canvas.h"
#include "Columns.h"

namespace sheet {

namespace {

std::u32string Dimmed(const std::u32string& text, bool isEnabled) {
    return isEnabled ? text : U"~" + text + U"~";
}

bool IsRadio(const Control& control) {
    const LONG type = control.style & BS_TYPEMASK;
    return type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}

std::u32string ButtonLine(const Control& control, int width) {
    const std::u32string caption = Printable(control.text);
    if (!control.isChecked) return ButtonOf(caption, control.isEnabled, width);
    const bool on = *control.isChecked;
    const std::u32string mark =
        IsRadio(control) ? (on ? U"(o) " : U"( ) ") : (on ? U"[x] " : U"[ ] ");
    return mark + Dimmed(caption, control.isEnabled);
}

// end: what stands before the closing bracket.
std::u32string FieldLine(const Control& control, int width, const std::u32string& end) {
    const std::u32string text = Dimmed(Printable(control.text), control.isEnabled);
    const int inside = width - 2 - static_cast<int>(end.size());
    return U"[" + Padded(text, inside, U'_') + end + U"]";
}

std::vector<std::u32string> ListLines(const Control& control, int width) {
    std::vector<std::u32string> lines;
    for (const Entry& entry : EntriesOf(control))
        lines.emplace_back(Cut((entry.isSelected ? U"> " : U"  ") + Printable(entry.text), width));
    return lines;
}

std::vector<std::u32string> TableLines(const Control& control, int width) {
    const std::vector<Text> headings = HeadingsOf(control);
    const std::vector<Row> rows = RowsOf(control);
    std::vector<std::vector<std::u32string>> table;
    std::vector<int> widths(std::max<std::size_t>(headings.size(), 1), 0);
    const auto add = [&](const std::u32string& mark, const std::vector<Text>& cells) {
        table.emplace_back();
        for (std::size_t i = 0; i < cells.size() && i < widths.size(); ++i) {
            table.back().push_back((i == 0 ? mark : U"") + Printable(cells[i]));
            widths[i] = std::max(widths[i], ColumnsOf(table.back().back()));
        }
    };
    const bool hasBoxes = !rows.empty() && rows.front().isChecked;
    add(hasBoxes ? U"      " : U"  ", headings);
    for (const Row& row : rows) {
        std::u32string mark = row.isSelected ? U"> " : U"  ";
        if (row.isChecked) mark += *row.isChecked ? U"[x] " : U"[ ] ";
        add(mark, row.columns);
    }
    std::vector<std::u32string> lines;
    for (const auto& cells : table) {
        std::u32string line;
        for (std::size_t i = 0; i < cells.size(); ++i)
            line += i + 1 < cells.size() ? Padded(cells[i], widths[i] + 2) : cells[i];
        lines.emplace_back(Cut(line, width));
        if (lines.size() == 1)
            lines.emplace_back(static_cast<std::size_t>(std::max(width, 0)), U'╌');
    }
    return lines;
}

// What fits a tall text control without scrolling, and how much more there is. A line is eight
// dialog units high.
std::vector<std::u32string> VisibleLines(std::vector<std::u32string> lines,
                                         const Control& control) {
    const std::size_t room =
        static_cast<std::size_t>(std::max((control.place.bottom - control.place.top) / 8, 2));
    if (lines.size() <= room) return lines;
    const std::string below = std::to_string(lines.size() - room + 1);
    lines.resize(room - 1);
    lines.push_back(U"▼ " + std::u32string(below.begin(), below.end()) + U" more lines below");
    return lines;
}

}  // namespace

std::u32string ButtonOf(const std::u32string& caption, bool isEnabled, int width) {
    const std::u32string text = Dimmed(caption, isEnabled);
    const int columns = ColumnsOf(text);
    const int inside = std::max(width - 2, columns + 2);
    const int before = (inside - columns) / 2;
    return U"[" + Padded({}, before) + text + Padded({}, inside - columns - before) + U"]";
}

std::vector<std::u32string> LinesOf(const Control& control, int width) {
    switch (control.kind) {
        case Class::GroupBox:
        case Class::Picture:
            return {};
        case Class::Button:
            return {ButtonLine(control, width)};
        case Class::Static:
            if (control.text.empty()) return {};
            return Wrap(Dimmed(CodePoints(control.text), control.isEnabled), width);
        case Class::ComboBox:
            return {FieldLine(control, width, U"v")};
        case Class::Edit:
        case Class::RichEdit:
            if (control.place.bottom - control.place.top > 16)
                return VisibleLines(Wrap(CodePoints(control.text), width), control);
            return {FieldLine(control, width, U"")};
        case Class::ListBox:
            return ListLines(control, width);
        case Class::ListView:
            return TableLines(control, width);
        case Class::Other:
            if (control.text.empty()) return {};
            return Wrap(CodePoints(control.text), width);
    }
    return {};
}

}  // namespace sheet
