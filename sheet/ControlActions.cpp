// What a person does with a control.

#include <commctrl.h>
#include <algorithm>

#include "Controls.h"
#include "Transcript.h"

namespace sheet {

namespace {

void SetItemState(HWND list, int row, UINT state, UINT mask) {
    LVITEMW item = {};
    item.state = state;
    item.stateMask = mask;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

// Refuses a control that a person couldn't work with.
void ExpectUsable(HWND dialog, const Control& control) {
    const std::string name = "control " + NameOf(control);
    if (!control.isShown) throw Refusal{name + " is hidden"};
    if (!control.isEnabled) throw Refusal{name + " is disabled"};
    for (HWND above = dialog; above != nullptr; above = GetParent(above)) {
        if (!IsWindowEnabled(above)) throw Refusal{name + " is blocked by another window"};
        if ((GetWindowLongPtrW(above, GWL_STYLE) & WS_CHILD) == 0) break;
    }
}

// The control of that id, when a person could work with it.
Control Reach(HWND dialog, int id) {
    const HWND window = GetDlgItem(dialog, id);
    if (window == nullptr) throw Refusal{"there is no control " + std::to_string(id)};
    Control control = ReadControl(dialog, window);
    ExpectUsable(dialog, control);
    return control;
}

[[noreturn]] void RefuseKind(int id, const char* wanted) {
    throw Refusal{"control " + std::to_string(id) + " is no " + wanted};
}

void Notify(const Control& control, WORD code) {
    const HWND dialog = GetParent(control.window);
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(*control.id), code),
                 reinterpret_cast<LPARAM>(control.window));
}

std::optional<std::size_t> FindEntry(const Control& list, const Text& text) {
    const auto entries = EntriesOf(list);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].text == text) return i;
    }
    return std::nullopt;
}

[[noreturn]] void RefuseEntry(const Control& list, const Text& text) {
    throw Refusal{"control " + NameOf(list) + " has no entry \"" + ToUtf8(text) + "\""};
}

// As with the keyboard, the control itself tells of the list's opening and closing.
void SelectInComboBox(const Control& combo, const Text& text) {
    const bool drops = CanDropDown(combo.style);
    if (drops) {
        SetFocus(combo.window);
        SendMessageW(combo.window, CB_SHOWDROPDOWN, TRUE, 0);
    }
    // A dialog may fill the list when it drops down.
    const std::optional<std::size_t> index = FindEntry(combo, text);
    if (index) {
        SendMessageW(combo.window, CB_SETCURSEL, *index, 0);
        Notify(combo, CBN_SELCHANGE);
    }
    if (drops) SendMessageW(combo.window, WM_KEYDOWN, index ? VK_RETURN : VK_ESCAPE, 0);
    if (!index) RefuseEntry(combo, text);
}

void SelectInListBox(const Control& list, const Text& text) {
    const std::optional<std::size_t> index = FindEntry(list, text);
    if (!index) RefuseEntry(list, text);
    if (IsMultiple(list)) {
        SendMessageW(list.window, LB_SETSEL, TRUE, static_cast<LPARAM>(*index));
    } else {
        SendMessageW(list.window, LB_SETCURSEL, *index, 0);
    }
    if ((list.style & LBS_NOTIFY) != 0) Notify(list, LBN_SELCHANGE);
}

struct ListViewRow {
    HWND list;
    bool hasCheckBoxes;
    int index;
    std::vector<int> selected;
};

ListViewRow FindRow(HWND dialog, int id, const Text& text) {
    const Control list = Reach(dialog, id);
    if (list.kind != Class::ListView) RefuseKind(id, "list view");
    const auto rows = RowsOf(list);
    ListViewRow found = {list.window, false, -1, {}};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto index = static_cast<int>(i);
        if (rows[i].isSelected) found.selected.push_back(index);
        if (found.index >= 0 || rows[i].columns.front() != text) continue;
        found.index = index;
        found.hasCheckBoxes = rows[i].isChecked.has_value();
    }
    if (found.index >= 0) return found;
    throw Refusal{"control " + std::to_string(id) + " has no row \"" + ToUtf8(text) + "\""};
}

}  // namespace

void PressControl(HWND dialog, int id) {
    const Control control = Reach(dialog, id);
    if (control.kind != Class::Button) RefuseKind(id, "button");
    PostMessageW(control.window, BM_CLICK, 0, 0);
}

void PressControl(HWND dialog, const Text& label) {
    std::vector<Control> buttons = ControlsOf(dialog);
    std::erase_if(buttons, [&](const Control& control) {
        return control.kind != Class::Button || control.text != label;
    });
    // A hidden one is only meant where no other has that label.
    if (std::any_of(buttons.begin(), buttons.end(),
                    [](const Control& control) { return control.isShown; }))
        std::erase_if(buttons, [](const Control& control) { return !control.isShown; });
    if (buttons.empty()) throw Refusal{"there is no button \"" + ToUtf8(label) + "\""};
    if (buttons.size() > 1) {
        std::string ids;
        for (const Control& control : buttons)
            ids += (ids.empty() ? "" : ", ") + NameOf(control);
        throw Refusal{"several buttons are labelled \"" + ToUtf8(label) + "\": " + ids};
    }
    ExpectUsable(dialog, buttons.front());
    PostMessageW(buttons.front().window, BM_CLICK, 0, 0);
}

void PressKey(HWND dialog, WPARAM key) {
    const HWND focus = GetFocus();
    // A push button that was clicked with the mouse is the default one, unlike after BM_CLICK.
    const LRESULT code = key == VK_RETURN ? SendMessageW(focus, WM_GETDLGCODE, 0, 0) : 0;
    if ((code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0) {
        PostMessageW(focus, BM_CLICK, 0, 0);
        return;
    }
    PostMessageW(GetParent(focus) == dialog ? focus : dialog, WM_KEYDOWN, key, 0);
}

void TypeInto(HWND dialog, int id, const Text& text) {
    const Control control = Reach(dialog, id);
    if (control.kind != Class::Edit && control.kind != Class::RichEdit) RefuseKind(id, "edit");
    if ((control.style & ES_READONLY) != 0)
        throw Refusal{"control " + std::to_string(id) + " is read-only"};
    // Replaced rather than set: so the control keeps to its limit and tells its dialog.
    SendMessageW(control.window, EM_SETSEL, 0, -1);
    SendMessageW(control.window, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

void SelectEntry(HWND dialog, int id, const Text& text) {
    const Control control = Reach(dialog, id);
    if (control.kind == Class::ComboBox) return SelectInComboBox(control, text);
    if (control.kind == Class::ListBox) return SelectInListBox(control, text);
    RefuseKind(id, "list");
}

void CheckRow(HWND dialog, int id, const Text& text, bool checked) {
    const ListViewRow row = FindRow(dialog, id, text);
    if (!row.hasCheckBoxes) throw Refusal{"control " + std::to_string(id) + " has no check boxes"};
    SetItemState(row.list, row.index, (checked ? 2U : 1U) << 12, LVIS_STATEIMAGEMASK);
}

void SelectRow(HWND dialog, int id, const Text& text) {
    const ListViewRow row = FindRow(dialog, id, text);
    constexpr UINT kMark = LVIS_SELECTED | LVIS_FOCUSED;
    for (const int other : row.selected) {
        if (other != row.index) SetItemState(row.list, other, 0, kMark);
    }
    SetItemState(row.list, row.index, kMark, kMark);
}

}  // namespace sheet
