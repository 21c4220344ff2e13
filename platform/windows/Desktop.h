#pragma once
// The windows of the machine: their tree, their classes and the messages between threads.
//
// A window belongs to the thread that made it, and its messages are handled there. Frames have no
// thickness: a window's client area is the whole of it.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <winuser.h>

#include "Machine.h"
#include "Text.h"

namespace platform {

// What a window is made from.
struct Creation {
    std::u16string className;
    std::u16string text;
    std::optional<WORD> textOrdinal;  // a resource's number in the place of a text
    DWORD style = 0;
    DWORD exStyle = 0;
    RECT rect = {};         // pixels, in the parent's client area or on the screen
    HWND parent = nullptr;  // the owner of a window that isn't a child
    LONG_PTR id = 0;
    HINSTANCE instance = nullptr;
};

class Window {
  public:
    virtual ~Window() = default;
    // The base does what DefWindowProcW does.
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    // Called once, when the fields below are set and the window isn't in the tree yet.
    virtual void OnCreate(const Creation&) {}
    // The word at a non-negative index of GetWindowLongPtrW, or null.
    virtual LONG_PTR* Extra(int) { return nullptr; }
    // The result of a message that a fault keeps from the window. Nothing for a message that can't
    // fail on Windows.
    virtual std::optional<LRESULT> FailureOf(UINT) const { return std::nullopt; }

    bool IsChild() const { return (style & WS_CHILD) != 0; }
    bool IsEnabled() const { return (style & WS_DISABLED) == 0; }
    bool HasStyle(DWORD bits) const { return (style & bits) == bits; }

    HWND handle = nullptr;
    std::u16string className;
    std::u16string text;
    DWORD style = 0;
    DWORD exStyle = 0;
    LONG_PTR id = 0;
    LONG_PTR userData = 0;
    RECT rect = {};
    HWND parent = nullptr;  // of a child window
    HWND owner = nullptr;   // of any other
    std::vector<HWND> children;
    unsigned thread = 0;
    std::uint64_t activated = 0;  // greater: later
    WPARAM font = 0;
    bool destroyed = false;

  protected:
    // Sends WM_COMMAND with this window's id to its parent.
    void Command(UINT notification) const;
    // Sends WM_NOTIFY to its parent; fills the header.
    LRESULT Notify(NMHDR& header, UINT code) const;
};

class Desktop : public Part {
  public:
    using Factory = std::shared_ptr<Window> (*)();

    // With the classes of the system.
    Desktop();

    void AddClass(std::u16string name, Factory make);
    void RemoveClass(const std::u16string& name);

    // Makes a window of a registered class. Null, with the last error set, when there is none.
    HWND Create(const Creation& creation);
    // The same for a window whose class the stand-in itself plays.
    HWND Create(std::shared_ptr<Window> window, const Creation& creation);
    // With its children and the windows that it owns.
    void Destroy(HWND window);
    // Null when there is no such window.
    std::shared_ptr<Window> Find(HWND window) const;
    template <class T>
    std::shared_ptr<T> Find(HWND window) const {
        return std::dynamic_pointer_cast<T>(Find(window));
    }

    // The child of that id, or null.
    HWND Item(HWND dialog, LONG_PTR id) const;
    // The window itself or its topmost parent.
    HWND TopLevel(HWND window) const;
    // Highest in z-order first.
    std::vector<HWND> TopLevels() const;
    bool IsVisible(HWND window) const;
    POINT Origin(HWND window) const;  // on the screen
    void Show(HWND window, bool show);
    // Gives whether the window was disabled.
    bool Enable(HWND window, bool enable);
    void Activate(HWND window);
    HWND Foreground() const { return m_foreground; }
    HWND Focus() const;
    void SetFocus(HWND window);

    // Carries the message out in the window's thread. 0 when there is no such window.
    LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    bool Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void PostQuit(int exitCode);
    LRESULT Dispatch(const MSG& message);

    // Handles one message that was sent to the calling thread by another one.
    bool HandleSent();
    // A posted message of the calling thread that passes the filter; window null: any.
    std::optional<MSG> Take(HWND window, UINT first, UINT last, bool remove);
    bool HasPosted(unsigned thread, HWND window, UINT first, UINT last) const;
    bool HasSentOrQuit(unsigned thread) const;
    // Gives the pending WM_QUIT of the calling thread.
    std::optional<int> TakeQuit();
    // QS_SENDMESSAGE and QS_POSTMESSAGE as they have come since the last ask or, else, as they
    // wait.
    UINT Status(unsigned thread, bool freshOnly) const;
    void ForgetFresh();

    // Handles messages of the calling thread, and asks the user when there are none, until done()
    // or a WM_QUIT. handle: is asked first about each posted message; true when it took it.
    void RunLoop(const char* call, const std::function<bool()>& done,
                 const std::function<bool(const MSG&)>& handle = {});
    // Waits until ready() or for one turn of the user. False at the time-out, and when the machine
    // has ended. asked is kept between the calls of a loop, see Scheduler::BlockIdle.
    bool WaitWithUser(const char* call, const std::function<bool()>& ready,
                      std::optional<Scheduler::Milliseconds> due, bool& asked);

    HCURSOR cursor = nullptr;

  private:
    struct SentMessage {
        HWND window;
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
        LRESULT result = 0;
        bool done = false;
    };
    struct Filter {
        HWND window;  // null: any
        UINT first;
        UINT last;  // both 0: any
        bool operator()(const MSG& message) const;
    };
    struct Queue {
        std::deque<std::shared_ptr<SentMessage>> sent;
        std::deque<MSG> posted;
        std::optional<int> quit;
        UINT fresh = 0;
        HWND focus = nullptr;
    };

    Queue& OwnQueue();
    void Remove(HWND window);
    void PassForegroundOn(HWND from);

    std::map<std::u16string, Factory, LessNoCase> m_classes;
    std::map<HWND, std::shared_ptr<Window>> m_windows;
    std::map<unsigned, Queue> m_queues;
    HWND m_foreground = nullptr;
    std::uint64_t m_nextHandle = 0x10010;
    std::uint64_t m_nextActivation = 1;
};

// The living machine's.
Desktop& TheDesktop();

// A window's text as WM_GETTEXT copies it: at most capacity - 1 characters and a terminator. Gives
// the characters copied.
int CopyText(std::u16string_view text, char16_t* buffer, int capacity);

// Disables top-level windows while something modal is up.
class ModalScope {
  public:
    // owner: null, or any window of the one to disable. task: without an owner, all of the thread.
    explicit ModalScope(HWND owner, bool task = false);
    // Enables again what this has disabled. Not done when the machine ends.
    void End();

  private:
    std::vector<HWND> m_disabled;
};

// Register the classes of the system with the desktop.
void AddButtonClass(Desktop& desktop);
void AddStaticClass(Desktop& desktop);
void AddEditClass(Desktop& desktop);
void AddListBoxClass(Desktop& desktop);
void AddComboBoxClass(Desktop& desktop);
void AddListViewClass(Desktop& desktop);
void AddTabControlClass(Desktop& desktop);
void AddDialogClass(Desktop& desktop);

}  // namespace platform
