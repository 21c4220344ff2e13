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

// As the system compares names: ordinal, without regard to case.
bool EqualNoCase(TextView a, TextView b);
bool StartsWithNoCase(TextView text, TextView start);

// Without blanks and tabs at both ends.
std::string_view Trim(std::string_view text);

}  // namespace sheet
