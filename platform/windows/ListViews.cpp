// The SysListView32 class in report view.

#include <commctrl.h>
#include <algorithm>

#include "Desktop.h"
#include "Text.h"

namespace platform {
namespace {

constexpr UINT kUnchecked = 0x1000;  // state image 1

class ListView : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::optional<LRESULT> FailureOf(UINT message) const override;

  private:
    struct Row {
        std::vector<std::u16string> texts;  // by column; may be shorter than the columns
        UINT state = 0;
        LPARAM data = 0;
    };
    struct Column {
        std::u16string text;
        int format = LVCFMT_LEFT;
        int width = 0;
        int subItem = 0;
    };

    bool Has(int index) const { return index >= 0 && index < static_cast<int>(m_rows.size()); }
    Row& At(int index) { return m_rows[static_cast<std::size_t>(index)]; }
    std::u16string_view Text(int index, int column) const;
    void SetText(int index, int column, const char16_t* given);
    int Place(const std::u16string& rowText, int wanted) const;
    bool Tell(UINT code, int index, UINT before, UINT after) const;

    LRESULT InsertColumn(int at, const LVCOLUMNW& given);
    LRESULT GetColumn(int index, LVCOLUMNW& wanted) const;
    LRESULT InsertItem(const LVITEMW& item);
    LRESULT GetItem(LVITEMW& item) const;
    LRESULT SetItem(const LVITEMW& item);
    LRESULT DeleteItem(int index);
    LRESULT DeleteAll();
    bool SetState(int index, UINT state, UINT mask);
    void TakeFromOther(int index, UINT which, UINT state);
    int NextItem(int after, UINT flags) const;
    LRESULT SetExtendedStyle(DWORD mask, DWORD given);

    std::vector<Column> m_columns;
    std::vector<Row> m_rows;
    DWORD m_extendedStyle = 0;
};

std::u16string_view ListView::Text(int index, int column) const {
    const Row& row = m_rows[static_cast<std::size_t>(index)];
    if (column < 0 || column >= static_cast<int>(row.texts.size())) return {};
    return row.texts[static_cast<std::size_t>(column)];
}

void ListView::SetText(int index, int column, const char16_t* given) {
    std::vector<std::u16string>& texts = At(index).texts;
    const auto place = static_cast<std::size_t>(column);
    if (texts.size() <= place) texts.resize(place + 1);
    texts[place] = given ? given : u"";
}

// Where a new row goes.
int ListView::Place(const std::u16string& rowText, int wanted) const {
    const int order = HasStyle(LVS_SORTASCENDING) ? 1 : HasStyle(LVS_SORTDESCENDING) ? -1 : 0;
    if (order == 0) return std::min(wanted, static_cast<int>(m_rows.size()));
    int place = 0;
    while (Has(place) && CompareNoCase(Text(place, 0), rowText) * order <= 0)
        ++place;
    return place;
}

// Tells the parent of a change of state; true: the parent refuses.
bool ListView::Tell(UINT code, int index, UINT before, UINT after) const {
    NMLISTVIEW note = {};
    note.iItem = index;
    note.uOldState = before;
    note.uNewState = after;
    note.uChanged = LVIF_STATE;
    note.lParam = m_rows[static_cast<std::size_t>(index)].data;
    return Notify(note.hdr, code) != 0;
}

LRESULT ListView::InsertColumn(int at, const LVCOLUMNW& given) {
    if (at < 0) return -1;
    Column column;
    if ((given.mask & LVCF_TEXT) != 0 && given.pszText) column.text = given.pszText;
    if ((given.mask & LVCF_FMT) != 0) column.format = given.fmt;
    if ((given.mask & LVCF_WIDTH) != 0) column.width = given.cx;
    if ((given.mask & LVCF_SUBITEM) != 0) column.subItem = given.iSubItem;
    at = std::min(at, static_cast<int>(m_columns.size()));
    m_columns.insert(m_columns.begin() + at, std::move(column));
    return at;
}

LRESULT ListView::GetColumn(int index, LVCOLUMNW& wanted) const {
    if (index < 0 || index >= static_cast<int>(m_columns.size())) return FALSE;
    const Column& column = m_columns[static_cast<std::size_t>(index)];
    if ((wanted.mask & LVCF_TEXT) != 0) CopyText(column.text, wanted.pszText, wanted.cchTextMax);
    if ((wanted.mask & LVCF_FMT) != 0) wanted.fmt = column.format;
    if ((wanted.mask & LVCF_WIDTH) != 0) wanted.cx = column.width;
    if ((wanted.mask & LVCF_SUBITEM) != 0) wanted.iSubItem = column.subItem;
    return TRUE;
}

LRESULT ListView::InsertItem(const LVITEMW& item) {
    if (item.iItem < 0 || item.iSubItem != 0) return -1;
    Row row;
    row.texts.emplace_back((item.mask & LVIF_TEXT) != 0 && item.pszText ? item.pszText : u"");
    if ((item.mask & LVIF_PARAM) != 0) row.data = item.lParam;
    const UINT state = (item.mask & LVIF_STATE) != 0 ? item.state : 0;
    const int index = Place(row.texts.front(), item.iItem);
    m_rows.insert(m_rows.begin() + index, std::move(row));

    NMLISTVIEW note = {};
    note.iItem = index;
    Notify(note.hdr, LVN_INSERTITEM);
    if (state != 0) SetState(index, state, ~0U);
    if ((m_extendedStyle & LVS_EX_CHECKBOXES) != 0 && (state & LVIS_STATEIMAGEMASK) == 0)
        SetState(index, kUnchecked, LVIS_STATEIMAGEMASK);
    return index;
}

LRESULT ListView::GetItem(LVITEMW& item) const {
    if (!Has(item.iItem)) return FALSE;
    const Row& row = m_rows[static_cast<std::size_t>(item.iItem)];
    if ((item.mask & LVIF_TEXT) != 0)
        CopyText(Text(item.iItem, item.iSubItem), item.pszText, item.cchTextMax);
    if ((item.mask & LVIF_PARAM) != 0) item.lParam = row.data;
    if ((item.mask & LVIF_STATE) != 0) item.state = row.state & item.stateMask;
    return TRUE;
}

LRESULT ListView::SetItem(const LVITEMW& item) {
    if (!Has(item.iItem) || item.iSubItem < 0) return FALSE;
    if ((item.mask & LVIF_TEXT) != 0) SetText(item.iItem, item.iSubItem, item.pszText);
    if ((item.mask & LVIF_PARAM) != 0) At(item.iItem).data = item.lParam;
    if ((item.mask & LVIF_STATE) != 0) SetState(item.iItem, item.state, item.stateMask);
    return TRUE;
}

LRESULT ListView::DeleteItem(int index) {
    if (!Has(index)) return FALSE;
    NMLISTVIEW note = {};
    note.iItem = index;
    note.lParam = At(index).data;
    Notify(note.hdr, LVN_DELETEITEM);
    if (Has(index)) m_rows.erase(m_rows.begin() + index);
    return TRUE;
}

LRESULT ListView::DeleteAll() {
    NMLISTVIEW note = {};
    note.iItem = -1;
    const bool allAtOnce = Notify(note.hdr, LVN_DELETEALLITEMS) != 0;
    if (allAtOnce) m_rows.clear();
    while (!m_rows.empty())
        DeleteItem(static_cast<int>(m_rows.size()) - 1);
    return TRUE;
}

// What only one row can have leaves the one that has it.
void ListView::TakeFromOther(int index, UINT which, UINT state) {
    const int other = NextItem(-1, which);
    if (other >= 0 && other != index) SetState(other, 0, state);
}

// index -1: all rows.
bool ListView::SetState(int index, UINT state, UINT mask) {
    if (index == -1) {
        for (int i = 0; Has(i); ++i)
            SetState(i, state, mask);
        return true;
    }
    if (!Has(index)) return false;
    const UINT set = state & mask;
    if (HasStyle(LVS_SINGLESEL) && (set & LVIS_SELECTED) != 0)
        TakeFromOther(index, LVNI_SELECTED, LVIS_SELECTED);
    if ((set & LVIS_FOCUSED) != 0) TakeFromOther(index, LVNI_FOCUSED, LVIS_FOCUSED);
    const UINT before = At(index).state;
    const UINT after = (before & ~mask) | (state & mask);
    if (before == after || Tell(LVN_ITEMCHANGING, index, before, after) || !Has(index)) return true;
    At(index).state = after;
    Tell(LVN_ITEMCHANGED, index, before, after);
    return true;
}

int ListView::NextItem(int after, UINT flags) const {
    for (int i = std::max(after, -1) + 1; Has(i); ++i) {
        const UINT state = m_rows[static_cast<std::size_t>(i)].state;
        if ((flags & LVNI_SELECTED) != 0 && (state & LVIS_SELECTED) == 0) continue;
        if ((flags & LVNI_FOCUSED) != 0 && (state & LVIS_FOCUSED) == 0) continue;
        return i;
    }
    return -1;
}

LRESULT ListView::SetExtendedStyle(DWORD mask, DWORD given) {
    if (mask == 0) mask = ~DWORD{0};
    const DWORD before = m_extendedStyle;
    m_extendedStyle = (before & ~mask) | (given & mask);
    if ((m_extendedStyle & ~before & LVS_EX_CHECKBOXES) != 0)
        SetState(-1, kUnchecked, LVIS_STATEIMAGEMASK);
    return before;
}

std::optional<LRESULT> ListView::FailureOf(UINT message) const {
    if (message == LVM_INSERTCOLUMNW || message == LVM_INSERTITEMW) return -1;
    if (message == LVM_SETITEMTEXTW || message == LVM_SETITEMW) return FALSE;
    return std::nullopt;
}

LRESULT ListView::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const int index = static_cast<int>(wParam);
    auto* item = reinterpret_cast<LVITEMW*>(lParam);
    switch (message) {
        case LVM_INSERTCOLUMNW:
            return InsertColumn(index, *reinterpret_cast<const LVCOLUMNW*>(lParam));
        case LVM_GETCOLUMNW:
            return GetColumn(index, *reinterpret_cast<LVCOLUMNW*>(lParam));
        case LVM_INSERTITEMW:
            return InsertItem(*item);
        case LVM_GETITEMW:
            return GetItem(*item);
        case LVM_SETITEMW:
            return SetItem(*item);
        case LVM_SETITEMTEXTW:
            if (!Has(index) || item->iSubItem < 0) return FALSE;
            SetText(index, item->iSubItem, item->pszText);
            return TRUE;
        case LVM_GETITEMTEXTW:
            if (!Has(index)) return 0;
            return CopyText(Text(index, item->iSubItem), item->pszText, item->cchTextMax);
        case LVM_GETITEMCOUNT:
            return static_cast<LRESULT>(m_rows.size());
        case LVM_DELETEITEM:
            return DeleteItem(index);
        case LVM_DELETEALLITEMS:
            return DeleteAll();
        case LVM_SETITEMSTATE:
            return SetState(index, item->state, item->stateMask);
        case LVM_GETITEMSTATE:
            return Has(index) ? At(index).state & static_cast<UINT>(lParam) : 0;
        case LVM_GETNEXTITEM:
            return NextItem(index, static_cast<UINT>(lParam));
        case LVM_GETSELECTEDCOUNT:
            return std::count_if(m_rows.begin(), m_rows.end(),
                                 [](const Row& row) { return (row.state & LVIS_SELECTED) != 0; });
        case LVM_SETEXTENDEDLISTVIEWSTYLE:
            return SetExtendedStyle(static_cast<DWORD>(wParam), static_cast<DWORD>(lParam));
        case LVM_GETEXTENDEDLISTVIEWSTYLE:
            return m_extendedStyle;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddListViewClass(Desktop& desktop) {
    desktop.AddClass(u"SysListView32", [] { return std::shared_ptr<Window>(new ListView); });
}

}  // namespace platform
