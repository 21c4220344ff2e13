#include "Layout.h"

#include <algorithm>

#include "Canvas.h"
#include "ControlText.h"

namespace sheet {

namespace {

// Columns that a drawing may take within its own frame.
constexpr int kMostColumns = 94;
// A character's width is four dialog units on average; three leave room for the marks of buttons.
constexpr int kUnitsPerColumn = 3;
constexpr int kHalfLine = 4;  // dialog units
// Up to here two things stand in the same row, and from here on a row stays free between them.
constexpr int kSameRow = 7;
constexpr int kFreeRow = 22;

enum class Edge { Top, Line, Bottom };

// A height at which something begins, stands or ends.
struct Mark {
    int y;
    Edge edge;
    std::size_t item;
};

bool IsTall(const Control& control) {
    return control.place.bottom - control.place.top > 4 * kHalfLine;
}

bool IsFramed(const Control& control) {
    switch (control.kind) {
        case Class::GroupBox:
        case Class::ListBox:
        case Class::ListView:
            return true;
        case Class::Edit:
        case Class::RichEdit:
            return IsTall(control);
        default:
            return false;
    }
}

bool HasTwoEdges(const Item& item) {
    return item.isFramed || item.control->kind == Class::Picture || item.lines.size() > 1;
}

std::vector<Mark> MarksOf(const std::vector<Item>& items) {
    std::vector<Mark> marks;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Place& place = items[i].control->place;
        if (!HasTwoEdges(items[i])) {
            marks.push_back({(place.top + place.bottom) / 2, Edge::Line, i});
        } else if (items[i].isFramed || items[i].control->kind == Class::Picture) {
            // A group box's border runs through the middle of its title.
            const bool isGroup = items[i].control->kind == Class::GroupBox;
            marks.push_back({place.top + (isGroup ? kHalfLine : 0), Edge::Top, i});
            marks.push_back({place.bottom, Edge::Bottom, i});
        } else {
            marks.push_back({place.top + kHalfLine, Edge::Line, i});
            marks.push_back(
                {std::max(place.bottom - kHalfLine, place.top + kHalfLine + 1), Edge::Bottom, i});
        }
    }
    std::stable_sort(marks.begin(), marks.end(),
                     [](const Mark& a, const Mark& b) { return a.y < b.y; });
    return marks;
}

// Rows that have to lie between the first and the last one of an item.
int RowsWithin(const Item& item) {
    const auto lines = static_cast<int>(item.lines.size());
    if (item.control->kind == Class::GroupBox) return 1;
    return item.isFramed ? lines + 1 : std::max(lines - 1, 0);
}

int PlaceRows(std::vector<Item>& items) {
    const std::vector<Mark> marks = MarksOf(items);
    int row = -1;
    for (std::size_t begin = 0; begin < marks.size();) {
        std::size_t end = begin + 1;
        while (end < marks.size() && marks[end].edge == marks[begin].edge &&
               marks[end].y - marks[begin].y <= kSameRow)
            ++end;
        const bool free = begin > 0 && marks[begin].y - marks[begin - 1].y >= kFreeRow &&
                          marks[begin].edge != Edge::Bottom;
        row += free ? 2 : 1;
        for (std::size_t i = begin; i < end; ++i) {
            const Item& item = items[marks[i].item];
            if (marks[i].edge == Edge::Bottom) row = std::max(row, item.top + RowsWithin(item));
        }
        for (std::size_t i = begin; i < end; ++i) {
            Item& item = items[marks[i].item];
            if (marks[i].edge != Edge::Bottom) item.top = row;
            item.bottom = row;
        }
        begin = end;
    }
    return row + 1;
}

}  // namespace

Layout LayOut(const std::vector<Control>& controls, int dialogWidth) {
    const int units = std::max(kUnitsPerColumn, (dialogWidth + kMostColumns - 1) / kMostColumns);
    Layout layout = {(dialogWidth + units - 1) / units, 0, {}};
    for (const Control& control : controls) {
        if (!control.isShown) continue;
        Item item = {&control, {}, IsFramed(control), 0, 0, 0, 0};
        item.left = std::max(control.place.left / units, 0);
        item.right =
            std::min(std::max(control.place.right / units - 1, item.left), layout.width - 1);
        item.lines = LinesOf(control, item.right - item.left + 1 - (item.isFramed ? 4 : 0));
        layout.items.push_back(std::move(item));
    }
    layout.height = PlaceRows(layout.items);
    std::stable_partition(layout.items.begin(), layout.items.end(),
                          [](const Item& item) { return item.isFramed; });
    return layout;
}

}  // namespace sheet
