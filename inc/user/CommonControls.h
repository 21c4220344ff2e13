#pragma once
// Plain-argument forms of the messages of common controls. The thread of the control's window.

#include <windows.h>
#include <commctrl.h>
#include <cstddef>

// A width in pixels of a screen with 96 dots an inch, as the screen at hand has it.
int ScaleToScreen(int pixels);

// List views in report view. Rows and columns count from 0.
bool InsertColumn(HWND list, int column, LPCWSTR title, int width);
bool ClearRows(HWND list);
// The row's index, or -1. `data` is the item data of the second form.
int InsertRow(HWND list, int row, LPCWSTR text);
int InsertRow(HWND list, int row, LPCWSTR text, LPARAM data);
bool SetCell(HWND list, int row, int column, LPCWSTR text);
// The first selected row, or -1.
int SelectedRow(HWND list);
// The item data of a row; 0 without such a row.
LPARAM RowData(HWND list, int row);

// Buttons, check boxes and radio buttons.
void SetCheck(HWND button, bool checked);
// False also for a null window.
bool IsChecked(HWND button);

// Combo boxes. Replaces the entries.
void FillComboBox(HWND combo, const LPCWSTR* texts, size_t count);
// Selects the first entry that begins with the text, without regard to case. False: there is none.
bool SelectComboBoxText(HWND combo, LPCWSTR text);
// The selected entry's text. False, and `text` empty, without one, or when it is longer than the
// buffer of `capacity` characters.
bool ReadComboBoxText(HWND combo, LPWSTR text, size_t capacity);
