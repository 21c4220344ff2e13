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
    test.machine.faults.FailCalls("FindResourceW", u"", ERROR_GEN_FAILURE);
    ShowErrorMessage(IDS_DIALOG_FAILED, nullptr);
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
        test.user.Answer(IDOK);
        if (row.textFails)
            test.machine.faults.FailCalls("FormatMessageW", u"", ERROR_MR_MID_NOT_FOUND, 1, 1);
        ShowSystemErrorMessage(IDS_KEY_OPEN_FAILED, row.error);
        const auto& box = test.user.Boxes().back();
        EXPECT_EQ(box.text,
                  u"Failed to open registry key.\r\nError message: " + std::u16string(row.shown));
    }
}

TEST(CountedText, AppendingJoinsOrLeavesTheTextAsItWas) {
    TestMachine test;
    ScopedBstr text;
    EXPECT_EQ(AppendText(text, u"abcd", 3), S_OK);
    EXPECT_EQ(AppendText(text, u"xyz", -1), E_INVALIDARG);
    EXPECT_EQ(AppendText(text, u"xyz", INT_MAX), static_cast<HRESULT>(0x80070216)) << "overflow";
    EXPECT_EQ(Content(text), u"abc");
    EXPECT_EQ(AppendText(text, u"xyz", 2), S_OK);
    EXPECT_EQ(Content(text), u"abcxy");
}

TEST(CountedText, AFailureThatCantBeSurvivedEndsTheProcess) {
    TestMachine test;
    DWORD code = 0;
    try {
        ThrowHresult(E_FAIL);
    } catch (const platform::MachineEnded& end) {
        code = end.code;
    }
    EXPECT_EQ(code, 0xC000001D);
}

}  // namespace
