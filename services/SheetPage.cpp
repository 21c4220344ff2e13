#include "SheetPage.h"

#include "WaitCursor.h"

void SheetPage::OnPosted(UINT, WPARAM, LPARAM) {}

INT_PTR HandlePageMessage(PageWindowTable& table, HWND window, UINT message, WPARAM wParam,
                          LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const WaitCursor wait;
        const auto* sheetPage = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
        auto* page = reinterpret_cast<SheetPage*>(sheetPage->lParam);
        page->m_window = window;
        RegisterPageWindow(table, window, page);
        page->OnStart();
        return TRUE;
    }
    auto* page = static_cast<SheetPage*>(FindPageObject(table, window));
    if (message == WM_NOTIFY)
        return page ? page->OnNotify(*reinterpret_cast<const NMHDR*>(lParam)) : 0;
    if (message == WM_COMMAND) {
        if (page) page->OnCommand(LOWORD(wParam), HIWORD(wParam));
        return 0;
    }
    if (page && message >= WM_APP) {
        page->OnPosted(message, wParam, lParam);
        return TRUE;
    }
    // The backgrounds of controls are left to the sheet, whose theme they have to match.
    if (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) return 0;
    return DefWindowProcW(window, message, wParam, lParam);
}

UINT ReleaseSheetPage(PageWindowTable& table, UINT code, PROPSHEETPAGEW* sheetPage) {
    if (code != PSPCB_RELEASE || !sheetPage->lParam) return 1;
    auto* page = reinterpret_cast<SheetPage*>(sheetPage->lParam);
    sheetPage->lParam = 0;
    RemovePageWindow(table, page->Window());
    delete page;
    return 1;
}
