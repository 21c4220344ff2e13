// Modal dialogs: what they do with their owner, with keys, and with the focus.

#include "Conformance.h"

namespace {

class ModalDialogTest : public DialogCase {
  protected:
    ModalDialogTest() {
        owner = Open(IDD_BUTTONS);
        ShowWindow(owner, SW_SHOW);
    }

    // Shows a dialog over another window. step is called when its loop runs, and with each WM_APP
    // that is posted to it.
    INT_PTR Show(int id, HWND over, std::function<void(HWND)> step) {
        const auto outer = on;
        on = [&, step, window = HWND()](HWND target, UINT message, WPARAM wParam,
                                        LPARAM) mutable -> INT_PTR {
            if (message == WM_INITDIALOG) {
                window = target;
                PostMessageW(window, WM_APP, 0, 0);
                return TRUE;
            }
            if (target != window) return FALSE;
            if (message == WM_APP) step(window);
            if (message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED && onCommand)
                onCommand(window, LOWORD(wParam));
            return FALSE;
        };
        const INT_PTR result = ShowModal(id, over);
        on = outer;
        return result;
    }

    HWND owner = nullptr;
    std::function<void(HWND, int id)> onCommand;
};

TEST_F(ModalDialogTest, TheOwnerIsDisabledUntilTheDialogEnds) {
    HWND modal = nullptr;
    const INT_PTR result = Show(IDD_MODAL, owner, [&](HWND window) {
        modal = window;
        EXPECT_FALSE(IsWindowEnabled(owner));
        EXPECT_EQ(GetWindow(window, GW_OWNER), owner);
        EXPECT_TRUE(EndDialog(window, 1050));
        EXPECT_TRUE(IsWindow(window)) << "it goes once its loop is left";
    });
    EXPECT_EQ(result, 1050);
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_FALSE(IsWindow(modal));
}

TEST_F(ModalDialogTest, WhatAKeyPresses) {
    const struct {
        const char* what;
        int dialog;
        WPARAM key;
        int focus;
        int command;
    } cases[] = {
        {"Escape is Cancel, with or without such a button", IDD_MODAL, VK_ESCAPE, IDC_TEXT,
         IDCANCEL},
        {"Enter is OK without a default button", IDD_MODAL, VK_RETURN, IDC_TEXT, IDOK},
        {"Enter presses the default button", IDD_MODAL_DEFAULT, VK_RETURN, IDC_TEXT, IDC_ACCEPT},
        {"Escape isn't a button's own", IDD_MODAL_DEFAULT, VK_ESCAPE, IDC_REJECT, IDCANCEL},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        std::vector<int> commands;
        onCommand = [&](HWND window, int id) {
            commands.push_back(id);
            EndDialog(window, id);
        };
        const INT_PTR result = Show(row.dialog, owner, [&](HWND window) {
            SetFocus(GetDlgItem(window, row.focus));
            PostMessageW(GetDlgItem(window, row.focus), WM_KEYDOWN, row.key, 0);
        });
        EXPECT_EQ(commands, std::vector<int>{row.command});
        EXPECT_EQ(result, row.command);
    }
}

// As a dialog that refuses what was typed: something modal tells why, then the field has the focus.
TEST_F(ModalDialogTest, TheFocusStaysWhereItWasPutBehindANestedDialog) {
    int refused = 0;
    onCommand = [&](HWND window, int id) {
        if (id != IDC_ACCEPT || ++refused > 1) return;
        EXPECT_EQ(Show(IDD_MODAL_DEFAULT, window,
                       [&](HWND nested) {
                           EXPECT_FALSE(IsWindowEnabled(window));
                           EXPECT_FALSE(IsWindowEnabled(owner));
                           EndDialog(nested, 7);
                       }),
                  7);
        EXPECT_TRUE(IsWindowEnabled(window));
        EXPECT_FALSE(IsWindowEnabled(owner)) << "it belongs to the outer dialog";
        EXPECT_EQ(GetFocus(), GetDlgItem(window, IDC_ACCEPT)) << "as before";
        SetFocus(GetDlgItem(window, IDC_NUMBER));
    };
    const INT_PTR result = Show(IDD_MODAL, owner, [&](HWND window) {
        EXPECT_EQ(GetFocus(), GetDlgItem(window, IDC_TEXT)) << "the first that takes it";
        SendMessageW(GetDlgItem(window, IDC_ACCEPT), BM_CLICK, 0, 0);
        EXPECT_EQ(GetFocus(), GetDlgItem(window, IDC_NUMBER));
        EndDialog(window, 5);
    });
    EXPECT_EQ(result, 5);
    EXPECT_EQ(refused, 1);
}

}  // namespace
