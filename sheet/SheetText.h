#pragma once
// Wide text, and its way to and from the UTF-8 of scripts and transcripts.

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

namespace sheet {

using Text = std::basic_string<WCHAR>;
using TextView = std::basic_string_view<WCHAR>;

// What isn't well formed becomes U+FFFD.
std::string ToUtf8(TextView text);
Text FromUtf8(std::string_view text);
// Code points, for what counts columns.
std::u32string CodePoints(TextView text);
std::string ToUtf8(const std::u32string& text);

// Characters that would control the terminal, in a form that can be seen: a line break (CR LF, LF
// or CR) becomes \n, any other control character (C0, C1, DEL) and each that changes the direction
// of text becomes \u and its number in four hexadecimal digits.
std::u32string Printable(std::u32string_view text);
std::u32string Printable(TextView text);

// As the system compares names: ordinal, without regard to case.
bool EqualNoCase(TextView a, TextView b);
bool StartsWithNoCase(TextView text, TextView start);

// Without blanks and tabs at both ends.
std::string_view Trim(std::string_view text);

}  // namespace sheet
