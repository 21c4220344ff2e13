#pragma once
// Dialogs from templates, and the dialog class's own behaviour.

#include <optional>
#include <span>
#include <string>
#include <vector>

#include <winuser.h>

#include "Desktop.h"
#include "Resources.h"

namespace platform {

// A dialog's description, from a DIALOG or DIALOGEX resource. Positions are in dialog units.
struct DialogTemplate {
    struct Control {
        std::u16string className;
        ResourceName text;
        DWORD style = 0;
        DWORD exStyle = 0;
        RECT rect = {};
        DWORD id = 0;
    };

    std::u16string title;
    std::u16string className;  // empty: the dialog class
    DWORD style = 0;
    DWORD exStyle = 0;
    RECT rect = {};
    std::optional<WORD> fontSize;
    std::vector<Control> controls;
};

// Nothing when the data isn't a whole template.
std::optional<DialogTemplate> ParseDialogTemplate(std::span<const BYTE> data);
// The template of a module; nothing, with the last error set, when there is none.
std::optional<DialogTemplate> LoadDialogTemplate(HINSTANCE instance, const char16_t* name);

// Base units: the pixels of 4 dialog units across and of 8 down.
struct DialogUnits {
    int x;
    int y;
    RECT ToPixels(const RECT& units) const;
};
DialogUnits UnitsOf(const DialogTemplate& given);

class Dialog : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LONG_PTR* Extra(int offset) override;

    DialogUnits units = {8, 16};
    bool ended = false;
    INT_PTR result = 0;
    ModalScope* modal = nullptr;  // while it is shown as a modal one

  private:
    friend HWND CreateDialogFrom(const DialogTemplate&, HINSTANCE, HWND, DLGPROC, LPARAM);
    LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam);

    // DWLP_MSGRESULT, DWLP_DLGPROC and DWLP_USER
    LONG_PTR m_words[3] = {};
    UINT m_defaultId = 0;
};

// Makes the dialog, hidden, with its controls, and sends WM_INITDIALOG. Null, with the last error
// set, when a window of it can't be made.
HWND CreateDialogFrom(const DialogTemplate& given, HINSTANCE instance, HWND parent,
                      DLGPROC procedure, LPARAM parameter);

// Whether a window is another one or lies in it.
bool IsWithin(HWND window, HWND other);

// What the dialog manager makes of a key in a dialog or sheet: Enter presses the button that has
// the focus, else the default button, else IDOK; Escape is IDCANCEL. False for any other message,
// and when the window that has the focus wants the key itself.
bool HandleDialogKey(HWND dialog, const MSG& message);

}  // namespace platform
