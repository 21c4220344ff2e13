#include "Messages.h"

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

TEST_F(Messages, TheTableIsCompleteAndHoldsNothingElse) {
    for (UINT id = 96; id < 240; ++id) {
        SCOPED_TRACE(id);
        const bool inTable = (id >= 110 && id <= 189) || (id >= 200 && id <= 216);
        ScopedBstr text = AllocateText(TEXT("before"));
        EXPECT_EQ(LoadResourceString(Library().moduleHandle, id, text), inTable);
        EXPECT_EQ(static_cast<bool>(text), inTable);
    }
}

// Each message takes the arguments that its callers give: a changed text would show "%2" or drop
// one.
TEST_F(Messages, EachMessageTakesItsArguments) {
    const struct {
        UINT first, last;
        int arguments;
    } rows[] = {{110, 112, 0}, {113, 113, 1}, {114, 114, 0}, {115, 115, 2}, {116, 116, 1},
                {117, 120, 0}, {121, 124, 1}, {125, 136, 0}, {137, 137, 1}, {138, 138, 2},
                {139, 139, 0}, {140, 140, 1}, {141, 141, 0}, {142, 142, 5}, {143, 144, 1},
                {145, 154, 0}, {155, 158, 1}, {159, 162, 0}, {163, 163, 1}, {164, 186, 0},
                {187, 188, 1}, {189, 189, 0}, {200, 212, 0}, {213, 213, 2}, {214, 216, 0}};
    const LPCWSTR arguments[] = {u"<1>", u"<2>", u"<3>", u"<4>", u"<5>"};
    for (const auto& row : rows) {
        for (UINT id = row.first; id <= row.last; ++id) {
            SCOPED_TRACE(id);
            ScopedBstr text;
            ASSERT_TRUE(FormatResourceMessage(id, text, arguments));
            for (int i = 0; i < 5; ++i)
                EXPECT_EQ(Content(text).find(arguments[i]) != std::u16string::npos,
                          i < row.arguments);
            EXPECT_EQ(Content(text).find(u'%'), std::u16string::npos);
        }
    }
}

TEST_F(Messages, TextsStandAsTheyWereWritten) {
    const struct {
        UINT id;
        const char16_t* text;
    } rows[] = {
        {IDS_VLAN_NAME_COLUMN, u"VLAN Name"},
        {IDS_VALUE_OUT_OF_RANGE,
         u"The value is out of range.The valid range is %1 to %2."
         u"%nRestoring the previous value."},
        {IDS_TEAM_TYPE_LOAD_BALANCING, u"Load Balancing (Send & Receive)"},
        {IDS_COMMIT_OR_CANCEL, u"Please Commit or Cancel. "},
        {IDS_SAVE_INFORMATION, u"Save Adapter's Information"},
        {IDS_ENABLE_ROCE_INVALID,
         u"An invalid registry EnableRoce value was detected. %nThe vale "
         u"will be initialized with the default configuration."},
    };
    for (const auto& row : rows) {
        ScopedBstr text;
        EXPECT_TRUE(LoadResourceString(Library().moduleHandle, row.id, text));
        EXPECT_EQ(Content(text), row.text);
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

}  // namespace
