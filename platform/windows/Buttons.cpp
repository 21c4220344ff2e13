// The Button class: push buttons, check boxes, radio buttons and group boxes.

#include <algorithm>

#include "Desktop.h"

namespace platform {
namespace {

class Button : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    DWORD Type() const { return style & BS_TYPEMASK; }
    bool IsRadio() const { return Type() == BS_RADIOBUTTON || Type() == BS_AUTORADIOBUTTON; }
    int States() const;
    LRESULT DialogCode() const;
    void SetCheck(WPARAM state);
    void CheckWithinGroup();
    void Click();

    WPARAM m_check = BST_UNCHECKED;
    bool m_clicking = false;
};

// How many check states the button has; 1 when it can't be checked.
int Button::States() const {
    switch (Type()) {
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            return 2;
        case BS_3STATE:
        case BS_AUTO3STATE:
            return 3;
        default:
            return 1;
    }
}

LRESULT Button::DialogCode() const {
    if (Type() == BS_GROUPBOX) return DLGC_STATIC;
    if (Type() == BS_PUSHBUTTON) return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    if (Type() == BS_DEFPUSHBUTTON) return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    return DLGC_BUTTON | (IsRadio() ? DLGC_RADIOBUTTON : 0);
}

void Button::SetCheck(WPARAM state) {
    if (States() == 1) return;
    m_check = std::min<WPARAM>(state, static_cast<WPARAM>(States()) - 1);
    // The tabulator goes to the checked button of a group.
    if (!IsRadio()) return;
    style &= ~static_cast<DWORD>(WS_TABSTOP);
    if (m_check == BST_CHECKED) style |= WS_TABSTOP;
}

// A group runs from a control with WS_GROUP to before the next one. As on Windows, those of its
// buttons that are disabled or hidden keep their state.
void Button::CheckWithinGroup() {
    Desktop& desktop = TheDesktop();
    const std::shared_ptr<Window> dialog = desktop.Find(parent);
    if (!dialog) return SetCheck(BST_CHECKED);
    const std::vector<HWND> row = dialog->children;
    const auto startsGroup = [&](HWND control) {
        return desktop.Find(control)->HasStyle(WS_GROUP);
    };
    const auto self = std::find(row.begin(), row.end(), handle);
    auto first = self;
    while (first != row.begin() && !startsGroup(*first))
        --first;
    const auto last = std::find_if(self + 1, row.end(), startsGroup);
    for (auto member = first; member != last; ++member) {
        const std::shared_ptr<Window> control = desktop.Find(*member);
        const bool skipped = !control->IsEnabled() || !control->HasStyle(WS_VISIBLE);
        if (skipped && *member != handle) continue;
        if ((desktop.Send(*member, WM_GETDLGCODE) & DLGC_RADIOBUTTON) == 0) continue;
        desktop.Send(*member, BM_SETCHECK, *member == handle ? BST_CHECKED : BST_UNCHECKED);
    }
}

void Button::Click() {
    if (!IsEnabled() || Type() == BS_GROUPBOX || m_clicking) return;
    m_clicking = true;
    TheDesktop().SetFocus(handle);
    if (Type() == BS_AUTOCHECKBOX || Type() == BS_AUTO3STATE)
        SetCheck((m_check + 1) % static_cast<WPARAM>(States()));
    else if (Type() == BS_AUTORADIOBUTTON)
        CheckWithinGroup();
    m_clicking = false;
    Command(BN_CLICKED);
}

LRESULT Button::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case BM_CLICK:
            Click();
            return 0;
        case BM_GETCHECK:
            return static_cast<LRESULT>(m_check);
        case BM_SETCHECK:
            SetCheck(wParam);
            return 0;
        case BM_GETSTATE:
            return static_cast<LRESULT>(m_check) | (TheDesktop().Focus() == handle ? BST_FOCUS : 0);
        case BM_SETSTYLE:
            style = (style & ~static_cast<DWORD>(BS_TYPEMASK)) |
                    (static_cast<DWORD>(wParam) & BS_TYPEMASK);
            return 0;
        case WM_GETDLGCODE:
            return DialogCode();
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddButtonClass(Desktop& desktop) {
    desktop.AddClass(u"Button", [] { return std::shared_ptr<Window>(new Button); });
}

}  // namespace platform
