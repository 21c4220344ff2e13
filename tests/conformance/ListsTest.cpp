// Lists and fields of a dialog: what they select, take and tell.

#include "Conformance.h"

namespace {

void Type(HWND edit, const WCHAR* text) {
    for (; *text != 0; ++text)
        SendMessageW(edit, WM_CHAR, *text, 1);
}

class ListsTest : public DialogCase {
  protected:
    ListsTest() { Open(IDD_LISTS); }

    LRESULT Send(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(Item(id), message, wParam, lParam);
    }
    LRESULT SendText(int id, UINT message, WPARAM wParam, const WCHAR* text) const {
        return Send(id, message, wParam, reinterpret_cast<LPARAM>(text));
    }
    Text ShownIn(int id) const {
        WCHAR text[100] = {};
        GetWindowTextW(Item(id), text, ARRAYSIZE(text));
        return text;
    }

    // A list view of three rows with their numbers as data.
    void FillListView() const {
        LVCOLUMNW column = {};
        column.mask = LVCF_WIDTH;
        column.cx = 60;
        Send(IDC_LIST_VIEW, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
        for (int i = 0; i < 3; ++i) {
            WCHAR text[] = TEXT("row");
            LVITEMW item = {};
            item.mask = LVIF_TEXT | LVIF_PARAM | LVIF_STATE;
            item.iItem = i;
            item.pszText = text;
            item.lParam = 100 + i;
            EXPECT_EQ(Send(IDC_LIST_VIEW, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)), i);
        }
    }
    void SetState(int row, UINT state) const {
        LVITEMW item = {};
        item.state = state;
        item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        Send(IDC_LIST_VIEW, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
             reinterpret_cast<LPARAM>(&item));
    }
    LRESULT Selected() const {
        return Send(IDC_LIST_VIEW, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
    }
};

TEST_F(ListsTest, WhichEntryATextFinds) {
    const struct {
        UINT message;
        const WCHAR* text;
        WPARAM start;
        LRESULT found;
        const char* why;
    } cases[] = {
        {CB_SELECTSTRING, TEXT("al"), 0, 2, "the search begins behind the start"},
        {CB_SELECTSTRING, TEXT("AL"), static_cast<WPARAM>(-1), 0, "case doesn't count"},
        {CB_SELECTSTRING, TEXT("beta"), 1, 1, "it goes around"},
        {CB_SELECTSTRING, TEXT("betas"), 0, CB_ERR, "an entry must begin with it"},
        {CB_SELECTSTRING, TEXT(""), 0, CB_ERR, "an empty text finds nothing"},
        {CB_FINDSTRING, TEXT(""), static_cast<WPARAM>(-1), CB_ERR, "an empty text finds nothing"},
        {CB_FINDSTRINGEXACT, TEXT("ALP"), 0, 2, "only whole entries"},
        {CB_FINDSTRINGEXACT, TEXT(""), 0, CB_ERR, "an empty text finds nothing"},
    };
    for (const WCHAR* const entry : {TEXT("Alpha"), TEXT("Beta"), TEXT("Alp")}) {
        SendText(IDC_COMBO, CB_ADDSTRING, 0, entry);
        SendText(IDC_LIST_BOX, LB_ADDSTRING, 0, entry);
    }
    for (const auto& row : cases) {
        Send(IDC_COMBO, CB_SETCURSEL, static_cast<WPARAM>(-1));
        const LRESULT found = SendText(IDC_COMBO, row.message, row.start, row.text);
        EXPECT_EQ(found, row.found) << row.why;
        if (row.message == CB_SELECTSTRING) {
            EXPECT_EQ(Send(IDC_COMBO, CB_GETCURSEL), row.found) << row.why;
        }
    }
    EXPECT_EQ(SendText(IDC_LIST_BOX, LB_SELECTSTRING, 0, TEXT("")), LB_ERR);
}

// What a drop-down list tells its dialog, and whether the list is open then.
TEST_F(ListsTest, ADropDownListTellsOfItsOpeningAndClosing) {
    using Told = std::vector<std::pair<int, bool>>;
    const struct {
        const char* what;
        std::function<void(HWND)> close;
        int end;
    } cases[] = {
        {"Enter", [](HWND combo) { SendMessageW(combo, WM_KEYDOWN, VK_RETURN, 0); }, CBN_SELENDOK},
        {"Escape", [](HWND combo) { SendMessageW(combo, WM_KEYDOWN, VK_ESCAPE, 0); },
         CBN_SELENDCANCEL},
        {"the program", [](HWND combo) { SendMessageW(combo, CB_SHOWDROPDOWN, FALSE, 0); },
         CBN_SELENDCANCEL},
    };
    ShowWindow(dialog, SW_SHOW);
    SendText(IDC_COMBO, CB_ADDSTRING, 0, TEXT("Alpha"));
    SendText(IDC_COMBO, CB_ADDSTRING, 0, TEXT("Beta"));
    SetFocus(Item(IDC_COMBO));
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        Told told;
        on = [&](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> INT_PTR {
            const HWND combo = Item(IDC_COMBO);
            if (message == WM_COMMAND && reinterpret_cast<HWND>(lParam) == combo)
                told.emplace_back(HIWORD(wParam),
                                  SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != 0);
            return FALSE;
        };
        Send(IDC_COMBO, CB_SHOWDROPDOWN, TRUE);
        Send(IDC_COMBO, CB_SHOWDROPDOWN, TRUE);
        Send(IDC_COMBO, CB_SETCURSEL, 1);
        row.close(Item(IDC_COMBO));
        row.close(Item(IDC_COMBO));
        on = nullptr;
        EXPECT_EQ(told, (Told{{CBN_DROPDOWN, false}, {row.end, true}, {CBN_CLOSEUP, false}}));
        EXPECT_EQ(Send(IDC_COMBO, CB_GETCURSEL), 1);
    }
}

TEST_F(ListsTest, AListViewSelectsOneRow) {
    FillListView();
    EXPECT_EQ(Selected(), -1) << "no row is selected by itself";
    SetState(0, LVIS_SELECTED | LVIS_FOCUSED);
    SetState(2, LVIS_SELECTED | LVIS_FOCUSED);
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(Send(IDC_LIST_VIEW, LVM_GETSELECTEDCOUNT), 1);
    EXPECT_EQ(Send(IDC_LIST_VIEW, LVM_GETITEMSTATE, 0, LVIS_SELECTED | LVIS_FOCUSED), 0)
        << "a row has the focus alone";
    SetFocus(Item(IDC_LIST_VIEW));
    SetFocus(Item(IDC_TEXT));
    EXPECT_EQ(Selected(), 2) << "the selection stays without the focus";

    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.iItem = 2;
    EXPECT_TRUE(Send(IDC_LIST_VIEW, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    EXPECT_EQ(item.lParam, 102);
    item.iItem = 3;
    EXPECT_FALSE(Send(IDC_LIST_VIEW, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)));

    // The rows that follow are as if there had been none before.
    EXPECT_TRUE(Send(IDC_LIST_VIEW, LVM_DELETEALLITEMS));
    EXPECT_EQ(Selected(), -1);
    FillListView();
    EXPECT_EQ(Selected(), -1);
    EXPECT_EQ(Send(IDC_LIST_VIEW, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED), -1);
}

TEST_F(ListsTest, WhatAnEditTakes) {
    const struct {
        const char* why;
        int id;
        std::function<void(HWND)> enter;
        Text text;
    } cases[] = {
        {"digits alone are typed into a number", IDC_NUMBER,
         [](HWND edit) { Type(edit, TEXT("1a-2.3")); }, TEXT("123")},
        {"anything can replace its selection", IDC_NUMBER,
         [](HWND edit) {
             SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(TEXT("x1")));
         },
         TEXT("x1")},
        {"the limit stops the typing", IDC_TEXT, [](HWND edit) { Type(edit, TEXT("abcdefg")); },
         TEXT("abcde")},
        {"the limit cuts what replaces the selection", IDC_TEXT,
         [](HWND edit) {
             SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(TEXT("abcdefg")));
         },
         TEXT("abcde")},
        {"the limit doesn't hold for a text that is set", IDC_TEXT,
         [](HWND edit) { SetWindowTextW(edit, TEXT("abcdefg")); }, TEXT("abcdefg")},
    };
    for (const auto& row : cases) {
        SetWindowTextW(Item(row.id), TEXT(""));
        Send(row.id, EM_SETLIMITTEXT, 5);
        row.enter(Item(row.id));
        EXPECT_EQ(ShownIn(row.id), row.text) << row.why;
    }
}

}  // namespace
