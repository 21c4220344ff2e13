#include "ControlText.h"

#include <algorithm>
#include <string>

#include "Canvas.h"

namespace sheet {

namespace {

std::size_t Columns(int width) {
    return static_cast<std::size_t>(std::max(width, 0));
}

std::u32string Dimmed(const std::u32string& text, bool isEnabled) {
    return isEnabled ? text : U"~" + text + U"~";
}

bool IsRadio(const Control& control) {
    const LONG type = control.style & BS_TYPEMASK;
    return type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}

std::u32string ButtonLine(const Control& control, int width) {
    const std::u32string caption = CaptionOf(control.text);
    if (!control.isChecked) return ButtonOf(caption, control.isEnabled, width);
    const bool on = *control.isChecked;
    const std::u32string mark =
        IsRadio(control) ? (on ? U"(o) " : U"( ) ") : (on ? U"[x] " : U"[ ] ");
    return mark + Dimmed(caption, control.isEnabled);
}

std::u32string Field(const std::u32string& text, int width, const std::u32string& end) {
    std::u32string field = text.substr(0, Columns(width - 2 - static_cast<int>(end.size())));
    field.resize(Columns(width - 2 - static_cast<int>(end.size())), U'_');
    return U"[" + field + end + U"]";
}

// A text that has to stand in one line: what would break or tear it becomes a blank.
std::u32string OneLine(const Text& text) {
    std::u32string points = CodePoints(text);
    std::replace_if(
        points.begin(), points.end(), [](char32_t point) { return point < U' '; }, U' ');
    return points;
}

std::vector<std::u32string> ListLines(const Control& control) {
    std::vector<std::u32string> lines;
    for (const Entry& entry : EntriesOf(control))
        lines.push_back((entry.isSelected ? U"> " : U"  ") + OneLine(entry.text));
    return lines;
}

std::vector<std::u32string> TableLines(const Control& control, int width) {
    const std::vector<Text> headings = HeadingsOf(control);
    const std::vector<Row> rows = RowsOf(control);
    std::vector<std::vector<std::u32string>> table;
    std::vector<std::size_t> widths(std::max<std::size_t>(headings.size(), 1), 0);
    const auto add = [&](const std::u32string& mark, const std::vector<Text>& cells) {
        table.emplace_back();
        for (std::size_t i = 0; i < cells.size() && i < widths.size(); ++i) {
            table.back().push_back((i == 0 ? mark : U"") + OneLine(cells[i]));
            widths[i] = std::max(widths[i], table.back().back().size());
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
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line += cells[i];
            if (i + 1 < cells.size())
                line.resize(line.size() + widths[i] - cells[i].size() + 2, U' ');
        }
        lines.push_back(line.substr(0, Columns(width)));
        if (lines.size() == 1) lines.emplace_back(Columns(width), U'╌');
    }
    return lines;
}

// What fits a tall text control without scrolling, and how much more there is. A line is eight
// dialog units high.
std::vector<std::u32string> VisibleLines(std::vector<std::u32string> lines,
                                         const Control& control) {
    const std::size_t room =
        std::max<std::size_t>(Columns(control.place.bottom - control.place.top) / 8, 2);
    if (lines.size() <= room) return lines;
    const std::string below = std::to_string(lines.size() - room + 1);
    lines.resize(room - 1);
    lines.push_back(U"▼ " + std::u32string(below.begin(), below.end()) + U" more lines below");
    return lines;
}

}  // namespace

std::u32string CaptionOf(const Text& text) {
    const std::u32string points = CodePoints(text);
    std::u32string caption;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (points[i] == U'&' && i + 1 < points.size()) ++i;
        caption += points[i];
    }
    return caption;
}

std::u32string ButtonOf(const std::u32string& caption, bool isEnabled, int width) {
    const std::u32string text = Dimmed(caption, isEnabled);
    const std::size_t inside = std::max(Columns(width - 2), text.size() + 2);
    const std::size_t before = (inside - text.size()) / 2;
    return U"[" + std::u32string(before, U' ') + text +
           std::u32string(inside - text.size() - before, U' ') + U"]";
}

std::vector<std::u32string> LinesOf(const Control& control, int width) {
    const std::u32string text = CodePoints(control.text);
    switch (control.kind) {
        case Class::GroupBox:
            return {};
        case Class::Button:
            return {ButtonLine(control, width)};
        case Class::Static:
            if (text.empty()) return {};
            return Wrap(Dimmed((control.style & SS_NOPREFIX) ? text : CaptionOf(control.text),
                               control.isEnabled),
                        width);
        case Class::Picture:
            return {};
        case Class::ComboBox:
            return {Field(Dimmed(text, control.isEnabled), width, U"v")};
        case Class::Edit:
        case Class::RichEdit:
            if (control.place.bottom - control.place.top > 16)
                return VisibleLines(Wrap(text, width), control);
            return {Field(Dimmed(text, control.isEnabled), width, U"")};
        case Class::ListBox:
            return ListLines(control);
        case Class::ListView:
            return TableLines(control, width);
        case Class::Other:
            return text.empty() ? std::vector<std::u32string>() : Wrap(text, width);
    }
    return {};
}

}  // namespace sheet
