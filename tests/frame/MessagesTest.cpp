#include "Messages.h"

#include <climits>

#include "Fixture.h"
#include "LibraryState.h"
#include "resource.h"

namespace {

std::u16string Content(const ScopedBstr& text) {
    return text ? std::u16string(text.Get(), SysStringLen(text.Get())) : u"(none)";
}

class Messages : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(test.Attach(), nullptr); }

    TestMachine test;
};

// Each message takes the arguments that its callers give: a changed text would show "%2" or drop
// one. There are no others.
TEST_F(Messages, EachMessageTakesItsArguments) {
    const std::map<UINT, int> withArguments = {
        {113, 1}, {115, 2}, {116, 1}, {121, 1}, {122, 1}, {123, 1}, {124, 1},
        {137, 1}, {138, 2}, {140, 1}, {142, 5}, {143, 1}, {144, 1}, {155, 1},
        {156, 1}, {157, 1}, {158, 1}, {163, 1}, {187, 1}, {188, 1}, {213, 2}};
    const LPCWSTR arguments[] = {u"<1>", u"<2>", u"<3>", u"<4>", u"<5>"};
    for (UINT id = 96; id < 240; ++id) {
        SCOPED_TRACE(id);
        const bool inTable = (id >= 110 && id <= 189) || (id >= 200 && id <= 216);
        ScopedBstr text;
        ASSERT_EQ(FormatResourceMessage(id, text, arguments), inTable);
        if (!inTable) continue;
        const auto row = withArguments.find(id);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(Content(text).find(arguments[i]) != std::u16string::npos,
                      row != withArguments.end() && i < row->second);
        EXPECT_EQ(Content(text).find(u'%'), std::u16string::npos);
    }
}

TEST_F(Messages, AFailedFormattingLeavesTheTextAndShowsNothing) {
    const std::u16string tooLong(600, u'x');
    const LPCWSTR arguments[] = {tooLong.c_str()};
    ScopedBstr text = AllocateText(TEXT("before"));
    EXPECT_FALSE(FormatResourceMessage(IDS_QUERY_FAILED, text, arguments));
    EXPECT_FALSE(FormatResourceMessage(199, text, nullptr));
    EXPECT_EQ(Content(text), u"before");

    ShowErrorMessage(IDS_QUERY_FAILED, arguments);
    ShowErrorMessage(199, nullptr);
    for (const char* call : {"FindResourceW", "LoadResource", "LockResource", "FormatMessageW"}) {
        test.machine.faults.FailCalls(call, u"", ERROR_GEN_FAILURE);
        ShowErrorMessage(IDS_DIALOG_FAILED, nullptr);
        test.machine.faults.Disarm();
    }
    EXPECT_TRUE(test.user.Boxes().empty());
}

TEST_F(Messages, AnErrorIsShownByTextOrNumber) {
    const struct {
        DWORD error;
        bool textFails;
        const char16_t* shown;
    } rows[] = {
        {ERROR_ACCESS_DENIED, false, u"Access is denied.\r\n"},
        {0xE0000ABC, false, u"0xE0000ABC"},
        {ERROR_ACCESS_DENIED, true, u"0x5"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.error);
        test.user.Answer(IDOK);
        if (row.textFails)
            test.machine.faults.FailCalls("FormatMessageW", u"", ERROR_MR_MID_NOT_FOUND, 1, 1);
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, row.error);
        const auto& box = test.user.Boxes().back();
        EXPECT_EQ(box.caption, u"Error");
        EXPECT_EQ(box.style, 0x2010u);
        EXPECT_EQ(box.text,
                  u"Failed to open registry key.\r\nError message: " + std::u16string(row.shown));
    }
    EXPECT_EQ(test.user.Boxes().size(), 3u);
}

TEST_F(Messages, ACaptionedMessageGivesTheButton) {
    const struct {
        UINT caption;
        const char16_t* shown;
    } rows[] = {{IDS_TEAMING_CAPTION, u"Teaming tab management"}, {199, u""}};
    for (const auto& row : rows) {
        test.user.Answer(IDNO);
        EXPECT_EQ(ShowCaptionedMessage(nullptr, TEXT("Really?"), row.caption, MB_YESNO), IDNO);
        const auto& box = test.user.Boxes().back();
        EXPECT_EQ(box.caption, row.shown);
        EXPECT_EQ(box.text, u"Really?");
        EXPECT_EQ(box.style, static_cast<UINT>(MB_YESNO));
    }
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
