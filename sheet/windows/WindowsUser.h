#pragma once
// The person at this computer who follows a script: waits until the sheet's thread has nothing to
// do, then answers the message box or the file dialog that has come up, gives the next command, or
// lets the clock run.

#include <vector>

#include <windows.h>

#include "../Session.h"

namespace sheet {

class User {
  public:
    // Watches the calling thread, which must be the session's, as long as it lives; one at a time.
    // session: borrowed. Refusal: the system doesn't let it watch.
    explicit User(Session& session);
    ~User();
    User(const User&) = delete;
    User& operator=(const User&) = delete;

    // MessageBoxW for the library to call: the box is shown as ever, and its style noted, which no
    // window tells.
    static int WINAPI ShowMessageBox(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style);

  private:
    // A message box that the library has asked for and the user may not yet have seen.
    struct PendingBox {
        UINT style;
        Text caption;
        HWND window;  // null until the user has seen it
    };

    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK OnPosted(int code, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK OnSent(int code, WPARAM wParam, LPARAM lParam);

    bool IsQuiet();
    void Look();
    bool LookAtNewDialog();
    void AnswerBox(PendingBox& box, HWND window);
    void AnswerFileDialog(HWND dialog);

    Session& m_session;
    HWND m_window = nullptr;  // has the timer
    HHOOK m_posted = nullptr;
    HHOOK m_sent = nullptr;
    ULONGLONG m_lastMessage = 0;
    ULONGLONG m_busySince = 0;        // 0 when the library's threads wait
    std::vector<PendingBox> m_boxes;  // innermost last
    std::vector<HWND> m_seen;         // dialogs that were looked at
    std::vector<HWND> m_fileDialogs;  // of these, the ones that ask for a file
};

}  // namespace sheet
