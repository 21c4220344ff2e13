// The ComboBox class. Its list isn't a window of its own.

#include "Desktop.h"
#include "StringList.h"

namespace platform {
namespace {

class ComboBox : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::optional<LRESULT> FailureOf(UINT message) const override;

  private:
    bool CanDrop() const { return (style & CBS_DROPDOWNLIST) != CBS_SIMPLE; }
    bool IsListOnly() const { return (style & CBS_DROPDOWNLIST) == CBS_DROPDOWNLIST; }
    LRESULT Select(LONG_PTR index);
    void DropDown();
    void CloseUp(bool accept);
    bool OnKey(WPARAM key);

    StringList m_list;
    int m_selected = CB_ERR;
    bool m_dropped = false;
};

// The text of the window is that of the selected entry.
LRESULT ComboBox::Select(LONG_PTR index) {
    m_selected = m_list.Has(index) ? static_cast<int>(index) : CB_ERR;
    text = m_selected == CB_ERR ? std::u16string() : m_list[m_selected].text;
    return m_selected;
}

void ComboBox::DropDown() {
    if (m_dropped || !CanDrop()) return;
    Command(CBN_DROPDOWN);
    m_dropped = true;
}

// The list is hidden between the two.
void ComboBox::CloseUp(bool accept) {
    if (!m_dropped) return;
    Command(accept ? CBN_SELENDOK : CBN_SELENDCANCEL);
    m_dropped = false;
    Command(CBN_CLOSEUP);
}

bool ComboBox::OnKey(WPARAM key) {
    if (!m_dropped || (key != VK_RETURN && key != VK_ESCAPE)) return false;
    CloseUp(key == VK_RETURN);
    return true;
}

std::optional<LRESULT> ComboBox::FailureOf(UINT message) const {
    if (message == CB_ADDSTRING || message == CB_INSERTSTRING) return CB_ERRSPACE;
    return std::nullopt;
}

LRESULT ComboBox::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const int index = static_cast<int>(wParam);
    const auto* given = reinterpret_cast<const char16_t*>(lParam);
    switch (message) {
        case CB_ADDSTRING:
        case CB_INSERTSTRING: {
            const bool add = message == CB_ADDSTRING;
            const int at = m_list.Insert(given, add && HasStyle(CBS_SORT),
                                         add ? std::nullopt : std::optional<int>(index));
            if (at >= 0 && at <= m_selected) ++m_selected;
            return at;
        }
        case CB_DELETESTRING:
            if (!m_list.Has(index)) return CB_ERR;
            m_list.entries.erase(m_list.entries.begin() + index);
            if (index == m_selected)
                Select(CB_ERR);
            else if (index < m_selected)
                --m_selected;
            return m_list.Count();
        case CB_RESETCONTENT:
            m_list.entries.clear();
            Select(CB_ERR);
            return CB_OKAY;
        case CB_GETCOUNT:
            return m_list.Count();
        case CB_GETLBTEXT:
            return m_list.Copy(index, reinterpret_cast<char16_t*>(lParam));
        case CB_GETLBTEXTLEN:
            return m_list.Has(index) ? static_cast<LRESULT>(m_list[index].text.size()) : CB_ERR;
        case CB_SETCURSEL:
            return Select(index);
        case CB_GETCURSEL:
            return m_selected;
        case CB_FINDSTRING:
            return m_list.Find(given, index, false);
        case CB_FINDSTRINGEXACT:
            return m_list.Find(given, index, true);
        case CB_SELECTSTRING: {
            const int found = m_list.Find(given, index, false);
            return found < 0 ? CB_ERR : Select(found);
        }
        case CB_GETITEMDATA:
            return m_list.Has(index) ? m_list[index].data : CB_ERR;
        case CB_SETITEMDATA:
            if (!m_list.Has(index)) return CB_ERR;
            m_list[index].data = lParam;
            return CB_OKAY;
        case CB_SHOWDROPDOWN:
            wParam != 0 ? DropDown() : CloseUp(false);
            return TRUE;
        case WM_GETDLGCODE:
            return m_dropped && (wParam == VK_RETURN || wParam == VK_ESCAPE) ? DLGC_WANTMESSAGE : 0;
        case WM_KEYDOWN:
            return OnKey(wParam) ? TRUE : Window::OnMessage(message, wParam, lParam);
        case CB_GETDROPPEDSTATE:
            return m_dropped;
        case WM_SETTEXT:
            return IsListOnly() ? CB_ERR : Window::OnMessage(message, wParam, lParam);
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddComboBoxClass(Desktop& desktop) {
    desktop.AddClass(u"ComboBox", [] { return std::shared_ptr<Window>(new ComboBox); });
}

}  // namespace platform
