#pragma once
// Conversions and comparisons of wide text, for the stand-in's own use.

#include <string>
#include <string_view>

namespace platform {

// An ill-formed sequence becomes U+FFFD.
std::u16string FromUtf8(std::string_view text);
std::string ToUtf8(std::u16string_view text);

// Simple upper-casing of one code unit, as the system does for names: no locale, no length change.
char16_t UpCase(char16_t unit);
char16_t DownCase(char16_t unit);
// Ordinal, without regard to case: below 0, 0, above 0.
int CompareNoCase(std::u16string_view a, std::u16string_view b);
bool EqualNoCase(std::u16string_view a, std::u16string_view b);

struct LessNoCase {
    using is_transparent = void;
    bool operator()(std::u16string_view a, std::u16string_view b) const {
        return CompareNoCase(a, b) < 0;
    }
};

}  // namespace platform
