#include <climits>

#include "Fixture.h"
#include "Messages.h"

namespace {

std::u16string Content(const ScopedBstr& text) {
    return text ? std::u16string(text.Get(), SysStringLen(text.Get())) : u"(none)";
}

TEST(CountedText, AppendingJoinsOrLeavesTheTextAsItWas) {
    const struct {
        const char16_t* start;  // null: no text yet
        int length;
        const char* failing;
        HRESULT result;
        const char16_t* text;
        const char* reason;
    } rows[] = {
        {u"abc", 2, "", S_OK, u"abcxy", "part of what is given"},
        {nullptr, 3, "", S_OK, u"xyz", "to nothing"},
        {u"abc", 0, "", S_OK, u"abc", "nothing"},
        {u"abc", -1, "", E_INVALIDARG, u"abc", "a negative length"},
        {u"abc", INT_MAX, "", static_cast<HRESULT>(0x80070216), u"abc", "an overflow"},
        {u"abc", 2, "SysAllocStringLen", E_OUTOFMEMORY, u"abc", "no memory"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test;
        ScopedBstr text;
        if (row.start) text = AllocateText(row.start);
        test.machine.faults.FailCalls(row.failing, u"", 8);
        EXPECT_EQ(AppendText(text, u"xyz", row.length), row.result);
        EXPECT_EQ(Content(text), row.text);
    }
    TestMachine test;
    ScopedBstr text = AllocateText(u"ab");
    EXPECT_EQ(AppendText(text, text.Get(), 2), S_OK);
    EXPECT_EQ(Content(text), u"abab") << "a text to itself";
}

TEST(CountedText, EqualityIsExact) {
    const struct {
        const char16_t *a, *b;
        bool equal;
    } rows[] = {{u"Team", u"Team", true},
                {u"Team", u"team", false},
                {u"Team", u"Team 2", false},
                {u"", u"", true}};
    TestMachine test;
    for (const auto& row : rows)
        EXPECT_EQ(EqualText(AllocateText(row.a).Get(), AllocateText(row.b).Get()), row.equal);
    EXPECT_TRUE(EqualText(nullptr, AllocateText(u"").Get()));
}

TEST(CountedText, AFailureThatCantBeSurvivedEndsTheProcess) {
    const struct {
        void (*act)();
        DWORD code;
    } rows[] = {{[] { AllocateText(u"text"); }, 0xC0000017},
                {[] { ThrowHresult(E_FAIL); }, 0xC000001D}};
    for (const auto& row : rows) {
        TestMachine test;
        test.machine.faults.FailCalls("SysAllocString", u"", ERROR_NOT_ENOUGH_MEMORY);
        DWORD code = 0;
        try {
            row.act();
        } catch (const platform::MachineEnded& end) {
            code = end.code;
        }
        EXPECT_EQ(code, row.code);
    }
}

}  // namespace
