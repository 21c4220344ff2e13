#pragma once
// What the library relies on of Windows, as cases in plain Windows code that are compiled twice:
// into the host's unit tests, where each case runs on a fresh machine of the stand-in, and as a
// program that runs on a Windows.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>
#include <commctrl.h>

#include "ConformanceDialogs.h"

using Text = std::basic_string<WCHAR>;

// Where the cases of a build run. Each build has its own; it goes with the case.
struct Surroundings {
    virtual ~Surroundings() = default;
    HMODULE module = nullptr;  // has the dialogs of Conformance.rc
    Text folder;               // of the case's files, with a backslash at its end
};
std::unique_ptr<Surroundings> MakeSurroundings();

class Conformance : public testing::Test {
  protected:
    const std::unique_ptr<Surroundings> here = MakeSurroundings();
};

// A dialog of Conformance.rc, which asks `on` about each message.
class DialogCase : public Conformance {
  protected:
    DialogCase() { s_case = this; }
    ~DialogCase() override {
        on = nullptr;
        for (const HWND window : m_windows)
            DestroyWindow(window);
        s_case = nullptr;
    }

    // Makes a dialog; it is destroyed with the case.
    HWND Open(int id) {
        dialog = CreateDialogParamW(here->module, MAKEINTRESOURCEW(id), nullptr, &Procedure, 0);
        if (dialog != nullptr) m_windows.push_back(dialog);
        return dialog;
    }
    HWND Item(int id) const { return GetDlgItem(dialog, id); }
    // Shows a modal dialog until it ends, and gives what it ended with.
    INT_PTR ShowModal(int id, HWND owner) const {
        return DialogBoxParamW(here->module, MAKEINTRESOURCEW(id), owner, &Procedure, 0);
    }

    HWND dialog = nullptr;                                  // the last one
    std::function<INT_PTR(HWND, UINT, WPARAM, LPARAM)> on;  // may be empty

  private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        return s_case->on ? s_case->on(window, message, wParam, lParam) : FALSE;
    }

    static inline DialogCase* s_case = nullptr;
    std::vector<HWND> m_windows;
};
