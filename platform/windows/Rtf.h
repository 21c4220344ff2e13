#pragma once
// What a rich edit control shows of a Rich Text Format document, as plain text.

#include <string>
#include <string_view>

namespace platform {

// Lines, paragraphs, rows, sections and pages end with '\n', table cells with '\t'. Bytes and \'hh
// are read in the code page that \ansicpg names: 65001 is UTF-8, all others are taken for the ANSI
// code page. Destinations that hold no text of the document, and \* ones that aren't known, are
// left out, and so is hidden text. A document that is cut off yields what stands so far. Text that
// doesn't begin with "{\rtf" is shown as it is.
std::u16string RtfToPlainText(std::string_view rtf);

}  // namespace platform
