#include "Text.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

constexpr WCHAR replacement = 0xFFFD;

// Small letters first, first + step, ..., last; each has its capital at `toUpper` from itself. The
// simple one-to-one pairs of the basic plane, as the system's own table has them: letters whose
// capital doesn't lead back to them (dotless i, long s, micro sign) stay as they are.
struct LetterRange {
    char16_t first;
    char16_t last;
    unsigned step;
    int toUpper;
};

constexpr LetterRange letterRanges[] = {
    {0x0061, 0x007A, 1, -32},    {0x00E0, 0x00F6, 1, -32},    {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121},    {0x0101, 0x012F, 2, -1},     {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},     {0x014B, 0x0177, 2, -1},     {0x017A, 0x017E, 2, -1},
    {0x0180, 0x0180, 1, 195},    {0x0183, 0x0185, 2, -1},     {0x0188, 0x0188, 1, -1},
    {0x018C, 0x018C, 1, -1},     {0x0192, 0x0192, 1, -1},     {0x0195, 0x0195, 1, 97},
    {0x0199, 0x0199, 1, -1},     {0x019A, 0x019A, 1, 163},    {0x019E, 0x019E, 1, 130},
    {0x01A1, 0x01A5, 2, -1},     {0x01A8, 0x01A8, 1, -1},     {0x01AD, 0x01AD, 1, -1},
    {0x01B0, 0x01B0, 1, -1},     {0x01B4, 0x01B6, 2, -1},     {0x01B9, 0x01B9, 1, -1},
    {0x01BD, 0x01BD, 1, -1},     {0x01BF, 0x01BF, 1, 56},     {0x01C6, 0x01C6, 1, -2},
    {0x01C9, 0x01C9, 1, -2},     {0x01CC, 0x01CC, 1, -2},     {0x01CE, 0x01DC, 2, -1},
    {0x01DD, 0x01DD, 1, -79},    {0x01DF, 0x01EF, 2, -1},     {0x01F3, 0x01F3, 1, -2},
    {0x01F5, 0x01F5, 1, -1},     {0x01F9, 0x021F, 2, -1},     {0x0223, 0x0233, 2, -1},
    {0x023C, 0x023C, 1, -1},     {0x023F, 0x0240, 1, 10815},  {0x0242, 0x0242, 1, -1},
    {0x0247, 0x024F, 2, -1},     {0x0250, 0x0250, 1, 10783},  {0x0251, 0x0251, 1, 10780},
    {0x0252, 0x0252, 1, 10782},  {0x0253, 0x0253, 1, -210},   {0x0254, 0x0254, 1, -206},
    {0x0256, 0x0257, 1, -205},   {0x0259, 0x0259, 1, -202},   {0x025B, 0x025B, 1, -203},
    {0x0260, 0x0260, 1, -205},   {0x0263, 0x0263, 1, -207},   {0x0268, 0x0268, 1, -209},
    {0x0269, 0x0269, 1, -211},   {0x026B, 0x026B, 1, 10743},  {0x026F, 0x026F, 1, -211},
    {0x0271, 0x0271, 1, 10749},  {0x0272, 0x0272, 1, -213},   {0x0275, 0x0275, 1, -214},
    {0x027D, 0x027D, 1, 10727},  {0x0280, 0x0280, 1, -218},   {0x0283, 0x0283, 1, -218},
    {0x0288, 0x0288, 1, -218},   {0x0289, 0x0289, 1, -69},    {0x028A, 0x028B, 1, -217},
    {0x028C, 0x028C, 1, -71},    {0x0292, 0x0292, 1, -219},   {0x0371, 0x0373, 2, -1},
    {0x0377, 0x0377, 1, -1},     {0x037B, 0x037D, 1, 130},    {0x03AC, 0x03AC, 1, -38},
    {0x03AD, 0x03AF, 1, -37},    {0x03B1, 0x03C1, 1, -32},    {0x03C3, 0x03CB, 1, -32},
    {0x03CC, 0x03CC, 1, -64},    {0x03CD, 0x03CE, 1, -63},    {0x03D7, 0x03D7, 1, -8},
    {0x03D9, 0x03EF, 2, -1},     {0x03F2, 0x03F2, 1, 7},      {0x03F3, 0x03F3, 1, -116},
    {0x03F8, 0x03F8, 1, -1},     {0x03FB, 0x03FB, 1, -1},     {0x0430, 0x044F, 1, -32},
    {0x0450, 0x045F, 1, -80},    {0x0461, 0x0481, 2, -1},     {0x048B, 0x04BF, 2, -1},
    {0x04C2, 0x04CE, 2, -1},     {0x04CF, 0x04CF, 1, -15},    {0x04D1, 0x052F, 2, -1},
    {0x0561, 0x0586, 1, -48},    {0x1D7D, 0x1D7D, 1, 3814},   {0x1E01, 0x1E95, 2, -1},
    {0x1EA1, 0x1EFF, 2, -1},     {0x1F00, 0x1F07, 1, 8},      {0x1F10, 0x1F15, 1, 8},
    {0x1F20, 0x1F27, 1, 8},      {0x1F30, 0x1F37, 1, 8},      {0x1F40, 0x1F45, 1, 8},
    {0x1F51, 0x1F57, 2, 8},      {0x1F60, 0x1F67, 1, 8},      {0x1F70, 0x1F71, 1, 74},
    {0x1F72, 0x1F75, 1, 86},     {0x1F76, 0x1F77, 1, 100},    {0x1F78, 0x1F79, 1, 128},
    {0x1F7A, 0x1F7B, 1, 112},    {0x1F7C, 0x1F7D, 1, 126},    {0x1FB0, 0x1FB1, 1, 8},
    {0x1FD0, 0x1FD1, 1, 8},      {0x1FE0, 0x1FE1, 1, 8},      {0x1FE5, 0x1FE5, 1, 7},
    {0x214E, 0x214E, 1, -28},    {0x2170, 0x217F, 1, -16},    {0x2184, 0x2184, 1, -1},
    {0x24D0, 0x24E9, 1, -26},    {0x2C30, 0x2C5F, 1, -48},    {0x2C61, 0x2C61, 1, -1},
    {0x2C65, 0x2C65, 1, -10795}, {0x2C66, 0x2C66, 1, -10792}, {0x2C68, 0x2C6C, 2, -1},
    {0x2C73, 0x2C73, 1, -1},     {0x2C76, 0x2C76, 1, -1},     {0x2C81, 0x2CE3, 2, -1},
    {0x2CEC, 0x2CEE, 2, -1},     {0x2CF3, 0x2CF3, 1, -1},     {0x2D00, 0x2D25, 1, -7264},
    {0x2D27, 0x2D27, 1, -7264},  {0x2D2D, 0x2D2D, 1, -7264},  {0xA641, 0xA66D, 2, -1},
    {0xA681, 0xA69B, 2, -1},     {0xA723, 0xA72F, 2, -1},     {0xA733, 0xA76F, 2, -1},
    {0xA77A, 0xA77C, 2, -1},     {0xA77F, 0xA787, 2, -1},     {0xA78C, 0xA78C, 1, -1},
    {0xFF41, 0xFF5A, 1, -32},
};
constexpr char16_t finalSigma = 0x03C2;  // shares its capital with the other sigma
constexpr char16_t capitalSigma = 0x03A3;

struct CaseTable {
    std::array<char16_t, 0x10000> upper;
    std::array<char16_t, 0x10000> lower;

    CaseTable() {
        for (unsigned unit = 0; unit < upper.size(); ++unit)
            upper[unit] = lower[unit] = static_cast<char16_t>(unit);
        for (const LetterRange& range : letterRanges) {
            for (unsigned unit = range.first; unit <= range.last; unit += range.step) {
                const auto capital = static_cast<char16_t>(static_cast<int>(unit) + range.toUpper);
                upper[unit] = capital;
                lower[capital] = static_cast<char16_t>(unit);
            }
        }
        upper[finalSigma] = capitalSigma;
    }
};

const CaseTable& Cases() {
    static const CaseTable table;
    return table;
}

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf16(std::basic_string<WCHAR>& text, char32_t point) {
    if (point < 0x10000) {
        text.push_back(static_cast<WCHAR>(point));
        return;
    }
    text.push_back(static_cast<WCHAR>(0xD800 + ((point - 0x10000) >> 10)));
    text.push_back(static_cast<WCHAR>(0xDC00 + ((point - 0x10000) & 0x3FF)));
}

void AppendUtf8(std::string& text, char32_t point) {
    const auto trail = [point](int shift) {
        return static_cast<char>(0x80 | ((point >> shift) & 0x3F));
    };
    if (point < 0x80) {
        text.push_back(static_cast<char>(point));
    } else if (point < 0x800) {
        text.push_back(static_cast<char>(0xC0 | (point >> 6)));
        text.push_back(trail(0));
    } else if (point < 0x10000) {
        text.push_back(static_cast<char>(0xE0 | (point >> 12)));
        text.push_back(trail(6));
        text.push_back(trail(0));
    } else {
        text.push_back(static_cast<char>(0xF0 | (point >> 18)));
        text.push_back(trail(12));
        text.push_back(trail(6));
        text.push_back(trail(0));
    }
}

// What may follow a lead byte: how many trail bytes, and the bounds of the first of them, which
// shut out overlong forms, surrogates and what lies beyond U+10FFFF.
struct Lead {
    unsigned trails;
    unsigned char low;
    unsigned char high;
};

Lead Classify(unsigned char byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
    return {0, 0, 0};
}

}  // namespace

std::basic_string<WCHAR> FromUtf8(std::string_view text) {
    std::basic_string<WCHAR> wide;
    wide.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at++]);
        if (byte < 0x80) {
            wide.push_back(byte);
            continue;
        }
        const Lead lead = Classify(byte);
        char32_t point = byte & (0x3Fu >> lead.trails);
        unsigned taken = 0;
        for (; taken < lead.trails && at < text.size(); ++taken, ++at) {
            const auto trail = static_cast<unsigned char>(text[at]);
            const bool fits = taken == 0 ? trail >= lead.low && trail <= lead.high
                                         : trail >= 0x80 && trail <= 0xBF;
            if (!fits) break;
            point = (point << 6) | (trail & 0x3Fu);
        }
        const bool whole = lead.trails != 0 && taken == lead.trails;
        AppendUtf16(wide, whole ? point : replacement);
    }
    return wide;
}

std::string ToUtf8(std::basic_string_view<WCHAR> text) {
    std::string narrow;
    narrow.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        char32_t point = text[at];
        if (IsHighSurrogate(point) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
            ++at;
            point = 0x10000 + ((point - 0xD800) << 10) + (text[at] - 0xDC00u);
        } else if (IsHighSurrogate(point) || IsLowSurrogate(point)) {
            point = replacement;
        }
        AppendUtf8(narrow, point);
    }
    return narrow;
}

WCHAR UpCase(WCHAR unit) {
    return Cases().upper[unit];
}

WCHAR DownCase(WCHAR unit) {
    return Cases().lower[unit];
}

int CompareNoCase(std::basic_string_view<WCHAR> a, std::basic_string_view<WCHAR> b) {
    const auto& upper = Cases().upper;
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t at = 0; at < common; ++at) {
        const int difference = upper[a[at]] - upper[b[at]];
        if (difference != 0) return difference;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool EqualNoCase(std::basic_string_view<WCHAR> a, std::basic_string_view<WCHAR> b) {
    return a.size() == b.size() && CompareNoCase(a, b) == 0;
}

}  // namespace platform
