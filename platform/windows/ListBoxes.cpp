// The ListBox class.

#include "Desktop.h"
#include "StringList.h"

namespace platform {
namespace {

class ListBox : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::optional<LRESULT> FailureOf(UINT message) const override;

  private:
    bool IsMultiple() const { return (style & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0; }
    LRESULT SelectOnly(LONG_PTR index);
    LRESULT Selected() const;

    StringList m_list;
};

LRESULT ListBox::SelectOnly(LONG_PTR index) {
    for (StringList::Entry& entry : m_list.entries)
        entry.selected = false;
    if (!m_list.Has(index)) return LB_ERR;
    m_list[index].selected = true;
    return index;
}

LRESULT ListBox::Selected() const {
    for (int i = 0; i < m_list.Count(); ++i) {
        if (m_list[i].selected) return i;
    }
    return LB_ERR;
}

std::optional<LRESULT> ListBox::FailureOf(UINT message) const {
    if (message == LB_ADDSTRING || message == LB_INSERTSTRING) return LB_ERRSPACE;
    return std::nullopt;
}

LRESULT ListBox::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const int index = static_cast<int>(wParam);
    const auto* given = reinterpret_cast<const char16_t*>(lParam);
    switch (message) {
        case LB_ADDSTRING:
            return m_list.Insert(given, HasStyle(LBS_SORT), std::nullopt);
        case LB_INSERTSTRING:
            return m_list.Insert(given, false, index);
        case LB_DELETESTRING:
            if (!m_list.Has(index)) return LB_ERR;
            m_list.entries.erase(m_list.entries.begin() + index);
            return m_list.Count();
        case LB_RESETCONTENT:
            m_list.entries.clear();
            return 0;
        case LB_GETCOUNT:
            return m_list.Count();
        case LB_GETTEXT:
            return m_list.Copy(index, reinterpret_cast<char16_t*>(lParam));
        case LB_GETTEXTLEN:
            return m_list.Has(index) ? static_cast<LRESULT>(m_list[index].text.size()) : LB_ERR;
        case LB_SETCURSEL:
            return IsMultiple() ? LB_ERR : SelectOnly(index);
        case LB_GETCURSEL:
            return Selected();
        case LB_SETSEL:
            if (!IsMultiple() || !m_list.Has(static_cast<int>(lParam))) return LB_ERR;
            m_list[static_cast<int>(lParam)].selected = wParam != 0;
            return 0;
        case LB_GETSEL:
            return m_list.Has(index) ? m_list[index].selected : LB_ERR;
        case LB_FINDSTRING:
            return m_list.Find(given, index, false);
        case LB_FINDSTRINGEXACT:
            return m_list.Find(given, index, true);
        case LB_SELECTSTRING: {
            const int found = m_list.Find(given, index, false);
            return found < 0 ? LB_ERR : SelectOnly(found);
        }
        case LB_GETITEMDATA:
            return m_list.Has(index) ? m_list[index].data : LB_ERR;
        case LB_SETITEMDATA:
            if (!m_list.Has(index)) return LB_ERR;
            m_list[index].data = lParam;
            return 0;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddListBoxClass(Desktop& desktop) {
    desktop.AddClass(u"ListBox", [] { return std::shared_ptr<Window>(new ListBox); });
}

}  // namespace platform
