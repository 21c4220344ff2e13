#pragma once
// The base of modal dialogs: an object that lives at least as long as its dialog is up. The sheet's
// thread.

#include <windows.h>

class ModalDialog {
  public:
    ModalDialog() = default;
    virtual ~ModalDialog() = default;
    ModalDialog(const ModalDialog&) = delete;
    ModalDialog& operator=(const ModalDialog&) = delete;

    // Shows the dialog of that template over `owner` until it ends, and gives what it ended with;
    // -1, after a message, when it can't be opened.
    INT_PTR Show(WORD dialogTemplate, HWND owner);

    // Only while the dialog is up.
    HWND Window() const { return m_window; }
    HWND Control(int id) const { return GetDlgItem(m_window, id); }

  protected:
    // The dialog is there, with all its controls. True: the system chooses the first focus.
    virtual bool OnStart() = 0;
    virtual void OnCommand(WORD control, WORD notification) = 0;
    void End(INT_PTR result) { EndDialog(m_window, result); }

  private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    HWND m_window = nullptr;
};
