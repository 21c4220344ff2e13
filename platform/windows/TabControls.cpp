// The SysTabControl32 class, as far as a property sheet and who reads it need it.

#include <commctrl.h>

#include "Desktop.h"

namespace platform {
namespace {

class TabControl : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    struct Tab {
        std::u16string text;
        LPARAM data = 0;
    };
    bool Has(int index) const { return index >= 0 && index < static_cast<int>(m_tabs.size()); }
    void Delete(int index);

    std::vector<Tab> m_tabs;
    int m_selected = -1;
};

void TabControl::Delete(int index) {
    m_tabs.erase(m_tabs.begin() + index);
    if (index == m_selected)
        m_selected = -1;
    else if (index < m_selected)
        --m_selected;
}

LRESULT TabControl::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const int index = static_cast<int>(wParam);
    switch (message) {
        case TCM_GETITEMCOUNT:
            return static_cast<LRESULT>(m_tabs.size());
        case TCM_GETCURSEL:
            return m_selected;
        case TCM_SETCURSEL:
            if (!Has(index)) return -1;
            return std::exchange(m_selected, index);
        case TCM_INSERTITEMW: {
            if (index < 0) return -1;
            const auto at = std::min(static_cast<std::size_t>(index), m_tabs.size());
            m_tabs.emplace(m_tabs.begin() + static_cast<std::ptrdiff_t>(at));
            if (m_selected < 0)
                m_selected = 0;
            else if (static_cast<int>(at) <= m_selected)
                ++m_selected;
            OnMessage(TCM_SETITEMW, at, lParam);
            return static_cast<LRESULT>(at);
        }
        case TCM_SETITEMW: {
            if (!Has(index)) return FALSE;
            Tab& tab = m_tabs[static_cast<std::size_t>(index)];
            const auto& item = *reinterpret_cast<const TCITEMW*>(lParam);
            if ((item.mask & TCIF_TEXT) != 0 && item.pszText) tab.text = item.pszText;
            if ((item.mask & TCIF_PARAM) != 0) tab.data = item.lParam;
            return TRUE;
        }
        case TCM_GETITEMW: {
            if (!Has(index)) return FALSE;
            const Tab& tab = m_tabs[static_cast<std::size_t>(index)];
            auto& item = *reinterpret_cast<TCITEMW*>(lParam);
            if ((item.mask & TCIF_TEXT) != 0) CopyText(tab.text, item.pszText, item.cchTextMax);
            if ((item.mask & TCIF_PARAM) != 0) item.lParam = tab.data;
            return TRUE;
        }
        case TCM_DELETEITEM:
            if (!Has(index)) return FALSE;
            Delete(index);
            return TRUE;
        case TCM_DELETEALLITEMS:
            m_tabs.clear();
            m_selected = -1;
            return TRUE;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddTabControlClass(Desktop& desktop) {
    desktop.AddClass(u"SysTabControl32", [] { return std::shared_ptr<Window>(new TabControl); });
}

}  // namespace platform
