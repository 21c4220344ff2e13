#pragma once
// A sheet of characters to draw on.

#include <string>
#include <vector>

namespace sheet {

class Canvas {
  public:
    Canvas(int width, int height);

    int Width() const { return m_width; }
    int Height() const { return static_cast<int>(m_rows.size()); }
    // What doesn't fit is cut off.
    void Put(int x, int y, const std::u32string& text);
    void Fill(int left, int top, int right, int bottom, char32_t point);
    // The border of a rectangle, its corners included, and a title in its upper edge.
    void Frame(int left, int top, int right, int bottom, const std::u32string& title);
    void Paste(int x, int y, const Canvas& other);
    // A line a row, without blanks at the end.
    std::string ToUtf8() const;

  private:
    // What stands in each column: a character with the marks that join it; nothing behind a wide
    // one.
    using Row = std::vector<std::u32string>;

    void PutCharacter(Row& row, int x, char32_t point, int columns) const;

    int m_width;
    std::vector<Row> m_rows;
};

// The text in lines of at most width columns, broken at blanks where there are any. The lines can
// be printed.
std::vector<std::u32string> Wrap(const std::u32string& text, int width);

}  // namespace sheet
