#pragma once
// What the tabs with a PageWindowTable have in common: their object is found by its window, gets
// the dialog's messages, and is freed when the sheet releases the page. The sheet's thread.

#include <windows.h>
#include <prsht.h>

#include "PageWindowTable.h"

class SheetPage {
  public:
    SheetPage() = default;
    virtual ~SheetPage() = default;
    SheetPage(const SheetPage&) = delete;
    SheetPage& operator=(const SheetPage&) = delete;

    HWND Window() const { return m_window; }

    // The dialog is there, with all its controls.
    virtual void OnStart() = 0;
    // A WM_NOTIFY: the sheet's PSN_... or a control's notification. The dialog's answer.
    virtual INT_PTR OnNotify(const NMHDR& header) = 0;
    virtual void OnCommand(WORD control, WORD notification) = 0;
    // A message of WM_APP and above, which the page has posted to itself.
    virtual void OnPosted(UINT message, WPARAM wParam, LPARAM lParam);

  private:
    friend INT_PTR HandlePageMessage(PageWindowTable& table, HWND window, UINT message,
                                     WPARAM wParam, LPARAM lParam);
    HWND m_window = nullptr;
};

// The body of such a tab's dialog procedure. The page object is the page's lParam.
INT_PTR HandlePageMessage(PageWindowTable& table, HWND window, UINT message, WPARAM wParam,
                          LPARAM lParam);
// The body of its release callback: takes the page out of the table and frees it.
UINT ReleaseSheetPage(PageWindowTable& table, UINT code, PROPSHEETPAGEW* sheetPage);
