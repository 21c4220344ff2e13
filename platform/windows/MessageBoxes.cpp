// Message boxes: dialogs with a text and buttons, answered by the machine's user.

#include <winerror.h>
#include <winuser.h>

#include "Call.h"
#include "Desktop.h"

namespace platform {
namespace {

struct ButtonKind {
    int id;
    const char16_t* text;
};
constexpr ButtonKind kOk = {IDOK, u"OK"};
constexpr ButtonKind kCancel = {IDCANCEL, u"Cancel"};
constexpr ButtonKind kAbort = {IDABORT, u"&Abort"};
constexpr ButtonKind kRetry = {IDRETRY, u"&Retry"};
constexpr ButtonKind kIgnore = {IDIGNORE, u"&Ignore"};
constexpr ButtonKind kYes = {IDYES, u"&Yes"};
constexpr ButtonKind kNo = {IDNO, u"&No"};

// By MB_TYPEMASK.
const std::vector<ButtonKind> kButtons[] = {
    {kOk},       {kOk, kCancel},    {kAbort, kRetry, kIgnore}, {kYes, kNo, kCancel},
    {kYes, kNo}, {kRetry, kCancel},
};

constexpr int kTextId = 0xFFFF;
constexpr LONG kBoxMargin = 11;
constexpr LONG kTextWidth = 400;
constexpr LONG kTextHeight = 60;
constexpr LONG kBoxButtonWidth = 75;
constexpr LONG kBoxButtonHeight = 23;
constexpr UINT kDefaultButtonShift = 8;

class MessageBoxWindow : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    int answer = 0;
};

LRESULT MessageBoxWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            if (HIWORD(wParam) == BN_CLICKED && LOWORD(wParam) != kTextId) answer = LOWORD(wParam);
            return 0;
        case WM_CLOSE:
            // A box without Cancel closes only when it has nothing to decide.
            if (TheDesktop().Item(handle, IDCANCEL))
                answer = IDCANCEL;
            else if (!TheDesktop().Item(handle, IDNO) && !TheDesktop().Item(handle, IDABORT))
                answer = IDOK;
            return 0;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

void AddControl(HWND box, const char16_t* className, const char16_t* text, DWORD style, int id,
                RECT rect) {
    Creation control;
    control.className = className;
    control.text = text;
    control.style = style | WS_CHILD | WS_VISIBLE;
    control.rect = rect;
    control.parent = box;
    control.id = id;
    TheDesktop().Create(control);
}

// The box with its controls, not yet shown.
std::shared_ptr<MessageBoxWindow> MakeBox(const MessageBoxRequest& request) {
    Creation frame;
    frame.className = u"#32770";
    frame.text = request.caption;
    frame.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
    frame.parent = request.owner;
    frame.rect = {0, 0, kTextWidth + 2 * kBoxMargin,
                  kTextHeight + kBoxButtonHeight + 3 * kBoxMargin};
    auto box = std::make_shared<MessageBoxWindow>();
    TheDesktop().Create(box, frame);

    AddControl(box->handle, u"Static", request.text.c_str(), SS_NOPREFIX, kTextId,
               {kBoxMargin, kBoxMargin, kBoxMargin + kTextWidth, kBoxMargin + kTextHeight});
    const UINT defaultIndex = (request.style & MB_DEFMASK) >> kDefaultButtonShift;
    LONG x = kBoxMargin;
    const LONG y = 2 * kBoxMargin + kTextHeight;
    UINT index = 0;
    for (const ButtonKind& kind : kButtons[request.style & MB_TYPEMASK]) {
        const DWORD type = index++ == defaultIndex ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
        AddControl(box->handle, u"Button", kind.text, type | WS_TABSTOP, kind.id,
                   {x, y, x + kBoxButtonWidth, y + kBoxButtonHeight});
        if (type == BS_DEFPUSHBUTTON)
            TheDesktop().SetFocus(TheDesktop().Item(box->handle, kind.id));
        x += kBoxButtonWidth + kBoxMargin;
    }
    return box;
}

[[noreturn]] void EndMachine(Machine& machine, const std::string& reason) {
    machine.End(reason);
    throw MachineEnded{0, reason};
}

// Presses the button that the user names at once, or none.
void AskUser(Machine& machine, const MessageBoxRequest& request) {
    const std::string shown = ToUtf8(request.caption + u": " + request.text);
    if (!machine.user) EndMachine(machine, "a message box without a user: " + shown);
    const QuietScope quiet;
    const int id = machine.user->OnMessageBox(request);
    if (id == 0) return;
    const HWND button = TheDesktop().Item(request.window, id);
    if (!button) EndMachine(machine, "no button " + std::to_string(id) + " in the box: " + shown);
    TheDesktop().Send(button, BM_CLICK);
}

int RunBox(const Call& call, MessageBoxRequest request) {
    Desktop& desktop = TheDesktop();
    const HWND focus = desktop.Focus();
    ModalScope modal(request.owner, (request.style & MB_MODEMASK) == MB_TASKMODAL);
    const std::shared_ptr<MessageBoxWindow> box = MakeBox(request);
    request.window = box->handle;
    desktop.Show(box->handle, true);
    AskUser(call.machine, request);
    desktop.RunLoop(call.Name(), [&] { return box->answer != 0 || box->destroyed; });
    modal.End();
    desktop.Destroy(box->handle);
    if (desktop.Find(focus)) desktop.SetFocus(focus);
    return box->answer;
}

}  // namespace
}  // namespace platform

int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    platform::Call call("MessageBoxW", text, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed() || call.machine.Ended()) return call.With(0);
    if (owner && !platform::TheDesktop().Find(owner))
        return platform::Call::SetLast(ERROR_INVALID_WINDOW_HANDLE), 0;
    if ((style & MB_TYPEMASK) >= std::size(platform::kButtons))
        return platform::Call::SetLast(ERROR_INVALID_PARAMETER), 0;
    return platform::RunBox(
        call, {nullptr, owner, caption ? caption : u"Error", text ? text : u"", style});
}
