#pragma once
// Conversions and comparisons of wide text, for the stand-in's own use.

#include <string>
#include <string_view>

#include <windows.h>

namespace platform {

// An ill-formed sequence becomes U+FFFD.
std::basic_string<WCHAR> FromUtf8(std::string_view text);
std::string ToUtf8(std::basic_string_view<WCHAR> text);

// Simple upper-casing of one code unit, as the system does for names: no locale, no length change.
WCHAR UpCase(WCHAR unit);
WCHAR DownCase(WCHAR unit);
// Ordinal, without regard to case: below 0, 0, above 0.
int CompareNoCase(std::basic_string_view<WCHAR> a, std::basic_string_view<WCHAR> b);
bool EqualNoCase(std::basic_string_view<WCHAR> a, std::basic_string_view<WCHAR> b);

struct LessNoCase {
    using is_transparent = void;
    bool operator()(std::basic_string_view<WCHAR> a, std::basic_string_view<WCHAR> b) const {
        return CompareNoCase(a, b) < 0;
    }
};

}  // namespace platform
