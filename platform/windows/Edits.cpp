// The Edit class.

#include <algorithm>

#include "Desktop.h"

namespace platform {
namespace {

constexpr std::size_t kSingleLineLimit = 0x7FFFFFFE;
constexpr char16_t kBackspace = 8;

class Edit : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void Select(LONG_PTR start, LONG_PTR end);
    void Replace(std::u16string_view with);
    void Type(char16_t unit);

    std::size_t m_start = 0;  // of the selection
    std::size_t m_end = 0;
    std::size_t m_limit = kSingleLineLimit;
    bool m_modified = false;
};

void Edit::Select(LONG_PTR start, LONG_PTR end) {
    const auto length = static_cast<LONG_PTR>(text.size());
    if (start < 0) {
        m_start = m_end;
        return;
    }
    if (end < 0) end = length;
    m_start = static_cast<std::size_t>(std::clamp<LONG_PTR>(std::min(start, end), 0, length));
    m_end = static_cast<std::size_t>(std::clamp<LONG_PTR>(std::max(start, end), 0, length));
}

// What doesn't fit below the limit is cut off, and the parent told so.
void Edit::Replace(std::u16string_view with) {
    const std::size_t kept = text.size() - (m_end - m_start);
    const std::size_t room = m_limit > kept ? m_limit - kept : 0;
    const bool tooMuch = with.size() > room;
    with = with.substr(0, room);
    text.replace(m_start, m_end - m_start, with);
    m_start = m_end = m_start + with.size();
    m_modified = true;
    if (tooMuch) Command(EN_MAXTEXT);
    Command(EN_CHANGE);
}

void Edit::Type(char16_t unit) {
    if (HasStyle(ES_READONLY)) return;
    if (unit == kBackspace) {
        if (m_start == m_end && m_start > 0) --m_start;
        return Replace({});
    }
    if (unit < u' ' && !HasStyle(ES_MULTILINE)) return;
    if (HasStyle(ES_NUMBER) && (unit < u'0' || unit > u'9')) return;
    Replace({&unit, 1});
}

LRESULT Edit::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETTEXT:
            Window::OnMessage(message, wParam, lParam);
            m_start = m_end = 0;
            m_modified = false;
            if (!HasStyle(ES_MULTILINE)) Command(EN_CHANGE);
            return TRUE;
        case WM_CHAR:
            Type(static_cast<char16_t>(wParam));
            return 0;
        case EM_SETSEL:
            Select(static_cast<int>(wParam), static_cast<int>(lParam));
            return 0;
        case EM_GETSEL:
            if (wParam) *reinterpret_cast<DWORD*>(wParam) = static_cast<DWORD>(m_start);
            if (lParam) *reinterpret_cast<DWORD*>(lParam) = static_cast<DWORD>(m_end);
            return MAKELONG(m_start, m_end);
        case EM_REPLACESEL: {
            const auto* with = reinterpret_cast<const char16_t*>(lParam);
            Replace(with ? std::u16string_view(with) : std::u16string_view());
            return 0;
        }
        case EM_LIMITTEXT:
            m_limit = wParam == 0 ? kSingleLineLimit : static_cast<std::size_t>(wParam);
            return 0;
        case EM_GETLIMITTEXT:
            return static_cast<LRESULT>(m_limit);
        case EM_SETREADONLY:
            style = wParam ? style | ES_READONLY : style & ~static_cast<DWORD>(ES_READONLY);
            return TRUE;
        case EM_GETMODIFY:
            return m_modified;
        case EM_SETMODIFY:
            m_modified = wParam != 0;
            return 0;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddEditClass(Desktop& desktop) {
    desktop.AddClass(u"Edit", [] { return std::shared_ptr<Window>(new Edit); });
}

}  // namespace platform
