#include "CommonControls.h"

#include "AutoClasses.h"

namespace {

constexpr int kUsualDots = 96;  // an inch

int Insert(HWND list, LVITEMW& item, int row, LPCWSTR text) {
    item.mask |= LVIF_TEXT | LVIF_STATE;
    item.iItem = row;
    item.pszText = const_cast<LPWSTR>(text);
    return static_cast<int>(
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

}  // namespace

int ScaleToScreen(int pixels) {
    const ScopedScreen screen(GetDC(nullptr));
    const int dots = screen ? GetDeviceCaps(screen.Get(), LOGPIXELSX) : 0;
    return dots > 0 ? pixels * dots / kUsualDots : pixels;
}

bool InsertColumn(HWND list, int column, LPCWSTR title, int width) {
    LVCOLUMNW description = {};
    description.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    description.fmt = LVCFMT_LEFT;
    description.cx = width;
    description.pszText = const_cast<LPWSTR>(title);
    description.iSubItem = column;
    return SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(column),
                        reinterpret_cast<LPARAM>(&description)) != -1;
}

bool ClearRows(HWND list) {
    return SendMessageW(list, LVM_DELETEALLITEMS, 0, 0) != FALSE;
}

int InsertRow(HWND list, int row, LPCWSTR text) {
    LVITEMW item = {};
    return Insert(list, item, row, text);
}

int InsertRow(HWND list, int row, LPCWSTR text, LPARAM data) {
    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.lParam = data;
    return Insert(list, item, row, text);
}

bool SetCell(HWND list, int row, int column, LPCWSTR text) {
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = const_cast<LPWSTR>(text);
    return SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row),
                        reinterpret_cast<LPARAM>(&item)) != FALSE;
}

int SelectedRow(HWND list) {
    return static_cast<int>(
        SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}

LPARAM RowData(HWND list, int row) {
    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    return SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) ? item.lParam : 0;
}

void SetCheck(HWND button, bool checked) {
    SendMessageW(button, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool IsChecked(HWND button) {
    return button && (SendMessageW(button, BM_GETCHECK, 0, 0) & BST_CHECKED) != 0;
}

void FillComboBox(HWND combo, const LPCWSTR* texts, size_t count) {
    SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    for (size_t i = 0; i < count; ++i)
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(texts[i]));
}

bool SelectComboBoxText(HWND combo, LPCWSTR text) {
    return SendMessageW(combo, CB_SELECTSTRING, static_cast<WPARAM>(-1),
                        reinterpret_cast<LPARAM>(text)) != CB_ERR;
}

bool ReadComboBoxText(HWND combo, LPWSTR text, size_t capacity) {
    text[0] = 0;
    const LRESULT entry = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    if (entry == CB_ERR) return false;
    const LRESULT length = SendMessageW(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(entry), 0);
    if (length == CB_ERR || static_cast<size_t>(length) >= capacity) return false;
    return SendMessageW(combo, CB_GETLBTEXT, static_cast<WPARAM>(entry),
                        reinterpret_cast<LPARAM>(text)) != CB_ERR;
}
