#pragma once
// The person at the machine: a script in a test, a console in the program that plays the device
// manager. Called on the thread whose message loop asks, in quiet mode (Call.h).

#include <optional>
#include <string>

#include <windows.h>

namespace platform {

struct MessageBoxRequest {
    HWND window;  // the box itself, a dialog with its buttons
    HWND owner;
    std::u16string caption;
    std::u16string text;
    UINT style;  // MB_...
};

struct FileDialogRequest {
    HWND owner;
    std::u16string title;
    std::u16string filter;            // with embedded terminators, as given
    std::u16string defaultExtension;  // without a dot
    DWORD flags;                      // OFN_...
};

class User {
  public:
    virtual ~User() = default;

    // A message box has come up. The id of the button to press (IDOK, ...), or 0 to leave it up;
    // then OnIdle is asked while the box's loop runs, and a deed presses one of its buttons.
    virtual int OnMessageBox(const MessageBoxRequest& box) = 0;

    // The path that the user gives, or nothing for Cancel.
    virtual std::optional<std::u16string> OnFileDialog(const FileDialogRequest& dialog) = 0;

    // The innermost message loop is idle: does the next deed. False when there is none; the loop
    // then waits for a message, and a machine in which nothing more can come is a deadlock.
    virtual bool OnIdle() = 0;
};

}  // namespace platform
