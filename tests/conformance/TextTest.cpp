// Comparisons, conversions, messages and counted strings.

#include "Conformance.h"

#include <oleauto.h>
#include <shlwapi.h>

namespace {

class TextTest : public Conformance {};

TEST_F(TextTest, NamesCompareByTheirCapitals) {
    const struct {
        const WCHAR *a, *b;
        int order;
        const char* why;
    } cases[] = {
        {TEXT("InstalledPath"), TEXT("INSTALLEDPATH"), 0, "Latin"},
        {TEXT("\u00E9\u00FF"), TEXT("\u00C9\u0178"), 0, "Latin-1 and its letter outside"},
        {TEXT("i"), TEXT("\u0131"), -1, "dotless i is its own letter"},
        {TEXT("stra\u00DFe"), TEXT("STRASSE"), 1, "a capital never changes the length"},
        {TEXT("_"), TEXT("a"), 1, "the order is that of capitals"},
        {TEXT("ab"), TEXT("abc"), -1, "a beginning comes first"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(CompareStringOrdinal(row.a, -1, row.b, -1, TRUE), CSTR_EQUAL + row.order);
        EXPECT_EQ(CompareStringOrdinal(row.b, -1, row.a, -1, TRUE), CSTR_EQUAL - row.order);
    }
    EXPECT_EQ(CompareStringOrdinal(TEXT("abX"), 2, TEXT("AB"), -1, TRUE), CSTR_EQUAL);
}

TEST_F(TextTest, IntegersAreReadAsTheShellDoes) {
    const struct {
        const WCHAR* text;
        BOOL result;
        int number;
    } cases[] = {
        {TEXT("12"), TRUE, 12},         {TEXT(" \t-5z"), TRUE, -5}, {TEXT("0x1f"), TRUE, 0},
        {TEXT(""), FALSE, 77},          {TEXT("abc"), FALSE, 77},   {TEXT("\r7"), FALSE, 77},
        {TEXT("4294967295"), TRUE, -1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        int number = 77;
        EXPECT_EQ(StrToIntExW(row.text, STIF_DEFAULT, &number), row.result);
        if (row.result) {
            EXPECT_EQ(number, row.number);
        }
    }
}

TEST_F(TextTest, ConvertsToAndFromTheAnsiCodePage) {
    const char narrow[] = "\x80 \xE9\x96\x81";
    WCHAR wide[16];
    for (const UINT codePage : {UINT{CP_ACP}, UINT{CP_THREAD_ACP}, 1252u}) {
        EXPECT_EQ(MultiByteToWideChar(codePage, 0, narrow, -1, nullptr, 0), 6);
        ASSERT_EQ(MultiByteToWideChar(codePage, 0, narrow, -1, wide, 16), 6);
        EXPECT_EQ(Text(wide), TEXT("\u20AC \u00E9\u2013\u0081"));
        char back[16];
        ASSERT_EQ(WideCharToMultiByte(codePage, 0, wide, -1, back, 16, nullptr, nullptr), 6);
        EXPECT_STREQ(back, narrow);
    }
    char narrowed[8] = {};
    BOOL lossy = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, TEXT("a\u4E00\u00E9"), 3, narrowed, 8, "#", &lossy),
              3);
    EXPECT_STREQ(narrowed, "a#\xE9");
    EXPECT_TRUE(lossy);
}

TEST_F(TextTest, MessagesFillInsertsAndEscapes) {
    const auto text = [](const WCHAR* of) { return reinterpret_cast<DWORD_PTR>(of); };
    DWORD_PTR inserts[] = {text(TEXT("one")), text(TEXT("two")), 0};
    const struct {
        const WCHAR *source, *text;
    } cases[] = {
        {TEXT("VLAN %1.%nAre you sure, %2?"), TEXT("VLAN one.\r\nAre you sure, two?")},
        {TEXT("%3"), TEXT("(null)")},
        {TEXT("100%% %.%! % %z"), TEXT("100% .!  z")},
        {TEXT("a%0b"), TEXT("a")},
        {TEXT("a\nb\rc\r\nd"), TEXT("a\r\nb\r\nc\r\nd")},
        {TEXT("a%"), TEXT("")},
        {TEXT(""), TEXT("")},
    };
    for (const auto& row : cases) {
        WCHAR buffer[512];
        const DWORD flags = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
        const DWORD length = FormatMessageW(flags, row.source, 0, 0x400, buffer, 512,
                                            reinterpret_cast<va_list*>(inserts));
        EXPECT_EQ(Text(buffer, length), row.text) << &row - cases;
    }
}

TEST_F(TextTest, CountedStringsKeepWhatStandsBehindATerminator) {
    BSTR whole = SysAllocStringLen(TEXT("a\0b"), 3);
    BSTR part = SysAllocString(whole);
    EXPECT_EQ(SysStringLen(whole), 3u);
    EXPECT_EQ(whole[3], 0);
    EXPECT_EQ(SysStringLen(part), 1u);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(VarBstrCmp(whole, part, 1024, 0), static_cast<HRESULT>(VARCMP_GT));
    SysFreeString(whole);
    SysFreeString(part);
    SysFreeString(nullptr);
}

}  // namespace
