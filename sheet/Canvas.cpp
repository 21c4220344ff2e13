#include "Canvas.h"

#include <algorithm>

#include "SheetText.h"

namespace sheet {

Canvas::Canvas(int width, int height)
    : m_width(width),
      m_rows(static_cast<std::size_t>(height),
             std::u32string(static_cast<std::size_t>(width), U' ')) {}

void Canvas::Put(int x, int y, const std::u32string& text) {
    if (y < 0 || y >= Height()) return;
    for (const char32_t point : text) {
        if (x >= 0 && x < m_width)
            m_rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = point;
        ++x;
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
    if (!title.empty()) Put(left + 2, top, U" " + title + U" ");
}

void Canvas::Paste(int x, int y, const Canvas& other) {
    for (int row = 0; row < other.Height(); ++row)
        Put(x, y + row, other.m_rows[static_cast<std::size_t>(row)]);
}

std::string Canvas::ToUtf8() const {
    std::string text;
    for (const std::u32string& row : m_rows) {
        const auto last = row.find_last_not_of(U' ');
        text += sheet::ToUtf8(row.substr(0, last == std::u32string::npos ? 0 : last + 1)) + "\n";
    }
    return text;
}

namespace {

// One line of the text, broken at blanks. What follows a bullet stands in line with its first word.
void WrapLine(const std::u32string& text, std::size_t width, std::vector<std::u32string>& lines) {
    const std::size_t indent = text.starts_with(U"• ") && width > 8 ? 2 : 0;
    std::u32string line;
    std::size_t i = 0;
    while (i < text.size()) {
        std::size_t begin = std::min(text.find_first_not_of(U" \t", i), text.size());
        std::size_t end = std::min(text.find_first_of(U" \t", begin), text.size());
        const std::size_t blanks = begin - i;
        if (!line.empty() && line.size() + blanks + (end - begin) > width) {
            lines.push_back(line);
            line.assign(indent, U' ');
        } else {
            line.append(blanks, U' ');
        }
        // A word wider than a line goes on in the next one.
        while (line.size() + (end - begin) > width) {
            const std::size_t part = width - std::min(line.size(), width - 1);
            lines.push_back(line + text.substr(begin, part));
            line.assign(indent, U' ');
            begin += part;
        }
        line.append(text, begin, end - begin);
        i = end;
    }
    line.erase(line.find_last_not_of(U' ') + 1);
    lines.push_back(line);
}

}  // namespace

std::vector<std::u32string> Wrap(const std::u32string& text, int width) {
    std::vector<std::u32string> lines;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(U'\n', begin), text.size());
        std::u32string line = text.substr(begin, end - begin);
        std::erase(line, U'\r');
        WrapLine(line, static_cast<std::size_t>(std::max(width, 1)), lines);
        begin = end + 1;
    }
    while (lines.size() > 1 && lines.back().empty())
        lines.pop_back();
    return lines;
}

}  // namespace sheet
