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
    int m_width;
    std::vector<std::u32string> m_rows;
};

// The text in lines of at most width columns, broken at blanks where there are any.
std::vector<std::u32string> Wrap(const std::u32string& text, int width);

}  // namespace sheet
