// Bounded text and the meaning of formats.

#include <functional>

#include "Conformance.h"

#include <strsafe.h>

namespace {

class StrsafeTest : public Conformance {};

constexpr HRESULT kInvalid = STRSAFE_E_INVALID_PARAMETER;
constexpr HRESULT kCut = STRSAFE_E_INSUFFICIENT_BUFFER;

TEST_F(StrsafeTest, FillsTruncatesAndRefuses) {
    const auto copy = [](WCHAR* d, size_t n) { return StringCchCopyW(d, n, TEXT("xyz")); };
    const auto add = [](WCHAR* d, size_t n) { return StringCchCatW(d, n, TEXT("cd")); };
    const struct {
        std::function<HRESULT(WCHAR*, size_t)> operation;
        size_t capacity;
        HRESULT result;
        const WCHAR* text;  // the buffer holds "ab" before
        const char* why;
    } cases[] = {
        {copy, 4, S_OK, TEXT("xyz"), "fits"},
        {copy, 3, kCut, TEXT("xy"), "one too long"},
        {copy, 1, kCut, TEXT(""), "room for the terminator only"},
        {copy, 0, kInvalid, TEXT("ab"), "no room at all"},
        {copy, STRSAFE_MAX_CCH + 1ull, kInvalid, TEXT("ab"), "a size beyond the limit"},
        {[](WCHAR* d, size_t n) { return StringCchCopyNW(d, n, TEXT("xyz"), 2); }, 3, S_OK,
         TEXT("xy"), "a part that fits"},
        {add, 5, S_OK, TEXT("abcd"), "fits"},
        {add, 4, kCut, TEXT("abc"), "an append that overflows leaves what fits"},
        {add, 2, kInvalid, TEXT("ab"), "not terminated within its size"},
        {[](WCHAR* d, size_t n) { return StringCchPrintfW(d, n, TEXT("%d"), 12345); }, 5, kCut,
         TEXT("1234"), "a number that doesn't fit"},
    };
    for (const auto& row : cases) {
        WCHAR buffer[8] = TEXT("ab");
        EXPECT_EQ(row.operation(buffer, row.capacity), row.result) << row.why;
        EXPECT_EQ(Text(buffer), row.text) << row.why;
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

Text Wide(const WCHAR* format, ...) {
    WCHAR text[128];
    va_list arguments;
    va_start(arguments, format);
    EXPECT_EQ(StringCchVPrintfW(text, ARRAYSIZE(text), format, arguments), S_OK);
    va_end(arguments);
    return text;
}

TEST_F(StrsafeTest, TextFollowsTheWidthOfItsFormat) {
    const WCHAR* const noText = nullptr;
    const char* const noNarrow = nullptr;
    EXPECT_EQ(Narrow("%s|%S|%hs|%ls|%ws", "a", TEXT("b"), "c", TEXT("d"), TEXT("e")), "a|b|c|d|e");
    EXPECT_EQ(Wide(TEXT("%s|%S|%hs|%ls|%ws"), TEXT("a"), "b", "c", TEXT("d"), TEXT("e")),
              TEXT("a|b|c|d|e"));
    EXPECT_EQ(Narrow("%c%C%hc%lc", 'a', TEXT('b'), 'c', TEXT('d')), "abcd");
    EXPECT_EQ(Wide(TEXT("%c%C%hc%lc"), TEXT('\u4E00'), 'b', 'c', TEXT('d')), TEXT("\u4E00bcd"));
    EXPECT_EQ(Narrow("%s %S %.3s", noNarrow, noText, noNarrow), "(null) (null) (nu");
    const char unterminated[] = {'x', 'y'};
    EXPECT_EQ(Narrow("%.2s", unterminated), "xy");
    EXPECT_EQ(Narrow("%05s|%-5s|%5.2s", "ab", "ab", "abc"), "000ab|ab   |   ab");
}

// The runtime's locale is "C", unless the program sets another: the other width is Latin-1.
TEST_F(StrsafeTest, TextOfTheOtherWidthIsLatin1) {
    EXPECT_EQ(Narrow("%S|%lc", TEXT("\u00E9\u0080"), TEXT('\u00E9')), "\xE9\x80|\xE9");
    EXPECT_EQ(Wide(TEXT("%S|%C"), "\xE9\x80", '\x96'), TEXT("\u00E9\u0080|\u0096"));
    char text[16] = "";
    EXPECT_EQ(StringCchPrintfA(text, ARRAYSIZE(text), "a%Sb", TEXT("\u20AC")), kCut)
        << "what it lacks fails the call";
}

TEST_F(StrsafeTest, NumbersTakeFlagsWidthsAndSizes) {
    EXPECT_EQ(Narrow("%d %i %u %x %X %o", -1, 2, 3u, 0xABu, 0xABu, 8u), "-1 2 3 ab AB 10");
    EXPECT_EQ(Narrow("%05d|%+d|% d|%-4d|%.3d|%6.3d", -42, 5, 5, 5, 5, 5),
              "-0042|+5| 5|5   |005|   005");
    EXPECT_EQ(Narrow("%*d|%-*d|%*d|%.*d", 4, 1, 4, 1, -4, 1, 3, 7), "   1|1   |1   |007");
    EXPECT_EQ(Narrow("%#x %#X %#x", 255u, 255u, 0u), "0xff 0XFF 0");
    EXPECT_EQ(Narrow("%ld %lu %lx", -1, 4294967295u, 255u), "-1 4294967295 ff");
    EXPECT_EQ(Narrow("%I64d %lld %I64x %I32u %hd", -1ll, 1ll << 40, -1ll, 7u, 70000),
              "-1 1099511627776 ffffffffffffffff 7 4464");
    EXPECT_EQ(Narrow("%d %lld", INT32_MIN, INT64_MIN), "-2147483648 -9223372036854775808");
    EXPECT_EQ(Wide(TEXT("0x%02X-%8d%%"), 10, 33), TEXT("0x0A-      33%"));
    EXPECT_EQ(Narrow("100%% %z %"), "100% z ");
}

TEST_F(StrsafeTest, FractionsRoundHalfUp) {
    EXPECT_EQ(Narrow("%f %.1f %5.2f %.0f", 1.5, 0.04, 3.14159, 0.4), "1.500000 0.0  3.14 0");
    EXPECT_EQ(Narrow("%.1f %.1f %.0f %.1f", 1.25, 0.25, 2.5, 1.75), "1.3 0.3 3 1.8");
    EXPECT_EQ(Narrow("%.1f %.0f %.2f", 99.96, 9.5, -0.996), "100.0 10 -1.00");
    EXPECT_EQ(Narrow("%.1f %06.1f %+.1f %#.0f", 40.0, -2.5, 1.0, 3.0), "40.0 -002.5 +1.0 3.");
    EXPECT_EQ(Narrow("%.0f %.3f", 1e20, 1e-5), "100000000000000000000 0.000");
}

}  // namespace
