#include "SheetFrame.h"

#include <commctrl.h>
#include <algorithm>
#include <utility>

namespace platform {
namespace {

constexpr int kTabId = 0x3020;
constexpr int kApplyId = 0x3021;

// Layout, in pixels.
constexpr LONG kMargin = 6;
constexpr LONG kTabBorder = 4;
constexpr LONG kTabHeight = 24;
constexpr LONG kButtonWidth = 75;
constexpr LONG kButtonHeight = 23;

SheetPages& Pages() {
    return Machine::Current().Get<SheetPages>();
}

}  // namespace

SheetFrame::SheetFrame(const PROPSHEETHEADERW& header, const std::vector<HPROPSHEETPAGE>& pages)
    : m_flags(header.dwFlags) {
    for (const HPROPSHEETPAGE page : pages) {
        m_entries.push_back({page});
        const std::optional<DialogTemplate> dialog = Pages().Find(page)->Template();
        if (!dialog) continue;
        const RECT size = UnitsOf(*dialog).ToPixels(dialog->rect);
        m_pageSize.cx = std::max(m_pageSize.cx, size.right - size.left);
        m_pageSize.cy = std::max(m_pageSize.cy, size.bottom - size.top);
    }
}

RECT SheetFrame::PageRect() const {
    const LONG left = kMargin + kTabBorder;
    const LONG top = kMargin + kTabHeight;
    return {left, top, left + m_pageSize.cx, top + m_pageSize.cy};
}

SIZE SheetFrame::FrameSize() const {
    const RECT page = PageRect();
    return {page.right + kTabBorder + kMargin,
            page.bottom + kTabBorder + kButtonHeight + 2 * kMargin};
}

void SheetFrame::AddControls() {
    const RECT page = PageRect();
    Creation tabs;
    tabs.className = WC_TABCONTROLW;
    tabs.style = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    tabs.rect = {kMargin, kMargin, page.right + kTabBorder, page.bottom + kTabBorder};
    tabs.parent = handle;
    tabs.id = kTabId;
    m_tab = TheDesktop().Create(tabs);
    for (int i = 0; i < Count(); ++i) {
        std::u16string title = Pages().Find(m_entries[static_cast<std::size_t>(i)].page)->Title();
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = title.data();
        TheDesktop().Send(m_tab, TCM_INSERTITEMW, static_cast<WPARAM>(i),
                          reinterpret_cast<LPARAM>(&item));
    }
    AddButton(u"OK", IDOK, 0);
    AddButton(u"Cancel", IDCANCEL, 1);
    if ((m_flags & PSH_NOAPPLYNOW) != 0) return;
    AddButton(u"&Apply", kApplyId, 2);
    TheDesktop().Enable(TheDesktop().Item(handle, kApplyId), false);
}

void SheetFrame::AddButton(const char16_t* caption, int buttonId, int place) {
    Creation button;
    button.className = WC_BUTTONW;
    button.text = caption;
    button.style =
        WS_CHILD | WS_VISIBLE | WS_TABSTOP | (buttonId == IDOK ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON);
    const LONG left = kMargin + place * (kButtonWidth + kMargin);
    const LONG top = PageRect().bottom + kTabBorder + kMargin;
    button.rect = {left, top, left + kButtonWidth, top + kButtonHeight};
    button.parent = handle;
    button.id = buttonId;
    TheDesktop().Create(button);
}

HWND SheetFrame::ActivePage() {
    const Entry* entry = m_active < 0 ? nullptr : At(static_cast<WPARAM>(m_active));
    return entry ? entry->window : nullptr;
}

int SheetFrame::IndexOf(HPROPSHEETPAGE page) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const Entry& entry) { return entry.page == page; });
    return found == m_entries.end() ? -1 : static_cast<int>(found - m_entries.begin());
}

int SheetFrame::IndexOf(HWND window) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
        return window != nullptr && entry.window == window;
    });
    return found == m_entries.end() ? -1 : static_cast<int>(found - m_entries.begin());
}

int SheetFrame::IndexOfTemplate(LRESULT number) const {
    const auto* name = reinterpret_cast<const char16_t*>(number);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
        return Pages().Find(entry.page)->Data().pszTemplate == name;
    });
    return found == m_entries.end() ? -1 : static_cast<int>(found - m_entries.begin());
}

LRESULT SheetFrame::Tell(HWND page, UINT code, LPARAM parameter) const {
    PSHNOTIFY note = {{handle, 0, code}, parameter};
    return TheDesktop().Send(page, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&note));
}

// Makes the page's dialog unless it is there. False when the page or its template refuses.
bool SheetFrame::MakePage(int index) {
    const HPROPSHEETPAGE handleOfPage = m_entries[static_cast<std::size_t>(index)].page;
    if (m_entries[static_cast<std::size_t>(index)].window) return true;
    const std::shared_ptr<SheetPage> page = Pages().Find(handleOfPage);
    const std::optional<DialogTemplate> dialog = page->Template();
    if (!dialog || page->Call(nullptr, PSPCB_CREATE) == 0) return false;
    const PROPSHEETPAGEW& data = page->Data();
    const HWND window = CreateDialogFrom(*dialog, data.hInstance, handle, data.pfnDlgProc,
                                         reinterpret_cast<LPARAM>(&data));
    if (!window) return false;
    TheDesktop().Find(window)->rect = PageRect();
    index = IndexOf(handleOfPage);
    if (index >= 0) m_entries[static_cast<std::size_t>(index)].window = window;
    return index >= 0;
}

void SheetFrame::RemovePage(int index) {
    const Entry entry = m_entries[static_cast<std::size_t>(index)];
    m_entries.erase(m_entries.begin() + index);
    TheDesktop().Send(m_tab, TCM_DELETEITEM, static_cast<WPARAM>(index));
    if (m_active == index)
        m_active = -1;
    else if (m_active > index)
        --m_active;
    TheDesktop().Destroy(entry.window);
    Pages().Release(entry.page);
}

void SheetFrame::ShowActive() {
    const HWND active = ActivePage();
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        TheDesktop().Show(m_entries[i].window, m_entries[i].window == active);
}

bool SheetFrame::Enter(int index) {
    m_entering = true;
    // Each page can be asked once; one that can't be made is taken out of the sheet.
    for (int left = Count(); left > 0 && !m_entries.empty() && !Closed(); --left) {
        index = std::clamp(index, 0, Count() - 1);
        if (!MakePage(index)) {
            if (!Closed()) RemovePage(index);
            continue;
        }
        m_active = index;
        TheDesktop().Send(m_tab, TCM_SETCURSEL, static_cast<WPARAM>(index));
        const LRESULT answer = Tell(ActivePage(), PSN_SETACTIVE);
        const int other = answer == -1 ? index + 1 : IndexOfTemplate(answer);
        if (answer == 0 || other < 0 || other >= Count()) break;
        index = other;
    }
    m_entering = false;
    if (Closed() || m_active < 0) return false;
    ShowActive();
    return true;
}

// The change of tabs. As on Windows, the active page can be chosen anew, and is told so.
bool SheetFrame::Select(int index) {
    if (m_entering || index < 0 || index >= Count()) return false;
    if (Tell(ActivePage(), PSN_KILLACTIVE) != 0 || Closed()) return false;
    return Enter(index);
}

void SheetFrame::MarkChanged(HWND page, bool changed) {
    const int index = IndexOf(page);
    if (index < 0) return;
    m_entries[static_cast<std::size_t>(index)].changed = changed;
    const bool any = std::any_of(m_entries.begin(), m_entries.end(),
                                 [](const Entry& entry) { return entry.changed; });
    TheDesktop().Enable(TheDesktop().Item(handle, kApplyId), any);
}

// A page that refuses keeps the sheet open; the active page or, if it asks for it, that page
// becomes active again.
bool SheetFrame::Apply(bool closing) {
    if (Tell(ActivePage(), PSN_KILLACTIVE) != 0) return false;
    for (int i = 0; i < Count(); ++i) {
        const HWND page = m_entries[static_cast<std::size_t>(i)].window;
        if (!page) continue;
        const LRESULT answer = Tell(page, PSN_APPLY, closing);
        if (answer != PSNRET_INVALID && answer != PSNRET_INVALID_NOCHANGEPAGE) continue;
        Enter(answer == PSNRET_INVALID ? i : m_active);
        return false;
    }
    m_saved = true;
    if (closing) return true;
    Tell(ActivePage(), PSN_SETACTIVE);
    for (Entry& entry : m_entries)
        entry.changed = false;
    TheDesktop().Enable(TheDesktop().Item(handle, kApplyId), false);
    return true;
}

void SheetFrame::Ok() {
    if (Apply(true)) Close(1);
}

void SheetFrame::Cancel(bool byFrame) {
    if (Tell(ActivePage(), PSN_QUERYCANCEL) != 0) return;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].window) Tell(m_entries[i].window, PSN_RESET, byFrame);
    }
    Close(m_saved ? 1 : 0);
}

void SheetFrame::Close(INT_PTR result) {
    if (m_closed) return;
    m_closed = true;
    m_result = result;
    TheDesktop().Show(handle, false);
}

void SheetFrame::OnButton(int button) {
    if (m_closed) return;
    if (button == IDOK) Ok();
    if (button == IDCANCEL) Cancel(false);
    if (button == kApplyId) Apply(false);
}

void SheetFrame::Press(WPARAM button) {
    if (button == PSBTN_OK) OnButton(IDOK);
    if (button == PSBTN_CANCEL) OnButton(IDCANCEL);
    if (button == PSBTN_APPLYNOW) OnButton(kApplyId);
}

void SheetFrame::ReleasePages() {
    while (!m_entries.empty())
        RemovePage(0);
}

LRESULT SheetFrame::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            if (HIWORD(wParam) == BN_CLICKED) OnButton(LOWORD(wParam));
            return 0;
        case WM_CLOSE:
            if (!m_closed) Cancel(true);
            return 0;
        case WM_DESTROY:
            ReleasePages();
            return 0;
        case PSM_SETCURSEL:
            return Select(lParam ? IndexOf(reinterpret_cast<HPROPSHEETPAGE>(lParam))
                                 : static_cast<int>(wParam));
        case PSM_CHANGED:
            MarkChanged(reinterpret_cast<HWND>(wParam), true);
            return 0;
        case PSM_UNCHANGED:
            MarkChanged(reinterpret_cast<HWND>(wParam), false);
            return 0;
        case PSM_APPLY:
            return Apply(false);
        case PSM_PRESSBUTTON:
            Press(wParam);
            return 0;
        case PSM_GETTABCONTROL:
            return reinterpret_cast<LRESULT>(m_tab);
        case PSM_GETCURRENTPAGEHWND:
            return m_closed ? 0 : reinterpret_cast<LRESULT>(ActivePage());
        case PSM_HWNDTOINDEX:
            return IndexOf(reinterpret_cast<HWND>(wParam));
        case PSM_INDEXTOHWND:
            return At(wParam) ? reinterpret_cast<LRESULT>(At(wParam)->window) : 0;
        case PSM_ISDIALOGMESSAGE:
            return IsDialogMessageW(handle, reinterpret_cast<LPMSG>(lParam));
        case PSM_GETRESULT:
            return m_result;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace platform
