// Dialogs and the controls in them.

#include "Conformance.h"

#include <richedit.h>

namespace {

using ControlsTest = DialogCase;
using Ids = std::vector<int>;

TEST_F(ControlsTest, RadioButtonsUncheckTheRestOfTheirGroup) {
    const struct {
        const char* what;
        Ids checkedBefore;
        int disabled, hidden;
        Ids clicks, checked;
    } cases[] = {
        {"the last click wins", {}, 0, 0, {11, 13, 12}, {12}},
        {"groups don't touch each other", {15}, 0, 0, {12, 16, 11}, {11, 16}},
        {"a disabled button keeps its check", {12}, 12, 0, {13}, {12, 13}},
        {"a hidden button keeps its check", {12}, 0, 12, {13}, {12, 13}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        Open(IDD_BUTTONS);
        for (const int id : row.checkedBefore)
            CheckDlgButton(dialog, id, BST_CHECKED);
        EnableWindow(Item(row.disabled), FALSE);
        ShowWindow(Item(row.hidden), SW_HIDE);
        for (const int id : row.clicks)
            SendMessageW(Item(id), BM_CLICK, 0, 0);
        Ids checked;
        for (int id = IDC_FIRST_RADIO; id <= IDC_LAST_RADIO; ++id) {
            if (IsDlgButtonChecked(dialog, id) == BST_CHECKED) checked.push_back(id);
        }
        EXPECT_EQ(checked, row.checked);
    }
}

TEST_F(ControlsTest, ADisabledWindowHasNoFocus) {
    Open(IDD_BUTTONS);
    ShowWindow(dialog, SW_SHOW);
    SetFocus(Item(IDC_PUSH));
    EnableWindow(Item(IDC_AUTO_CHECK), FALSE);
    EXPECT_EQ(GetFocus(), Item(IDC_PUSH)) << "another one";
    EnableWindow(Item(IDC_PUSH), FALSE);
    EXPECT_EQ(GetFocus(), nullptr);
    EnableWindow(Item(IDC_PUSH), TRUE);
    EXPECT_EQ(GetFocus(), nullptr) << "it doesn't come back by itself";
}

TEST_F(ControlsTest, AClickTellsTheParentOnceTheCheckIsChanged) {
    using Checks = std::vector<UINT>;
    const struct {
        int id;
        Checks checks;  // as seen in each command of three clicks
    } cases[] = {
        {IDC_PUSH, {0, 0, 0}},
        {IDC_AUTO_CHECK, {1, 0, 1}},
        {IDC_FIRST_RADIO, {1, 1, 1}},
    };
    Open(IDD_BUTTONS);
    for (const auto& row : cases) {
        Checks seen;
        on = [&](HWND window, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
            if (message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED)
                seen.push_back(IsDlgButtonChecked(window, row.id));
            return FALSE;
        };
        for (int i = 0; i < 3; ++i)
            SendMessageW(Item(row.id), BM_CLICK, 0, 0);
        EXPECT_EQ(seen, row.checks) << row.id;
    }
}

TEST_F(ControlsTest, ADialogNeedsTheClassesOfItsControls) {
    EXPECT_EQ(Open(IDD_RICH), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CANNOT_FIND_WND_CLASS});
    const HMODULE library = LoadLibraryW(TEXT("RICHED20"));
    EXPECT_NE(Open(IDD_RICH), nullptr);
    EXPECT_NE(Item(IDC_RICH), nullptr);
    DestroyWindow(dialog);
    FreeLibrary(library);
    EXPECT_EQ(Open(IDD_RICH), nullptr);
}

class RichEditTest : public DialogCase {
  protected:
    RichEditTest() {
        m_library = LoadLibraryW(TEXT("Riched20.dll"));
        Open(IDD_RICH);
    }
    ~RichEditTest() override {
        DestroyWindow(dialog);
        FreeLibrary(m_library);
    }
    // The text that a person reads when the control was given these bytes.
    Text Shown(const std::string& bytes) {
        SETTEXTEX set = {ST_DEFAULT, CP_ACP};
        EXPECT_EQ(SendMessageW(Item(IDC_RICH), EM_SETTEXTEX, reinterpret_cast<WPARAM>(&set),
                               reinterpret_cast<LPARAM>(bytes.c_str())),
                  1);
        WCHAR text[256];
        return Text(text, static_cast<std::size_t>(GetWindowTextW(Item(IDC_RICH), text, 256)));
    }

  private:
    HMODULE m_library;
};

TEST_F(RichEditTest, ShowsTheTextOfADocument) {
    const struct {
        std::string body;  // within {\rtf1 ...}
        Text text;
        const char* why;
    } cases[] = {
        {"Hello\\par World", TEXT("Hello\r\nWorld"), "breaks"},
        {"\\{\\}\\\\ \\~x\\tab y", TEXT("{}\\ \u00A0x\ty"), "control symbols"},
        {"\\b bold\\b0  plain", TEXT("bold plain"), "one blank ends a word, a second is text"},
        {"x{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red0;}{\\stylesheet{\\s0 Normal;}}{\\info{\\title "
         "t}}y",
         TEXT("xy"), "tables and properties"},
        {"x{\\*\\generator g;}{\\*\\foo{b} c}y", TEXT("xy"), "what is marked as ignorable"},
        {"\\unknownword123 ab", TEXT("ab"), "what isn't known is passed over"},
        {"\\'e9\\'80\\'96\xE9", TEXT("\u00E9\u20AC\u2013\u00E9"), "the ANSI code page"},
        {"\\u8364?\\u-3844 ?x", TEXT("\u20AC\uF0FCx"), "one fallback by default"},
        {"\\uc2\\u8364\\'80\\'80x{\\uc0\\u233 y}\\u233 abz", TEXT("\u20ACx\u00E9y\u00E9z"),
         "the count belongs to the group"},
        {"\\u55357?\\u56832?", TEXT("\U0001F600"), "a pair"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(Shown("{\\rtf1\\ansi " + row.body + "}"), row.text) << row.why;
}

TEST_F(RichEditTest, ShowsOtherTextAsItStands) {
    EXPECT_EQ(Shown("{no rtf}"), TEXT("{no rtf}"));
    EXPECT_EQ(Shown("a\r\nb\nc\xE9"), TEXT("a\r\nb\r\nc\u00E9"));
    EXPECT_EQ(Shown("{\\rtf1 a}trailing"), TEXT("a"));
    EXPECT_EQ(Shown(""), TEXT(""));
}

}  // namespace
