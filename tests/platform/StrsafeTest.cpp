// Bounded text and the meaning of formats.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <windows.h>

#include "Text.h"

#include <strsafe.h>

using platform::ToUtf8;

namespace {

constexpr HRESULT invalid = STRSAFE_E_INVALID_PARAMETER;
constexpr HRESULT truncated = STRSAFE_E_INSUFFICIENT_BUFFER;

TEST(StrsafeTest, FillsTruncatesAndRefuses) {
    using Operation = std::function<HRESULT(WCHAR*, size_t)>;
    const struct {
        Operation operation;
        size_t capacity;
        HRESULT result;
        const char16_t* text;  // the buffer holds "ab" before
        const char* why;
    } cases[] = {
        {[](WCHAR* d, size_t n) { return StringCchCopyW(d, n, u"xyz"); }, 4, S_OK, u"xyz", "fits"},
        {[](WCHAR* d, size_t n) { return StringCchCopyW(d, n, u"xyz"); }, 3, truncated, u"xy",
         "one too long"},
        {[](WCHAR* d, size_t n) { return StringCchCopyW(d, n, u"xyz"); }, 1, truncated, u"",
         "room for the terminator only"},
        {[](WCHAR* d, size_t n) { return StringCchCopyW(d, n, u"xyz"); }, 0, invalid, u"ab",
         "no room at all"},
        {[](WCHAR* d, size_t n) { return StringCchCopyW(d, n, u"x"); }, STRSAFE_MAX_CCH + 1ull,
         invalid, u"ab", "a size beyond the limit"},
        {[](WCHAR* d, size_t n) { return StringCchCopyNW(d, n, u"xyz", 2); }, 3, S_OK, u"xy",
         "a part that fits"},
        {[](WCHAR* d, size_t n) { return StringCchCatW(d, n, u"cd"); }, 5, S_OK, u"abcd", "fits"},
        {[](WCHAR* d, size_t n) { return StringCchCatW(d, n, u"cd"); }, 4, truncated, u"abc",
         "an append that overflows leaves what fits"},
        {[](WCHAR* d, size_t n) { return StringCchCatW(d, n, u"c"); }, 2, invalid, u"ab",
         "not terminated within its size"},
        {[](WCHAR* d, size_t n) { return StringCchPrintfW(d, n, u"%d:%s", 7, d); }, 8, S_OK,
         u"7:ab", "the destination as an argument"},
        {[](WCHAR* d, size_t n) { return StringCchPrintfW(d, n, u"%d", 12345); }, 5, truncated,
         u"1234", "a number that doesn't fit"},
    };
    for (const auto& c : cases) {
        WCHAR buffer[8] = u"ab";
        EXPECT_EQ(c.operation(buffer, c.capacity), c.result) << c.why;
        EXPECT_EQ(std::u16string(buffer), c.text) << c.why;
    }
}

std::string Narrow(const char* format, ...) {
    char text[128];
    va_list arguments;
    va_start(arguments, format);
    EXPECT_EQ(StringCchVPrintfA(text, ARRAYSIZE(text), format, arguments), S_OK) << format;
    va_end(arguments);
    return text;
}

std::u16string Wide(const char16_t* format, ...) {
    WCHAR text[128];
    va_list arguments;
    va_start(arguments, format);
    EXPECT_EQ(StringCchVPrintfW(text, ARRAYSIZE(text), format, arguments), S_OK) << ToUtf8(format);
    va_end(arguments);
    return text;
}

TEST(FormatTest, TextFollowsTheWidthOfItsFormat) {
    EXPECT_EQ(Narrow("%s|%S|%hs|%ls|%ws", "a", u"b", "c", u"d", u"e"), "a|b|c|d|e");
    EXPECT_EQ(Wide(u"%s|%S|%hs|%ls|%ws", u"a", "b", "c", u"d", u"e"), u"a|b|c|d|e");
    EXPECT_EQ(Narrow("%c%C%hc%lc", 'a', u'b', 'c', u'd'), "abcd");
    EXPECT_EQ(Wide(u"%c%C%hc%lc", u'\u4E00', 'b', 'c', u'd'), u"\u4E00bcd");
    EXPECT_EQ(Narrow("%S", u"\u20AC\u2013\u4E00"), "\x80\x96?");
    EXPECT_EQ(Wide(u"%S", "\x80\x96"), u"\u20AC\u2013");
    EXPECT_EQ(Narrow("%s %S %.3s", static_cast<char*>(nullptr), static_cast<char16_t*>(nullptr),
                     static_cast<char*>(nullptr)),
              "(null) (null) (nu");
    const char unterminated[] = {'x', 'y'};
    EXPECT_EQ(Narrow("%.2s", unterminated), "xy");
    EXPECT_EQ(Narrow("%05s|%-5s|%5.2s", "ab", "ab", "abc"), "000ab|ab   |   ab");
}

TEST(FormatTest, NumbersTakeFlagsWidthsAndSizes) {
    EXPECT_EQ(Narrow("%d %i %u %x %X %o", -1, 2, 3u, 0xABu, 0xABu, 8u), "-1 2 3 ab AB 10");
    EXPECT_EQ(Narrow("%05d|%+d|% d|%-4d|%.3d|%6.3d", -42, 5, 5, 5, 5, 5),
              "-0042|+5| 5|5   |005|   005");
    EXPECT_EQ(Narrow("%*d|%-*d|%*d|%.*d", 4, 1, 4, 1, -4, 1, 3, 7), "   1|1   |1   |007");
    EXPECT_EQ(Narrow("%#x %#X %#x", 255u, 255u, 0u), "0xff 0XFF 0");
    EXPECT_EQ(Narrow("%ld %lu %lx", -1, 4294967295u, 255u), "-1 4294967295 ff");
    EXPECT_EQ(Narrow("%I64d %lld %I64x %I32u %hd", -1ll, 1ll << 40, -1ll, 7u, 70000),
              "-1 1099511627776 ffffffffffffffff 7 4464");
    EXPECT_EQ(Narrow("%d %lld", INT32_MIN, INT64_MIN), "-2147483648 -9223372036854775808");
    EXPECT_EQ(Narrow("100%% %z %"), "100% z ");
    EXPECT_EQ(Wide(u"0x%02X-%8d%%", 10, 33), u"0x0A-      33%");
}

TEST(FormatTest, FractionsRoundHalfUp) {
    EXPECT_EQ(Narrow("%f %.1f %5.2f %.0f", 1.5, 0.04, 3.14159, 0.4), "1.500000 0.0  3.14 0");
    EXPECT_EQ(Narrow("%.1f %.1f %.0f %.1f", 1.25, 0.25, 2.5, 1.45), "1.3 0.3 3 1.5");
    EXPECT_EQ(Narrow("%.1f %.0f %.2f", 99.96, 9.5, -0.996), "100.0 10 -1.00");
    EXPECT_EQ(Narrow("%.1f %06.1f %+.1f %#.0f", 40.0, -2.5, 1.0, 3.0), "40.0 -002.5 +1.0 3.");
    EXPECT_EQ(Narrow("%.0f %.3f", 1e20, 1e-5), "100000000000000000000 0.000");
    EXPECT_EQ(Wide(u"%.1f Gbps", 5.0), u"5.0 Gbps");
}

}  // namespace
