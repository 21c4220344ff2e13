#pragma once
// How many columns of a terminal a text takes, by Unicode 14.0. Any thread.

#include <string>
#include <string_view>

namespace sheet {

// 0 for a mark that joins the character before it, 2 for a wide one, else 1.
int ColumnsOf(char32_t point);
int ColumnsOf(std::u32string_view text);

// As much of the text's beginning as fits into that many columns.
std::u32string_view Cut(std::u32string_view text, int columns);
// The same; where something is left out, it ends with an ellipsis.
std::u32string Shortened(std::u32string_view text, int columns);
// Exactly that many columns: cut, or filled up.
std::u32string Padded(std::u32string_view text, int columns, char32_t fill = U' ');

}  // namespace sheet
