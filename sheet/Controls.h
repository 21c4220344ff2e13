#pragma once
// The controls of a page, a dialog or a message box: reading them, and doing with them what a
// person would. The thread of the window only.

#include <optional>
#include <string>
#include <vector>

#include "SheetText.h"

namespace sheet {

enum class Class {
    Button,
    GroupBox,
    Static,
    Picture,
    Edit,
    RichEdit,
    ComboBox,
    ListBox,
    ListView,
    Other
};

// In dialog units.
struct Place {
    int left;
    int top;
    int right;
    int bottom;
};

struct Control {
    HWND window;
    std::optional<int> id;  // none for a static text without one
    Text className;
    Class kind;
    Text text;  // as it is shown, without the mark of an access key
    LONG style;
    Place place;  // within its dialog
    bool isShown;
    bool isEnabled;
    std::optional<bool> isChecked;  // for what can be checked
};

struct Entry {
    Text text;
    bool isSelected;
};

struct Row {
    std::vector<Text> columns;
    bool isSelected;
    std::optional<bool> isChecked;  // when the list has check boxes
};

Control ReadControl(HWND dialog, HWND window);
// The id as it is printed; - for none.
std::string NameOf(const Control& control);
// Of a combo box with that style.
bool CanDropDown(LONG style);
// Several entries of a list box can be selected.
bool IsMultiple(const Control& list);

// A dialog's width in its units.
int WidthOf(HWND dialog);
// In the template's order.
std::vector<Control> ControlsOf(HWND dialog);
// Of a combo box or list box.
std::vector<Entry> EntriesOf(const Control& list);
// Of a list view.
std::vector<Text> HeadingsOf(const Control& list);
std::vector<Row> RowsOf(const Control& list);

// Of the push buttons, radio buttons and check boxes that are shown.
std::vector<Text> ButtonLabels(HWND dialog);

// The lines of the `controls` command.
std::string ListControls(HWND dialog);

// The lines of the `places` command: id, then left, top, right and bottom in dialog units.
std::string ListPlaces(HWND dialog);

// What a person does. Each refuses what a person couldn't do: a control that isn't there, is
// hidden, is disabled itself or by its dialog, or is of another kind; then nothing has happened.
void PressControl(HWND dialog, int id);
// By the label that is shown, in its own case; also refused when several buttons have it.
void PressControl(HWND dialog, const Text& label);
// VK_RETURN or VK_ESCAPE, in the control that has the focus.
void PressKey(HWND dialog, WPARAM key);
void TypeInto(HWND dialog, int id, const Text& text);
void SelectEntry(HWND dialog, int id, const Text& text);
void CheckRow(HWND dialog, int id, const Text& row, bool checked);
void SelectRow(HWND dialog, int id, const Text& row);

}  // namespace sheet
