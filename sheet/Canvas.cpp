#include "Canvas.h"

#include <algorithm>

#include "Columns.h"
#include "SheetText.h"

namespace sheet {

Canvas::Canvas(int width, int height)
    : m_width(width),
      m_rows(static_cast<std::size_t>(height), Row(static_cast<std::size_t>(width), U" ")) {}

void Canvas::PutCharacter(Row& row, int x, char32_t point, int columns) const {
    const auto at = static_cast<std::size_t>(x);
    const std::size_t behind = at + static_cast<std::size_t>(columns);
    // Of a wide character that is covered in part, a blank is left.
    if (row[at].empty()) row[at - 1] = U" ";
    if (behind < row.size() && row[behind].empty()) row[behind] = U" ";
    row[at] = std::u32string(1, point);
    if (columns == 2) row[at + 1].clear();
}

void Canvas::Put(int x, int y, const std::u32string& text) {
    if (y < 0 || y >= Height()) return;
    Row& row = m_rows[static_cast<std::size_t>(y)];
    int last = -1;  // where the character before stands, as long as it is drawn
    for (const char32_t point : text) {
        const int columns = ColumnsOf(point);
        if (columns == 0) {
            if (last >= 0) row[static_cast<std::size_t>(last)] += point;
            continue;
        }
        last = x >= 0 && x + columns <= m_width ? x : -1;
        if (last >= 0) PutCharacter(row, x, point, columns);
        x += columns;
    }
}

void Canvas::Fill(int left, int top, int right, int bottom, char32_t point) {
    for (int y = top; y <= bottom; ++y)
        Put(left, y,
            std::u32string(static_cast<std::size_t>(std::max(right - left + 1, 0)), point));
}

void Canvas::Frame(int left, int top, int right, int bottom, const std::u32string& title) {
    Fill(left + 1, top, right - 1, top, U'─');
    Fill(left + 1, bottom, right - 1, bottom, U'─');
    Fill(left, top + 1, left, bottom - 1, U'│');
    Fill(right, top + 1, right, bottom - 1, U'│');
    Put(left, top, U"┌");
    Put(right, top, U"┐");
    Put(left, bottom, U"└");
    Put(right, bottom, U"┘");
    if (!title.empty())
        Put(left + 2, top, U" " + Shortened(title, std::max(right - left - 5, 0)) + U" ");
}

void Canvas::Paste(int x, int y, const Canvas& other) {
    for (int row = 0; row < other.Height(); ++row) {
        std::u32string text;
        for (const std::u32string& cell : other.m_rows[static_cast<std::size_t>(row)])
            text += cell;
        Put(x, y + row, text);
    }
}

std::string Canvas::ToUtf8() const {
    std::string text;
    for (const Row& row : m_rows) {
        std::u32string line;
        for (const std::u32string& cell : row)
            line += cell;
        text += sheet::ToUtf8(line.substr(0, line.find_last_not_of(U' ') + 1)) + "\n";
    }
    return text;
}

namespace {

// One line of the text, broken at blanks. What follows a bullet stands in line with its first word.
void WrapLine(std::u32string_view text, int width, std::vector<std::u32string>& lines) {
    const std::size_t indent = text.starts_with(U"• ") && width > 8 ? 2 : 0;
    std::u32string line;
    int used = 0;  // columns of the line
    const auto end = [&](std::u32string_view more) {
        lines.push_back(line.append(more));
        line.assign(indent, U' ');
        used = static_cast<int>(indent);
    };
    while (!text.empty()) {
        const std::size_t blanks = std::min(text.find_first_not_of(U' '), text.size());
        text.remove_prefix(blanks);
        std::u32string_view word = text.substr(0, text.find(U' '));
        text.remove_prefix(word.size());
        int columns = ColumnsOf(word);
        if (!line.empty() && used + static_cast<int>(blanks) + columns > width) {
            end({});
        } else {
            line.append(blanks, U' ');
            used += static_cast<int>(blanks);
        }
        // A word wider than a line goes on in the next one.
        while (used + columns > width) {
            std::u32string_view part = Cut(word, std::max(width - used, 1));
            if (part.empty() && used == static_cast<int>(indent)) part = word.substr(0, 1);
            end(part);
            word.remove_prefix(part.size());
            columns -= ColumnsOf(part);
        }
        line.append(word);
        used += columns;
    }
    line.erase(line.find_last_not_of(U' ') + 1);
    lines.push_back(line);
}

}  // namespace

std::vector<std::u32string> Wrap(const std::u32string& text, int width) {
    std::vector<std::u32string> lines;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find_first_of(U"\r\n", begin), text.size());
        std::u32string line = text.substr(begin, end - begin);
        std::replace(line.begin(), line.end(), U'\t', U' ');
        WrapLine(Printable(line), std::max(width, 1), lines);
        begin = end + (text.compare(end, 2, U"\r\n") == 0 ? 2 : 1);
    }
    while (lines.size() > 1 && lines.back().empty())
        lines.pop_back();
    return lines;
}

}  // namespace sheet
