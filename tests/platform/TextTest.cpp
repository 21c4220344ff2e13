// Conversions, comparisons, messages, counted strings, allocations and COM.

#include <memory>
#include <new>
#include <string>

#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <shlwapi.h>

#include "FactsMachine.h"
#include "Text.h"

using namespace platform;

namespace {

TEST(TextTest, ConvertsUtf8AndReplacesWhatIsIllFormed) {
    const struct {
        std::string utf8;
        std::u16string wide;
        const char* why;
    } cases[] = {
        {"a\u00E9\u20AC", u"a\u00E9\u20AC", "one, two and three bytes"},
        {"\xF0\x9F\x98\x80", u"\U0001F600", "four bytes become a pair"},
        {"\xC3", u"\uFFFD", "cut off"},
        {"\xE2\x82x", u"\uFFFDx", "a cut sequence is one error, and what follows stands"},
        {"\xC0\x80", u"\uFFFD\uFFFD", "overlong"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", "a surrogate's bytes"},
        {"\x80\xFF", u"\uFFFD\uFFFD", "no lead bytes"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FromUtf8(c.utf8), c.wide) << c.why;
    EXPECT_EQ(ToUtf8(u"a\u00E9\u20AC\U0001F600"), "a\u00E9\u20AC\U0001F600");
    EXPECT_EQ(ToUtf8(u"\xD800x\xDC00"), "\uFFFDx\uFFFD");
}

TEST(TextTest, ComparesNamesByTheirCapitals) {
    const struct {
        const char16_t *a, *b;
        int order;
        const char* why;
    } cases[] = {
        {u"InstalledPath", u"INSTALLEDPATH", 0, "Latin"},
        {u"\u00E9\u00FF", u"\u00C9\u0178", 0, "Latin-1 and its letter outside"},
        {u"\u03C3\u03C2\u0436\u0561", u"\u03A3\u03A3\u0416\u0531", 0, "Greek, Cyrillic, Armenian"},
        {u"i", u"\u0131", -1, "dotless i is its own letter"},
        {u"\u00B5", u"\u039C", -1, "the micro sign has no capital"},
        {u"stra\u00DFe", u"STRASSE", 1, "a capital never changes the length"},
        {u"_", u"a", 1, "the order is that of capitals"},
        {u"ab", u"abc", -1, "a beginning comes first"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(CompareStringOrdinal(c.a, -1, c.b, -1, TRUE), CSTR_EQUAL + c.order);
        EXPECT_EQ(CompareStringOrdinal(c.b, -1, c.a, -1, TRUE), CSTR_EQUAL - c.order);
        EXPECT_EQ(EqualNoCase(c.a, c.b), c.order == 0);
    }
    EXPECT_EQ(CompareStringOrdinal(u"a", 1, u"A", 1, FALSE), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringOrdinal(u"abX", 2, u"ab", -1, FALSE), CSTR_EQUAL);
    EXPECT_EQ(CompareStringOrdinal(nullptr, 0, u"a", 1, FALSE), 0);
}

TEST(TextTest, ReadsIntegersAsTheShellDoes) {
    const struct {
        const char16_t* text;
        STIF_FLAGS flags;
        BOOL result;
        int number;
    } cases[] = {
        {u"12", STIF_DEFAULT, TRUE, 12},         {u" \t-5z", STIF_DEFAULT, TRUE, -5},
        {u"+7", STIF_SUPPORT_HEX, TRUE, 7},      {u"0x1f", STIF_DEFAULT, TRUE, 0},
        {u"0x1fG", STIF_SUPPORT_HEX, TRUE, 31},  {u"-0x1F", STIF_SUPPORT_HEX, TRUE, 31},
        {u"0X", STIF_SUPPORT_HEX, FALSE, 77},    {u"", STIF_DEFAULT, FALSE, 77},
        {u"abc", STIF_DEFAULT, FALSE, 77},       {u"\r7", STIF_DEFAULT, FALSE, 77},
        {u"4294967295", STIF_DEFAULT, TRUE, -1},
    };
    for (const auto& c : cases) {
        int number = 77;
        EXPECT_EQ(StrToIntExW(c.text, c.flags, &number), c.result) << ToUtf8(c.text);
        EXPECT_EQ(number, c.number) << ToUtf8(c.text);
    }
}

TEST(CodePageTest, ConvertsToAndFromTheAnsiCodePage) {
    const Machine machine;
    const char narrow[] = "\x80 \xE9\x96\x81";
    WCHAR wide[16];
    for (const UINT codePage : {UINT{CP_ACP}, UINT{CP_THREAD_ACP}, 1252u}) {
        EXPECT_EQ(MultiByteToWideChar(codePage, 0, narrow, -1, nullptr, 0), 6);
        ASSERT_EQ(MultiByteToWideChar(codePage, 0, narrow, -1, wide, 16), 6);
        EXPECT_EQ(std::u16string(wide), u"\u20AC \u00E9\u2013\u0081");
        char back[16];
        ASSERT_EQ(WideCharToMultiByte(codePage, 0, wide, -1, back, 16, nullptr, nullptr), 6);
        EXPECT_STREQ(back, narrow);
    }
    char narrowed[8] = {};
    BOOL lossy = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a\u4E00\U0001F600", 4, narrowed, 8, "#", &lossy), 3);
    EXPECT_STREQ(narrowed, "a##");
    EXPECT_TRUE(lossy);
}

TEST(FormatMessageTest, FillsInsertsAndEscapes) {
    const Machine machine;
    const auto text = [](const void* of) { return reinterpret_cast<DWORD_PTR>(of); };
    DWORD_PTR inserts[] = {text(u"one"), text(u"two"), 5, 2, text(u"Bill"), text("narrow"), 0, 0, 0,
                           text(u"ten")};
    const struct {
        const char16_t* source;
        DWORD flags;
        const char16_t* text;  // null: refused
        DWORD error;
    } cases[] = {
        {u"VLAN %1.%nAre you sure, %2?", 0, u"VLAN one.\r\nAre you sure, two?", 0},
        {u"%10 %1x", 0, u"ten onex", 0},
        {u"%3!d!,%3!04X!,%1!6s!,%1!-6s!,%6!S!", 0, u"5,0005,   one,one   ,narrow", 0},
        {u"%3!*.*s!", 0, u"   Bi", 0},
        {u"%7", 0, u"(null)", 0},
        {u"100%% %.%! % %z", 0, u"100% .!  z", 0},
        {u"a%0b", 0, u"a", 0},
        {u"a\nb\rc\r\nd", 0, u"a\r\nb\r\nc\r\nd", 0},
        {u"a\r\nb\nc%nd", FORMAT_MESSAGE_MAX_WIDTH_MASK, u"a b c\r\nd", 0},
        {u"%1 %2!d! %%%n", FORMAT_MESSAGE_IGNORE_INSERTS, u"%1 %2!d! %%\r\n", 0},
        {u"a%", 0, nullptr, ERROR_INVALID_PARAMETER},
        {u"%1!d", 0, nullptr, ERROR_INVALID_PARAMETER},
        {u"", 0, nullptr, ERROR_NO_WORK_DONE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(ToUtf8(c.source));
        WCHAR buffer[512];
        const DWORD flags = c.flags | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
        Call::SetLast(0);
        const DWORD length = FormatMessageW(flags, c.source, 0, 0x400, buffer, 512,
                                            reinterpret_cast<va_list*>(inserts));
        EXPECT_EQ(std::u16string(buffer, length), c.text ? c.text : u"");
        EXPECT_EQ(Call::GetLast(), c.error);
    }
}

TEST(CountedStringTest, KeepsWhatStandsBehindATerminator) {
    const Machine machine;
    BSTR whole = SysAllocStringLen(u"a\0b", 3);
    BSTR part = SysAllocString(whole);
    EXPECT_EQ(SysStringLen(whole), 3u);
    EXPECT_EQ(SysStringLen(part), 1u);
    EXPECT_EQ(VarBstrCmp(whole, part, 1024, 0), VARCMP_GT);
    SysFreeString(whole);
    SysFreeString(part);
}

TEST(AllocationTest, NewFailsOnlyWhereItReportsByNull) {
    Machine machine;
    machine.faults.FailCalls("operator new", u"", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(std::unique_ptr<int>(new (std::nothrow) int), nullptr);
    EXPECT_EQ(std::unique_ptr<int[]>(new (std::nothrow) int[3]), nullptr);
    EXPECT_NE(std::make_unique<int>(), nullptr);
    {
        const QuietScope quiet;
        EXPECT_NE(std::unique_ptr<int>(new (std::nothrow) int), nullptr);
    }
    machine.faults.Disarm();
    EXPECT_NE(std::unique_ptr<int>(new (std::nothrow) int), nullptr);
}

TEST(ComTest, InitialisationIsCountedByThread) {
    FactsMachine facts;
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
