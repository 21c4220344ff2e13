// Conversions, comparisons, messages, counted strings, GUIDs and the allocations beneath them.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <shlwapi.h>

#include "Call.h"
#include "Machine.h"
#include "Text.h"

using namespace platform;
using std::string_literals::operator""s;

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
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", "beyond the last character"},
        {"\x80\xFF", u"\uFFFD\uFFFD", "no lead bytes"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FromUtf8(c.utf8), c.wide) << c.why;
    EXPECT_EQ(ToUtf8(u"a\u00E9\u20AC\U0001F600"), "a\u00E9\u20AC\U0001F600");
    EXPECT_EQ(ToUtf8(u"\xD800x\xDC00"), "\uFFFDx\uFFFD");
}

TEST(TextTest, ComparesNamesByTheirCapitals) {
    const struct {
        std::u16string a;
        std::u16string b;
        int order;
        const char* why;
    } cases[] = {
        {u"InstalledPath", u"INSTALLEDPATH", 0, "Latin"},
        {u"\u00E9\u00FF", u"\u00C9\u0178", 0, "Latin-1 and its letter outside"},
        {u"\u03C3\u03C2\u0436\u0561", u"\u03A3\u03A3\u0416\u0531", 0, "Greek, Cyrillic, Armenian"},
        {u"\u1E01\uFF41\u2170", u"\u1E00\uFF21\u2160", 0, "far blocks"},
        {u"i", u"\u0131", -1, "dotless i is its own letter"},
        {u"\u00B5", u"\u039C", -1, "the micro sign has no capital"},
        {u"stra\u00DFe", u"STRASSE", 1, "a capital never changes the length"},
        {u"_", u"a", 1, "the order is that of capitals"},
        {u"ab", u"abc", -1, "a beginning comes first"},
    };
    for (const auto& c : cases) {
        const auto sign = [](int order) { return (order > 0) - (order < 0); };
        EXPECT_EQ(sign(CompareNoCase(c.a, c.b)), c.order) << c.why;
        EXPECT_EQ(sign(CompareNoCase(c.b, c.a)), -c.order) << c.why;
        EXPECT_EQ(EqualNoCase(c.a, c.b), c.order == 0) << c.why;
        const int ordinal = CompareStringOrdinal(c.a.c_str(), -1, c.b.c_str(), -1, TRUE);
        EXPECT_EQ(ordinal, CSTR_EQUAL + c.order) << c.why;
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
        BOOL lossy = TRUE;
        ASSERT_EQ(WideCharToMultiByte(codePage, 0, wide, -1, back, 16, nullptr, &lossy), 6);
        EXPECT_STREQ(back, narrow);
        EXPECT_FALSE(lossy);
    }
    char narrowed[8] = {};
    BOOL lossy = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a\u4E00\U0001F600", 4, narrowed, 8, "#", &lossy), 3);
    EXPECT_STREQ(narrowed, "a##");
    EXPECT_TRUE(lossy);
}

TEST(CodePageTest, RefusesWhatCannotBeConverted) {
    Machine machine;
    WCHAR wide[2] = {};
    char narrow[2] = {};
    const struct {
        std::function<int()> convert;
        DWORD error;
        const char* why;
    } cases[] = {
        {[&] { return MultiByteToWideChar(CP_UTF8, 0, "abc", 3, wide, 2); }, 122, "short buffer"},
        {[&] { return WideCharToMultiByte(3, 0, u"ab", -1, narrow, 2, nullptr, nullptr); }, 122,
         "no room for the terminator"},
        {[&] { return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "\xC3", 1, wide, 2); },
         1113, "ill-formed"},
        {[&] { return MultiByteToWideChar(CP_ACP, 0, "a", 0, wide, 2); }, 87, "no length"},
        {[&] { return MultiByteToWideChar(CP_ACP, 0, nullptr, -1, wide, 2); }, 87, "no text"},
        {[&] { return MultiByteToWideChar(4711, 0, "a", 1, wide, 2); }, 87, "no such code page"},
        {[&] { return MultiByteToWideChar(CP_ACP, 0x4000, "a", 1, wide, 2); }, 1004, "flags"},
        {[&] { return WideCharToMultiByte(CP_UTF8, 0, u"a", 1, narrow, 2, "?", nullptr); }, 87,
         "UTF-8 takes no default character"},
    };
    for (const auto& c : cases) {
        Call::SetLast(0);
        EXPECT_EQ(c.convert(), 0) << c.why;
        EXPECT_EQ(Call::GetLast(), c.error) << c.why;
    }
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xC3", 1, wide, 2), 1);
    EXPECT_EQ(wide[0], 0xFFFD);
    machine.faults.FailCalls("WideCharToMultiByte", u"", 0x1234);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a", 1, narrow, 2, nullptr, nullptr), 0);
    EXPECT_EQ(Call::GetLast(), 0x1234u);
}

struct MessageCase {
    const char16_t* source;
    DWORD flags;
    const char16_t* text;  // null: refused
    DWORD error;
};

TEST(FormatMessageTest, FillsInsertsAndEscapes) {
    const Machine machine;
    const DWORD_PTR inserts[] = {reinterpret_cast<DWORD_PTR>(u"one"),
                                 reinterpret_cast<DWORD_PTR>(u"two"),
                                 5,
                                 2,
                                 reinterpret_cast<DWORD_PTR>(u"Bill"),
                                 reinterpret_cast<DWORD_PTR>("narrow"),
                                 0,
                                 0,
                                 0,
                                 reinterpret_cast<DWORD_PTR>(u"ten")};
    const MessageCase cases[] = {
        {u"VLAN %1.%nAre you sure, %2?", 0, u"VLAN one.\r\nAre you sure, two?", 0},
        {u"%2%1%2", 0, u"twoonetwo", 0},
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
        {u"%0", 0, nullptr, ERROR_NO_WORK_DONE},
    };
    for (const MessageCase& c : cases) {
        WCHAR text[512];
        const DWORD flags = c.flags | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
        Call::SetLast(0);
        const DWORD length =
            FormatMessageW(flags, c.source, 0, 0x400, text, 512,
                           reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(inserts)));
        const std::u16string expected = c.text ? c.text : u"";
        EXPECT_EQ(length, expected.size()) << ToUtf8(c.source);
        EXPECT_EQ(std::u16string(text, length), expected) << ToUtf8(c.source);
        EXPECT_EQ(Call::GetLast(), c.error) << ToUtf8(c.source);
    }
}

TEST(FormatMessageTest, NeedsRoomForAllAndInsertsWhereItTakesThem) {
    const Machine machine;
    const WCHAR* one = u"12345";
    auto* inserts = reinterpret_cast<va_list*>(&one);
    const DWORD flags = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
    WCHAR text[6];
    EXPECT_EQ(FormatMessageW(flags, u"%1", 0, 0, text, 6, inserts), 5u);
    EXPECT_EQ(FormatMessageW(flags, u"%1", 0, 0, text, 5, inserts), 0u);
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(FormatMessageW(flags, u"%1", 0, 0, text, 6, nullptr), 0u);
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(FormatMessageW(flags, u"plain", 0, 0, text, 6, nullptr), 5u);
}

// The text of a code in a block of its own, as the library asks for it; nothing without one.
std::u16string SystemText(DWORD code) {
    WCHAR* block = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
        nullptr, code, 0x400, reinterpret_cast<LPWSTR>(&block), 0, nullptr);
    const std::u16string text = block ? block : u"";
    EXPECT_EQ(text.size(), length);
    EXPECT_EQ(LocalFree(block), nullptr);
    return text;
}

TEST(FormatMessageTest, KnowsTheTextsOfTheSystem) {
    Machine machine;
    EXPECT_EQ(SystemText(ERROR_ACCESS_DENIED), u"Access is denied.\r\n");
    EXPECT_EQ(SystemText(ERROR_FILE_NOT_FOUND), u"The system cannot find the file specified.\r\n");
    EXPECT_EQ(SystemText(0x80070005), u"Access is denied.\r\n");
    EXPECT_EQ(SystemText(static_cast<DWORD>(REGDB_E_CLASSNOTREG)), u"Class not registered\r\n");
    EXPECT_NE(SystemText(ERROR_MR_MID_NOT_FOUND).find(u" 0x%1 in "), std::u16string::npos);
    for (const DWORD unknown : {0x12345u, 0xE000020Bu, 0x8007FFFFu}) {
        Call::SetLast(0);
        EXPECT_EQ(SystemText(unknown), u"");
        EXPECT_EQ(Call::GetLast(), DWORD{ERROR_MR_MID_NOT_FOUND});
    }
    machine.faults.FailCalls("FormatMessageW", u"", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(SystemText(ERROR_ACCESS_DENIED), u"");
}

TEST(CountedStringTest, KeepsItsLengthAndComparesExactly) {
    const Machine machine;
    const auto make = [](std::u16string_view text) {
        return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    };
    BSTR whole = make(std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(SysStringLen(whole), 3u);
    EXPECT_EQ(SysStringByteLen(whole), 6u);
    EXPECT_EQ(whole[3], 0);
    BSTR part = SysAllocString(whole);
    EXPECT_EQ(SysStringLen(part), 1u);
    BSTR capital = SysAllocString(u"A");
    BSTR empty = SysAllocString(u"");
    EXPECT_EQ(VarBstrCmp(whole, part, 1024, 0), VARCMP_GT);
    EXPECT_EQ(VarBstrCmp(capital, part, 1024, 0), VARCMP_LT);
    EXPECT_EQ(VarBstrCmp(part, part, 1024, 0), VARCMP_EQ);
    EXPECT_EQ(VarBstrCmp(empty, nullptr, 1024, 0), VARCMP_EQ);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    for (BSTR text : {whole, part, capital, empty, BSTR{}})
        SysFreeString(text);
}

TEST(AllocationTest, EveryKindCanFailAndIsMissedUntilFreed) {
    std::vector<std::string> leaks;
    const struct {
        const char* call;
        std::function<void*()> make;
        std::function<void(void*)> release;
    } cases[] = {
        {"SysAllocString", [] { return SysAllocString(u"x"); },
         [](void* text) { SysFreeString(static_cast<BSTR>(text)); }},
        {"SysAllocStringLen", [] { return SysAllocStringLen(nullptr, 4); },
         [](void* text) { SysFreeString(static_cast<BSTR>(text)); }},
        {"LocalAlloc", [] { return LocalAlloc(LPTR, 16); }, [](void* block) { LocalFree(block); }},
        {"CoTaskMemAlloc", [] { return CoTaskMemAlloc(16); }, &CoTaskMemFree},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        Machine machine;
        machine.faults.FailNth(1, false);
        EXPECT_EQ(c.make(), nullptr);
        EXPECT_TRUE(machine.ledger.Open().empty());
        void* made = c.make();
        ASSERT_NE(made, nullptr);
        ASSERT_EQ(machine.ledger.Open().size(), 1u);
        EXPECT_STREQ(machine.ledger.Open()[0].call, c.call);
        c.release(made);
        EXPECT_TRUE(machine.ledger.Open().empty());
    }
    const Machine machine;
    auto* zeroed = static_cast<BYTE*>(LocalAlloc(LPTR, 3));
    EXPECT_EQ(std::vector<BYTE>(zeroed, zeroed + 3), std::vector<BYTE>(3));
    EXPECT_EQ(LocalFree(zeroed), nullptr);
    EXPECT_EQ(LocalFree(zeroed), zeroed);
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_INVALID_HANDLE});
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
    Machine machine;
    void* object = nullptr;
    const CLSID unknown = {1, 2, 3, {}};
    EXPECT_EQ(CoCreateInstance(unknown, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    EXPECT_EQ(machine.ledger.Open().size(), 2u);
    EXPECT_EQ(CoCreateInstance(unknown, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
              REGDB_E_CLASSNOTREG);
    CoUninitialize();
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    CoUninitialize();
    machine.faults.FailCalls("CoInitialize", u"", static_cast<DWORD>(RPC_E_CHANGED_MODE));
    EXPECT_EQ(CoInitialize(nullptr), RPC_E_CHANGED_MODE);
    EXPECT_TRUE(machine.ledger.Open().empty());
}

TEST(ComTest, GuidsGoToTextAndBack) {
    const Machine machine;
    const GUID guid = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
    WCHAR text[39];
    EXPECT_EQ(StringFromGUID2(guid, text, 38), 0);
    ASSERT_EQ(StringFromGUID2(guid, text, 39), 39);
    EXPECT_EQ(std::u16string(text), u"{2933BF81-7B36-11D2-B20E-00C04F983E60}");
    CLSID parsed = {};
    EXPECT_EQ(CLSIDFromString(u"{2933bf81-7b36-11d2-B20e-00c04F983E60}", &parsed), S_OK);
    EXPECT_EQ(parsed, guid);
    for (const char16_t* bad :
         {u"", u"2933BF81-7B36-11D2-B20E-00C04F983E60", u"{2933BF81-7B36-11D2-B20E-00C04F983E6}",
          u"{2933BF81-7B36-11D2-B20E-00C04F983E60} ", u"{2933BF81 7B36-11D2-B20E-00C04F983E60}",
          u"{2933BF81-7B36-11D2-B20E-00C04F983EG0}"})
        EXPECT_EQ(CLSIDFromString(bad, &parsed), CO_E_CLASSSTRING) << ToUtf8(bad);
}

}  // namespace
