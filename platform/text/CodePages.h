#pragma once
// The machine's ANSI code page, 1252.

#include <string>
#include <string_view>

namespace platform {

inline constexpr unsigned ansiCodePage = 1252;

char16_t FromAnsi(char byte);
std::u16string FromAnsi(std::string_view text);
// What the code page lacks becomes a question mark; *lossy is then set.
std::string ToAnsi(std::u16string_view text, bool* lossy = nullptr);

}  // namespace platform
