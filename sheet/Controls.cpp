#include "Controls.h"

#include <commctrl.h>
#include <algorithm>

#include "Transcript.h"

namespace sheet {

namespace {

constexpr int kTextCapacity = 1024;  // characters of an entry or a cell
constexpr int kMostColumns = 64;
constexpr int kClosedListHeight = 14;  // dialog units

Text WindowText(HWND window) {
    Text text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, TEXT('\0'));
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

bool IsCheckable(LONG style) {
    const LONG type = style & BS_TYPEMASK;
    return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_RADIOBUTTON ||
           type == BS_3STATE || type == BS_AUTO3STATE || type == BS_AUTORADIOBUTTON;
}

Class KindOf(const Text& className, LONG style) {
    if (EqualNoCase(className, TEXT("Button")))
        return (style & BS_TYPEMASK) == BS_GROUPBOX ? Class::GroupBox : Class::Button;
    if (EqualNoCase(className, TEXT("Static"))) {
        const LONG type = style & SS_TYPEMASK;
        return type == SS_BITMAP || type == SS_ICON ? Class::Picture : Class::Static;
    }
    if (StartsWithNoCase(className, TEXT("RichEdit"))) return Class::RichEdit;
    constexpr struct {
        const WCHAR* name;
        Class kind;
    } kClasses[] = {
        {TEXT("Edit"), Class::Edit},
        {TEXT("ComboBox"), Class::ComboBox},
        {TEXT("ListBox"), Class::ListBox},
        {TEXT("SysListView32"), Class::ListView},
    };
    for (const auto& known : kClasses) {
        if (EqualNoCase(className, known.name)) return known.kind;
    }
    return Class::Other;
}

Place ToUnits(HWND dialog, const RECT& pixels) {
    RECT thousand = {0, 0, 1000, 1000};
    MapDialogRect(dialog, &thousand);
    const auto units = [](LONG length, LONG thousandUnits) {
        return static_cast<int>((length * 1000 + thousandUnits / 2) / thousandUnits);
    };
    const auto across = [&](LONG x) { return units(x, thousand.right); };
    const auto down = [&](LONG y) { return units(y, thousand.bottom); };
    // A dialog makes its pixels of place and size, each by itself.
    const int left = across(pixels.left);
    const int top = down(pixels.top);
    return {left, top, left + across(pixels.right - pixels.left),
            top + down(pixels.bottom - pixels.top)};
}

Place PlaceOf(HWND dialog, HWND window) {
    RECT pixels = {};
    GetWindowRect(window, &pixels);
    MapWindowPoints(HWND_DESKTOP, dialog, reinterpret_cast<POINT*>(&pixels), 2);
    return ToUnits(dialog, pixels);
}

// The text as Windows draws it: without the mark of an access key, where the class has such marks.
Text ShownText(Class kind, LONG style, const Text& text) {
    const bool hasMarks = kind == Class::Button || kind == Class::GroupBox ||
                          (kind == Class::Static && (style & SS_NOPREFIX) == 0);
    if (!hasMarks) return text;
    Text shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == TEXT('&') && ++i == text.size()) break;
        shown += text[i];
    }
    return shown;
}

std::string StateOf(const Control& control) {
    std::string state = control.isShown ? "shown," : "hidden,";
    state += control.isEnabled ? "enabled" : "disabled";
    if (control.isChecked) state += *control.isChecked ? ",checked" : ",unchecked";
    return state;
}

// For `row` and `entry` lines: the words that apply, or - for none.
std::string StateOf(const std::optional<bool>& isChecked, bool isSelected) {
    std::string state;
    if (isChecked) state = *isChecked ? "checked" : "unchecked";
    if (isSelected) state += state.empty() ? "selected" : ",selected";
    return state.empty() ? "-" : state;
}

struct ListMessages {
    UINT count;
    UINT length;
    UINT text;
};
constexpr ListMessages kComboBox = {CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT};
constexpr ListMessages kListBox = {LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT};

bool IsSelected(const Control& list, WPARAM index) {
    if (list.kind == Class::ListBox && IsMultiple(list))
        return SendMessageW(list.window, LB_GETSEL, index, 0) > 0;
    const UINT message = list.kind == Class::ComboBox ? CB_GETCURSEL : LB_GETCURSEL;
    return SendMessageW(list.window, message, 0, 0) == static_cast<LRESULT>(index);
}

Text CellOf(HWND list, int row, int column) {
    WCHAR text[kTextCapacity] = {};
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = kTextCapacity;
    SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return Text(item.pszText);
}

UINT ItemState(HWND list, int row, UINT mask) {
    return static_cast<UINT>(SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), mask));
}

}  // namespace

bool CanDropDown(LONG style) {
    return (style & CBS_DROPDOWNLIST) != CBS_SIMPLE;
}

bool IsMultiple(const Control& list) {
    return (list.style & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0;
}

Control ReadControl(HWND dialog, HWND window) {
    Control control = {};
    control.window = window;
    const int id = GetDlgCtrlID(window);
    if (static_cast<WORD>(id) != 0xFFFF) control.id = id;
    WCHAR className[256] = {};
    GetClassNameW(window, className, ARRAYSIZE(className));
    control.className = className;
    control.style = static_cast<LONG>(GetWindowLongPtrW(window, GWL_STYLE));
    control.kind = KindOf(control.className, control.style);
    if (control.kind != Class::Picture)
        control.text = ShownText(control.kind, control.style, WindowText(window));
    control.place = PlaceOf(dialog, window);
    // The template's height is that of the open list, the window's own follows its font.
    if (control.kind == Class::ComboBox && CanDropDown(control.style))
        control.place.bottom = control.place.top + kClosedListHeight;
    control.isShown = (control.style & WS_VISIBLE) != 0;
    control.isEnabled = IsWindowEnabled(window) != FALSE;
    if (control.kind == Class::Button && IsCheckable(control.style))
        control.isChecked = (SendMessageW(window, BM_GETCHECK, 0, 0) & 1) != 0;
    return control;
}

std::string NameOf(const Control& control) {
    return control.id ? std::to_string(*control.id) : std::string("-");
}

int WidthOf(HWND dialog) {
    RECT pixels = {};
    GetClientRect(dialog, &pixels);
    return ToUnits(dialog, pixels).right;
}

std::vector<Control> ControlsOf(HWND dialog) {
    std::vector<Control> controls;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT))
        controls.push_back(ReadControl(dialog, child));
    return controls;
}

std::vector<Entry> EntriesOf(const Control& list) {
    const ListMessages& messages = list.kind == Class::ComboBox ? kComboBox : kListBox;
    std::vector<Entry> entries;
    const LRESULT count = SendMessageW(list.window, messages.count, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        const WPARAM index = static_cast<WPARAM>(i);
        const LRESULT length = SendMessageW(list.window, messages.length, index, 0);
        Text text(static_cast<std::size_t>(length < 0 ? 0 : length) + 1, TEXT('\0'));
        SendMessageW(list.window, messages.text, index, reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        entries.push_back({text, IsSelected(list, index)});
    }
    return entries;
}

std::vector<Text> HeadingsOf(const Control& list) {
    std::vector<Text> headings;
    for (int i = 0; i < kMostColumns; ++i) {
        WCHAR text[kTextCapacity] = {};
        LVCOLUMNW column = {};
        column.mask = LVCF_TEXT;
        column.pszText = text;
        column.cchTextMax = kTextCapacity;
        if (!SendMessageW(list.window, LVM_GETCOLUMNW, static_cast<WPARAM>(i),
                          reinterpret_cast<LPARAM>(&column)))
            break;
        headings.emplace_back(column.pszText);
    }
    return headings;
}

std::vector<Row> RowsOf(const Control& list) {
    const HWND window = list.window;
    const auto columns = static_cast<int>(HeadingsOf(list).size());
    const bool hasCheckBoxes =
        (SendMessageW(window, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0) & LVS_EX_CHECKBOXES) != 0;
    std::vector<Row> rows;
    const auto count = static_cast<int>(SendMessageW(window, LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        Row row;
        for (int column = 0; column < std::max(columns, 1); ++column)
            row.columns.push_back(CellOf(window, i, column));
        row.isSelected = ItemState(window, i, LVIS_SELECTED) != 0;
        // The second state image is the checked box.
        if (hasCheckBoxes) row.isChecked = ItemState(window, i, LVIS_STATEIMAGEMASK) >> 12 == 2;
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string ListControls(HWND dialog) {
    std::string lines;
    for (const Control& control : ControlsOf(dialog)) {
        const std::string id = NameOf(control);
        lines +=
            Line({"control", id, Field(control.className), Field(control.text), StateOf(control)});
        if (control.kind == Class::ComboBox || control.kind == Class::ListBox) {
            for (const Entry& entry : EntriesOf(control))
                lines +=
                    Line({"entry", id, Field(entry.text), StateOf(std::nullopt, entry.isSelected)});
        }
        if (control.kind != Class::ListView) continue;
        for (const Row& row : RowsOf(control)) {
            std::string line = "row";
            AddField(line, id);
            for (const Text& cell : row.columns)
                AddField(line, Field(cell));
            AddField(line, StateOf(row.isChecked, row.isSelected));
            lines += line + "\n";
        }
    }
    return lines;
}

std::string ListPlaces(HWND dialog) {
    std::string lines;
    for (const Control& control : ControlsOf(dialog)) {
        const Place& place = control.place;
        std::string line = "place";
        AddField(line, NameOf(control));
        for (const int edge : {place.left, place.top, place.right, place.bottom})
            AddField(line, std::to_string(edge));
        lines += line + "\n";
    }
    return lines;
}

std::vector<Text> ButtonLabels(HWND dialog) {
    std::vector<Text> labels;
    for (const Control& control : ControlsOf(dialog)) {
        if (control.kind == Class::Button && control.isShown && !control.text.empty())
            labels.push_back(control.text);
    }
    return labels;
}

}  // namespace sheet
