#include "SheetText.h"

#include <algorithm>
#include <iterator>

namespace sheet {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& utf8, char32_t point) {
    const auto tail = [&](int shift) {
        utf8 += static_cast<char>(0x80 | ((point >> shift) & 0x3F));
    };
    if (point < 0x80) {
        utf8 += static_cast<char>(point);
    } else if (point < 0x800) {
        utf8 += static_cast<char>(0xC0 | (point >> 6));
        tail(0);
    } else if (point < 0x10000) {
        utf8 += static_cast<char>(0xE0 | (point >> 12));
        tail(6);
        tail(0);
    } else {
        utf8 += static_cast<char>(0xF0 | (point >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

// Takes one code point off the front.
char32_t TakeUtf8(std::string_view& text) {
    const auto byte = [&](std::size_t i) {
        return static_cast<char32_t>(static_cast<unsigned char>(text[i]));
    };
    const char32_t first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    char32_t point = length < 2 ? first : first & (0x7F >> length);
    bool good = length != 0 && text.size() >= length;
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (byte(i) & 0xC0) == 0x80;
        point = point << 6 | (byte(i) & 0x3F);
    }
    constexpr char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    good =
        good && point >= kLowest[length] && point <= 0x10FFFF && (point < 0xD800 || point > 0xDFFF);
    text.remove_prefix(good ? length : 1);
    return good ? point : kReplacement;
}

struct Range {
    char32_t first;
    char32_t last;
};
// The control characters, and those that change the direction of text.
constexpr Range kTerminalControls[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},
    {0x200E, 0x200F}, {0x202A, 0x202E}, {0x2066, 0x2069},
};

bool ControlsTerminal(char32_t point) {
    return std::any_of(
        std::begin(kTerminalControls), std::end(kTerminalControls),
        [&](const Range& range) { return point >= range.first && point <= range.last; });
}

}  // namespace

std::u32string CodePoints(TextView text) {
    std::u32string points;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = static_cast<char32_t>(text[i]);
        const char32_t next = i + 1 < text.size() ? static_cast<char32_t>(text[i + 1]) : 0;
        if (unit < 0xD800 || unit > 0xDFFF) {
            points += unit;
        } else if (unit < 0xDC00 && next >= 0xDC00 && next <= 0xDFFF) {
            points += static_cast<char32_t>(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++i;
        } else {
            points += kReplacement;
        }
    }
    return points;
}

std::string ToUtf8(const std::u32string& text) {
    std::string utf8;
    for (const char32_t point : text)
        AppendUtf8(utf8, point);
    return utf8;
}

std::string ToUtf8(TextView text) {
    return ToUtf8(CodePoints(text));
}

std::u32string Printable(std::u32string_view text) {
    std::u32string printable;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t point = text[i];
        if (!ControlsTerminal(point)) {
            printable += point;
            continue;
        }
        if (point == U'\n' || point == U'\r') {
            if (text.substr(i, 2) == U"\r\n") ++i;
            printable += U"\\n";
            continue;
        }
        printable += U"\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            printable += U"0123456789abcdef"[point >> shift & 0xF];
    }
    return printable;
}

std::u32string Printable(TextView text) {
    return Printable(CodePoints(text));
}

Text FromUtf8(std::string_view text) {
    Text wide;
    while (!text.empty()) {
        const char32_t point = TakeUtf8(text);
        if (point < 0x10000) {
            wide += static_cast<WCHAR>(point);
        } else {
            wide += static_cast<WCHAR>(0xD800 + ((point - 0x10000) >> 10));
            wide += static_cast<WCHAR>(0xDC00 + ((point - 0x10000) & 0x3FF));
        }
    }
    return wide;
}

bool EqualNoCase(TextView a, TextView b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

bool StartsWithNoCase(TextView text, TextView start) {
    return text.size() >= start.size() && EqualNoCase(text.substr(0, start.size()), start);
}

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace sheet
