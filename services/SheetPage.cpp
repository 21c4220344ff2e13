#include "SheetPage.h"

#include "WaitCursor.h"

INT_PTR SheetPage::OnNotify(const NMHDR&) {
    return 0;
}

void SheetPage::OnPosted(UINT, WPARAM, LPARAM) {}

bool PageHandler::Start(HWND window) {
    const WaitCursor wait;
    m_page.m_window = window;
    m_page.m_isStarted = m_page.OnStart();
    return m_page.m_isStarted;
}

INT_PTR PageHandler::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    if (!m_page.m_isStarted) return FALSE;
    switch (message) {
        case WM_NOTIFY:
            return m_page.OnNotify(*reinterpret_cast<const NMHDR*>(lParam));
        case WM_COMMAND:
            m_page.OnCommand(LOWORD(wParam), HIWORD(wParam));
            return FALSE;
        default:
            m_page.OnPosted(message, wParam, lParam);
            return TRUE;
    }
}

bool IsForWindowClass(UINT message) {
    // The backgrounds of controls are left to the sheet, whose theme they have to match.
    return message < WM_CTLCOLORMSGBOX || message > WM_CTLCOLORSTATIC;
}
