// Bounded text and the meaning of formats.

#include <functional>

#include "Conformance.h"

#include <strsafe.h>

namespace {

class StrsafeTest : public Conformance {};

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
        {add, 5, S_OK, TEXT("abcd"), "fits"},
        {add, 4, kCut, TEXT("abc"), "an append that overflows leaves what fits"},
        {[](WCHAR* d, size_t n) { return StringCchPrintfW(d, n, TEXT("%d"), 12345); }, 5, kCut,
         TEXT("1234"), "a number that doesn't fit"},
    };
    for (const auto& row : cases) {
        WCHAR buffer[8] = TEXT("ab");
        EXPECT_EQ(row.operation(buffer, row.capacity), row.result) << row.why;
        EXPECT_EQ(Text(buffer), row.text) << row.why;
    }
}

template <class... Values>
std::string Narrow(const char* format, Values... values) {
    char text[128];
    EXPECT_EQ(StringCchPrintfA(text, ARRAYSIZE(text), format, values...), S_OK) << format;
    return text;
}

template <class... Values>
Text Wide(const WCHAR* format, Values... values) {
    WCHAR text[128];
    EXPECT_EQ(StringCchPrintfW(text, ARRAYSIZE(text), format, values...), S_OK);
    return text;
}

TEST_F(StrsafeTest, TextFollowsTheWidthOfItsFormat) {
    EXPECT_EQ(Narrow("%s|%S|%hs|%ls", "a", TEXT("b"), "c", TEXT("d")), "a|b|c|d");
    EXPECT_EQ(Wide(TEXT("%s|%S"), TEXT("a\u4E00"), "b"), TEXT("a\u4E00|b"));
    const char unterminated[] = {'x', 'y'};
    EXPECT_EQ(Narrow("%.2s|%5s|%-5s", unterminated, "ab", "ab"), "xy|   ab|ab   ");
}

// The runtime's locale is "C", unless the program sets another: the other width is Latin-1.
TEST_F(StrsafeTest, TextOfTheOtherWidthIsLatin1) {
    EXPECT_EQ(Narrow("%S", TEXT("\u00E9\u0080")), "\xE9\x80");
    EXPECT_EQ(Wide(TEXT("%S"), "\xE9\x80"), TEXT("\u00E9\u0080"));
    char text[16] = "";
    EXPECT_EQ(StringCchPrintfA(text, ARRAYSIZE(text), "a%Sb", TEXT("\u20AC")), kCut)
        << "what it lacks fails the call";
}

TEST_F(StrsafeTest, NumbersTakeFlagsWidthsAndSizes) {
    EXPECT_EQ(Narrow("%d %u %x %X", -1, 4294967295u, 0xABu, 0xABu), "-1 4294967295 ab AB");
    EXPECT_EQ(Narrow("%05d|%02d|%3d|%-4d|", -42, 7, 5, 5), "-0042|07|  5|5   |");
    EXPECT_EQ(Narrow("%ld %lu %016I64x", -1, 255u, 255ull), "-1 255 00000000000000ff");
    EXPECT_EQ(Wide(TEXT("0x%02X-%8d%%"), 10, 33), TEXT("0x0A-      33%"));
    EXPECT_EQ(Narrow("%.1f %.1f %.1f %.1f", 0.04, 1.25, 0.25, 99.96), "0.0 1.3 0.3 100.0");
}

}  // namespace
