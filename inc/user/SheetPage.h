#pragma once
// The base of all tabs: a page object that is found by its dialog window, gets the dialog's
// messages, and is freed when the sheet releases the page. The sheet's thread.
//
// A message box or a modal dialog of a handler runs a message loop, which also delivers what closes
// the sheet. A page that is released meanwhile lives until its handler returns.

#include <windows.h>
#include <prsht.h>

#include "LibraryState.h"
#include "PageWindowTable.h"

class SheetPage {
  public:
    SheetPage() = default;
    virtual ~SheetPage() = default;
    SheetPage(const SheetPage&) = delete;
    SheetPage& operator=(const SheetPage&) = delete;

    HWND Window() const { return m_window; }
    // A control of the dialog; null when it has none of that id.
    HWND Control(int id) const { return GetDlgItem(m_window, id); }

  protected:
    // The dialog is there, with all its controls. False: the tab can't work. It gets no commands or
    // posted messages then, and the sheet may do with it as it likes.
    virtual bool OnStart() = 0;
    // A WM_NOTIFY: the sheet's PSN_... or a control's notification. The dialog procedure's answer.
    virtual INT_PTR OnNotify(const NMHDR& header);
    virtual void OnCommand(WORD control, WORD notification) = 0;
    // A message of WM_APP and above, which the page has posted to itself.
    virtual void OnPosted(UINT message, WPARAM wParam, LPARAM lParam);

    // The sheet has released the page while the running handler had a box or a dialog up. The
    // window is gone.
    bool IsReleased() const { return m_isReleased; }
    // For OnNotify: what the sheet gets as the result of its notification.
    INT_PTR Answer(LONG_PTR result) const {
        SetWindowLongPtrW(m_window, DWLP_MSGRESULT, result);
        return TRUE;
    }

  private:
    friend class PageHandler;
    HWND m_window = nullptr;
    bool m_isStarted = false;
    bool m_isReleased = false;
    int m_handlers = 0;  // at work, one inside the other
};

// Keeps a page for as long as one of its handlers is at work.
class PageHandler {
  public:
    explicit PageHandler(SheetPage& page) : m_page(page) { ++m_page.m_handlers; }
    ~PageHandler() {
        if (--m_page.m_handlers == 0 && m_page.m_isReleased) delete &m_page;
    }
    PageHandler(const PageHandler&) = delete;
    PageHandler& operator=(const PageHandler&) = delete;

    // WM_INITDIALOG.
    bool Start(HWND window);
    // WM_NOTIFY, WM_COMMAND and the page's own messages.
    INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
    void Release() { m_page.m_isReleased = true; }

  private:
    SheetPage& m_page;
};

// One control's command. A tab or dialog has a table of them.
template <class Object>
struct ControlCommand {
    int control;
    WORD notification;  // BN_CLICKED, ...
    void (Object::*handler)();
};
// Runs the row of that control and notification. False when there is none.
template <class Object, size_t N>
bool RunCommand(const ControlCommand<Object> (&commands)[N], Object& object, WORD control,
                WORD notification) {
    for (const auto& row : commands) {
        if (row.control != control || row.notification != notification) continue;
        (object.*row.handler)();
        return true;
    }
    return false;
}

// Where the object of a dialog window is kept: in a table of the library,
template <PageWindowTable LibraryState::*pages>
struct InPageTable {
    static void Register(HWND window, void* page) {
        RegisterPageWindow(Library().*pages, window, page);
    }
    static void* Find(HWND window) { return FindPageObject(Library().*pages, window); }
    static void Remove(HWND window) { RemovePageWindow(Library().*pages, window); }
    static constexpr bool answersOthers = true;
};
// or in the window itself, which also answers no messages but its own.
struct InWindow {
    static void Register(HWND window, void* page) {
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(page));
    }
    static void* Find(HWND window) {
        return reinterpret_cast<void*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    }
    static void Remove(HWND) {}
    static constexpr bool answersOthers = false;
};

// Whether a message that isn't the page's own is for the window's class to answer.
bool IsForWindowClass(UINT message);

// A tab's dialog procedure and release callback. The page object is the page's lParam.
struct PageProcedures {
    DLGPROC dialog;
    LPFNPSPCALLBACKW release;
};

template <class Place>
INT_PTR CALLBACK PageDialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const auto* sheetPage = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
        auto* page = reinterpret_cast<SheetPage*>(sheetPage->lParam);
        Place::Register(window, page);
        return PageHandler(*page).Start(window);
    }
    if (message == WM_NOTIFY || message == WM_COMMAND || message >= WM_APP) {
        auto* page = static_cast<SheetPage*>(Place::Find(window));
        return page ? PageHandler(*page).Dispatch(message, wParam, lParam) : FALSE;
    }
    if (!Place::answersOthers || !IsForWindowClass(message)) return FALSE;
    return DefWindowProcW(window, message, wParam, lParam);
}

template <class Place>
UINT CALLBACK ReleasePage(HWND, UINT code, PROPSHEETPAGEW* sheetPage) {
    if (code != PSPCB_RELEASE || !sheetPage->lParam) return 1;
    auto* page = reinterpret_cast<SheetPage*>(sheetPage->lParam);
    sheetPage->lParam = 0;
    Place::Remove(page->Window());
    PageHandler(*page).Release();
    return 1;
}

template <class Place>
inline constexpr PageProcedures kPageProcedures = {&PageDialogProc<Place>, &ReleasePage<Place>};
