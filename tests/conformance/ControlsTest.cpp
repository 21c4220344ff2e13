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
        Open(IDD_RADIOS);
        for (const int id : row.checkedBefore)
            CheckDlgButton(dialog, id, BST_CHECKED);
        EnableWindow(Item(row.disabled), FALSE);
        ShowWindow(Item(row.hidden), SW_HIDE);
        for (const int id : row.clicks)
            Send(id, BM_CLICK);
        Ids checked;
        for (int id = IDC_FIRST_RADIO; id <= IDC_LAST_RADIO; ++id) {
            if (IsDlgButtonChecked(dialog, id) == BST_CHECKED) checked.push_back(id);
        }
        EXPECT_EQ(checked, row.checked);
    }
}

TEST_F(ControlsTest, AClickTellsTheParentOnceTheCheckIsChanged) {
    using Checks = std::vector<UINT>;
    const struct {
        int id;
        Checks checks;  // as seen in each command of three clicks
    } cases[] = {
        {IDC_PUSH, {0, 0, 0}},        {IDC_CHECK, {0, 0, 0}},      {IDC_AUTO_CHECK, {1, 0, 1}},
        {IDC_AUTO_3STATE, {1, 2, 0}}, {IDC_AUTO_RADIO, {1, 1, 1}},
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
            Send(row.id, BM_CLICK);
        EXPECT_EQ(seen, row.checks) << row.id;
    }
}

TEST_F(ControlsTest, AModalDialogEndsWithItsResult) {
    const HWND owner = Open(IDD_EMPTY);
    ShowWindow(owner, SW_SHOW);
    HWND inner = nullptr;
    on = [&](HWND window, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
        if (message == WM_INITDIALOG) PostMessageW(window, WM_APP, 0, 0);
        if (message == WM_COMMAND) EndDialog(window, LOWORD(wParam));
        if (message == WM_APP) {
            inner = window;
            EXPECT_EQ(GetWindow(inner, GW_OWNER), owner);
            EXPECT_FALSE(IsWindowEnabled(owner));
            PostMessageW(inner, WM_CLOSE, 0, 0);
        }
        return message == WM_INITDIALOG;
    };
    const LPCWSTR modal = MAKEINTRESOURCEW(IDD_EMPTY);
    EXPECT_EQ(DialogBoxParamW(here->module, modal, owner, &Procedure, 0), IDCANCEL);
    EXPECT_FALSE(IsWindow(inner));
    EXPECT_TRUE(IsWindowEnabled(owner));
}

TEST_F(ControlsTest, ADialogNeedsTheClassesOfItsControls) {
    const LPCWSTR rich = MAKEINTRESOURCEW(IDD_RICH);
    EXPECT_EQ(ErrorOf(Open(IDD_RICH)), DWORD{ERROR_CANNOT_FIND_WND_CLASS});
    EXPECT_EQ(DialogBoxParamW(here->module, rich, nullptr, &Procedure, 0), -1);
    const HMODULE library = LoadLibraryW(TEXT("RICHED20"));
    EXPECT_NE(Open(IDD_RICH), nullptr);
    EXPECT_NE(Item(IDC_RICH), nullptr);
    DestroyWindow(dialog);
    FreeLibrary(library);
    EXPECT_EQ(Open(IDD_RICH), nullptr);
}

TEST_F(ControlsTest, AComboBoxSortsAndSelects) {
    Open(IDD_LISTS);
    for (const WCHAR* entry : {TEXT("beta"), TEXT("Gamma")})
        Send(IDC_COMBO, CB_ADDSTRING, 0, entry);
    EXPECT_EQ(Send(IDC_COMBO, CB_SETCURSEL, 1), 1);
    EXPECT_EQ(Send(IDC_COMBO, CB_ADDSTRING, 0, TEXT("Alpha")), 0);
    EXPECT_EQ(Send(IDC_COMBO, CB_GETCURSEL), 2) << "the selection goes with its entry";
    EXPECT_EQ(TextOf(Item(IDC_COMBO)), TEXT("Gamma"));
    EXPECT_EQ(Send(IDC_COMBO, CB_SELECTSTRING, 0, TEXT("none")), CB_ERR);
    EXPECT_EQ(Send(IDC_COMBO, CB_SELECTSTRING, 0, TEXT("BET")), 1);
    EXPECT_EQ(codes, std::vector<UINT>()) << "messages of the program don't notify it";
    Send(IDC_COMBO, CB_RESETCONTENT);
    EXPECT_EQ(TextOf(Item(IDC_COMBO)), TEXT(""));
}

class ListViewTest : public DialogCase {
  protected:
    ListViewTest() { Open(IDD_LISTS); }
    LRESULT List(UINT message, WPARAM wParam = 0, const void* pointer = nullptr) {
        return Send(IDC_LIST_VIEW, message, wParam, pointer);
    }
    void SetState(WPARAM row, UINT state, UINT mask) {
        LVITEMW item = {};
        item.state = state;
        item.stateMask = mask;
        List(LVM_SETITEMSTATE, row, &item);
    }
    static LVITEMW TextItem(int row, int column, Text& text) {
        LVITEMW item = {};
        item.mask = LVIF_TEXT;
        item.iItem = row;
        item.iSubItem = column;
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size()) + 1;
        return item;
    }
};

TEST_F(ListViewTest, RowsAndColumnsKeepTheirTexts) {
    Text texts[] = {TEXT("Name"), TEXT("Value"), TEXT("second"), TEXT("first"), TEXT("cell")};
    LVCOLUMNW column = {};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.cx = 40;
    for (int i = 0; i < 2; ++i) {
        column.pszText = texts[i].data();
        EXPECT_EQ(List(LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), &column), i);
    }
    const LVITEMW second = TextItem(0, 0, texts[2]);
    const LVITEMW first = TextItem(0, 0, texts[3]);
    EXPECT_EQ(List(LVM_INSERTITEMW, 0, &second), 0);
    EXPECT_EQ(List(LVM_INSERTITEMW, 0, &first), 0);
    const LVITEMW cell = TextItem(0, 1, texts[4]);
    EXPECT_TRUE(List(LVM_SETITEMTEXTW, 1, &cell));
    const struct {
        WPARAM row;
        int column;
        int room;
        Text text;
    } cases[] = {
        {0, 0, 9, TEXT("first")}, {1, 0, 9, TEXT("second")}, {1, 1, 9, TEXT("cell")},
        {0, 1, 9, TEXT("")},      {1, 0, 4, TEXT("sec")},    {7, 0, 9, TEXT("")},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        Text room(static_cast<std::size_t>(row.room - 1), TEXT(' '));
        const LVITEMW asked = TextItem(0, row.column, room);
        EXPECT_EQ(List(LVM_GETITEMTEXTW, row.row, &asked), static_cast<LRESULT>(row.text.size()));
        EXPECT_EQ(room.substr(0, row.text.size()), row.text);
    }
    EXPECT_EQ(List(LVM_GETITEMCOUNT), 2);
    EXPECT_TRUE(List(LVM_DELETEITEM, 0));
    EXPECT_FALSE(List(LVM_DELETEITEM, 1));
    EXPECT_TRUE(List(LVM_DELETEALLITEMS));
    EXPECT_EQ(List(LVM_GETITEMCOUNT), 0);
}

TEST_F(ListViewTest, ChecksAndSelectionsAreToldToTheParent) {
    using Changes = std::vector<std::vector<UINT>>;  // row, state before and after
    Changes changes;
    bool refuse = false;
    on = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> INT_PTR {
        if (message != WM_NOTIFY || wParam != IDC_LIST_VIEW) return FALSE;
        const auto& note = *reinterpret_cast<const NMLISTVIEW*>(lParam);
        if (note.hdr.code == LVN_ITEMCHANGED)
            changes.push_back({static_cast<UINT>(note.iItem), note.uOldState, note.uNewState});
        if (note.hdr.code == LVN_ITEMCHANGING) SetWindowLongPtrW(window, DWLP_MSGRESULT, refuse);
        return note.hdr.code == LVN_ITEMCHANGING;
    };
    List(LVM_SETEXTENDEDLISTVIEWSTYLE, 0, reinterpret_cast<const void*>(LVS_EX_CHECKBOXES));
    LVITEMW added = {};
    for (int row = 0; row < 2; ++row)
        List(LVM_INSERTITEMW, 0, &added);
    changes.clear();
    SetState(0, 0x2000, LVIS_STATEIMAGEMASK);
    SetState(0, 0x2000, LVIS_STATEIMAGEMASK);  // no change
    SetState(0, LVIS_SELECTED, LVIS_SELECTED);
    SetState(1, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(
        changes,
        (Changes{
            {0, 0x1000, 0x2000}, {0, 0x2000, 0x2002}, {0, 0x2002, 0x2000}, {1, 0x1000, 0x1002}}));
    EXPECT_EQ(List(LVM_GETNEXTITEM, static_cast<WPARAM>(-1),
                   reinterpret_cast<const void*>(LVNI_SELECTED)),
              1);
    EXPECT_EQ(List(LVM_GETSELECTEDCOUNT), 1);
    refuse = true;
    SetState(0, 0x1000, LVIS_STATEIMAGEMASK);
    EXPECT_EQ(List(LVM_GETITEMSTATE, 0, reinterpret_cast<const void*>(LVIS_STATEIMAGEMASK)),
              0x2000);
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
        EXPECT_EQ(Send(IDC_RICH, EM_SETTEXTEX, reinterpret_cast<WPARAM>(&set), bytes.c_str()), 1);
        return TextOf(Item(IDC_RICH));
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
        {"a\\\nb\\\r\nc", TEXT("a\r\nb\r\nc"), "an escaped one is a paragraph's end"},
        {"\\{\\}\\\\ \\~x\\tab y", TEXT("{}\\ \u00A0x\ty"), "control symbols"},
        {"\\b bold\\b0  plain", TEXT("bold plain"), "one blank ends a word, a second is text"},
        {"\\b1bold {\\i\\fs24 in}out", TEXT("bold inout"), "a number ends a word as well"},
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
