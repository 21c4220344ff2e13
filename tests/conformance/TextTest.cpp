// Comparisons, conversions, messages, counted strings, and the count of COM's initialisations.

#include "Conformance.h"

#include <objbase.h>
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
        {TEXT("\u03C3\u0436\u0561"), TEXT("\u03A3\u0416\u0531"), 0, "other scripts"},
        {TEXT("i"), TEXT("\u0131"), -1, "dotless i is its own letter"},
        {TEXT("\u00B5"), TEXT("\u039C"), -1, "the micro sign has no capital"},
        {TEXT("stra\u00DFe"), TEXT("STRASSE"), 1, "a capital never changes the length"},
        {TEXT("_"), TEXT("a"), 1, "the order is that of capitals"},
        {TEXT("ab"), TEXT("abc"), -1, "a beginning comes first"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(CompareStringOrdinal(row.a, -1, row.b, -1, TRUE), CSTR_EQUAL + row.order);
        EXPECT_EQ(CompareStringOrdinal(row.b, -1, row.a, -1, TRUE), CSTR_EQUAL - row.order);
    }
    EXPECT_EQ(CompareStringOrdinal(TEXT("a"), 1, TEXT("A"), 1, FALSE), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringOrdinal(TEXT("abX"), 2, TEXT("ab"), -1, FALSE), CSTR_EQUAL);
    EXPECT_EQ(CompareStringOrdinal(nullptr, 0, TEXT("a"), 1, FALSE), 0);
}

TEST_F(TextTest, IntegersAreReadAsTheShellDoes) {
    const struct {
        const WCHAR* text;
        STIF_FLAGS flags;
        BOOL result;
        int number;
    } cases[] = {
        {TEXT("12"), STIF_DEFAULT, TRUE, 12},         {TEXT(" \t-5z"), STIF_DEFAULT, TRUE, -5},
        {TEXT("+7"), STIF_SUPPORT_HEX, TRUE, 7},      {TEXT("0x1f"), STIF_DEFAULT, TRUE, 0},
        {TEXT("0x1fG"), STIF_SUPPORT_HEX, TRUE, 31},  {TEXT("-0x1F"), STIF_SUPPORT_HEX, TRUE, 31},
        {TEXT("0X"), STIF_SUPPORT_HEX, FALSE, 77},    {TEXT(""), STIF_DEFAULT, FALSE, 77},
        {TEXT("abc"), STIF_DEFAULT, FALSE, 77},       {TEXT("\r7"), STIF_DEFAULT, FALSE, 77},
        {TEXT("4294967295"), STIF_DEFAULT, TRUE, -1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        int number = 77;
        EXPECT_EQ(StrToIntExW(row.text, row.flags, &number), row.result);
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
    const auto text = [](const void* of) { return reinterpret_cast<DWORD_PTR>(of); };
    DWORD_PTR inserts[] = {
        text(TEXT("one")), text(TEXT("two")), 5, 2, text(TEXT("Bill")), text("narrow"), 0, 0, 0,
        text(TEXT("ten"))};
    const struct {
        const WCHAR* source;
        DWORD flags;
        const WCHAR* text;  // null: refused
        DWORD error;        // 0: none that matters
    } cases[] = {
        {TEXT("VLAN %1.%nAre you sure, %2?"), 0, TEXT("VLAN one.\r\nAre you sure, two?"), 0},
        {TEXT("%10 %1x"), 0, TEXT("ten onex"), 0},
        {TEXT("%3!d!,%3!04X!,%1!6s!,%1!-6s!,%6!S!"), 0, TEXT("5,0005,   one,one   ,narrow"), 0},
        {TEXT("%3!*.*s!"), 0, TEXT("   Bi"), 0},
        {TEXT("%7"), 0, TEXT("(null)"), 0},
        {TEXT("100%% %.%! % %z"), 0, TEXT("100% .!  z"), 0},
        {TEXT("a%0b"), 0, TEXT("a"), 0},
        {TEXT("a\nb\rc\r\nd"), 0, TEXT("a\r\nb\r\nc\r\nd"), 0},
        {TEXT("a\r\nb\nc%nd"), FORMAT_MESSAGE_MAX_WIDTH_MASK, TEXT("a b c\r\nd"), 0},
        {TEXT("%1 %2!d! %%%n"), FORMAT_MESSAGE_IGNORE_INSERTS, TEXT("%1 %2!d! %%\r\n"), 0},
        {TEXT("a%"), 0, nullptr, ERROR_INVALID_PARAMETER},
        {TEXT("%1!d"), 0, nullptr, ERROR_INVALID_PARAMETER},
        {TEXT(""), 0, nullptr, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        WCHAR buffer[512];
        const DWORD flags = row.flags | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
        SetLastError(0);
        const DWORD length = FormatMessageW(flags, row.source, 0, 0x400, buffer, 512,
                                            reinterpret_cast<va_list*>(inserts));
        EXPECT_EQ(Text(buffer, length), row.text ? row.text : TEXT(""));
        if (row.error != 0) {
            EXPECT_EQ(GetLastError(), row.error);
        }
    }
}

TEST_F(TextTest, SystemMessagesAreALineEach) {
    const auto message = [](DWORD code) {
        WCHAR* text = nullptr;
        const DWORD length =
            FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                               FORMAT_MESSAGE_IGNORE_INSERTS,
                           nullptr, code, 0x400, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
        const Text copy(text ? text : TEXT(""), length);
        LocalFree(text);
        return copy;
    };
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION,
                             ERROR_INVALID_DATA, ERROR_MORE_DATA, ERROR_PRIVILEGE_NOT_HELD}) {
        EXPECT_EQ(message(code).find(TEXT(".\r\n")), message(code).size() - 3) << code;
    }
    EXPECT_EQ(message(0x2000BEEF), TEXT(""));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MR_MID_NOT_FOUND});
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

TEST_F(TextTest, InitialisationOfComIsCountedByThread) {
    const auto create = [] {
        void* object = nullptr;
        const CLSID unknown = {1, 2, 3, {}};
        return CoCreateInstance(unknown, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object);
    };
    EXPECT_EQ(create(), CO_E_NOTINITIALIZED);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    CoUninitialize();
    EXPECT_EQ(create(), REGDB_E_CLASSNOTREG);
    CoUninitialize();
    EXPECT_EQ(create(), CO_E_NOTINITIALIZED);
}

}  // namespace
