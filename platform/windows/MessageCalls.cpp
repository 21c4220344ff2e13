// The functions that send, post, fetch and wait for messages.

#include <handleapi.h>
#include <synchapi.h>
#include <winerror.h>
#include <winuser.h>
#include <string>

#include "Call.h"
#include "Desktop.h"
#include "Handles.h"

using platform::Call;
using platform::Desktop;
using platform::TheDesktop;
using platform::Window;

namespace {

// A message's argument for faults and traces: its number, in decimal.
std::u16string Number(UINT message) {
    return platform::FromUtf8(std::to_string(message));
}

// A list that runs out of memory is what SendMessageW can be told to fail with.
LRESULT SendUnlessFailed(const Call& call, HWND handle, UINT message, WPARAM wParam,
                         LPARAM lParam) {
    const std::shared_ptr<Window> window = TheDesktop().Find(handle);
    if (!window) {
        Call::SetLast(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    if (call.Failed()) {
        if (const std::optional<LRESULT> failure = window->FailureOf(message))
            return call.With(*failure);
    }
    return TheDesktop().Send(handle, message, wParam, lParam);
}

}  // namespace

LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Call call("SendMessageW", Number(message).c_str());
    return SendUnlessFailed(call, window, message, wParam, lParam);
}

LRESULT WINAPI SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam,
                                   LPARAM lParam) {
    Call call("SendDlgItemMessageW", Number(message).c_str());
    return SendUnlessFailed(call, TheDesktop().Item(dialog, id), message, wParam, lParam);
}

BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Call call("PostMessageW", Number(message).c_str(), ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With(FALSE);
    if (TheDesktop().Post(window, message, wParam, lParam)) return TRUE;
    Call::SetLast(ERROR_INVALID_WINDOW_HANDLE);
    return FALSE;
}

void WINAPI PostQuitMessage(int exitCode) {
    Call call("PostQuitMessage");
    TheDesktop().PostQuit(exitCode);
}

BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    Call call("PeekMessageW");
    Desktop& desktop = TheDesktop();
    while (desktop.HandleSent()) {
    }
    desktop.ForgetFresh();
    if (const std::optional<MSG> taken =
            desktop.Take(window, first, last, (remove & PM_REMOVE) != 0)) {
        *message = *taken;
        return TRUE;
    }
    if (const std::optional<int> quit = desktop.TakeQuit()) {
        if ((remove & PM_REMOVE) == 0) desktop.PostQuit(*quit);
        *message = {nullptr, WM_QUIT, static_cast<WPARAM>(*quit), 0, 0, {}};
        return TRUE;
    }
    return FALSE;
}

BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
    Call call("GetMessageW");
    Desktop& desktop = TheDesktop();
    const unsigned self = call.machine.scheduler.CurrentThread();
    const auto ready = [&] {
        return desktop.HasSentOrQuit(self) || desktop.HasPosted(self, window, first, last);
    };
    bool asked = false;
    while (!PeekMessageW(message, window, first, last, PM_REMOVE)) {
        if (!desktop.WaitWithUser(call.Name(), ready, std::nullopt, asked)) return -1;
    }
    return message->message != WM_QUIT;
}

BOOL WINAPI TranslateMessage(const MSG*) {
    Call call("TranslateMessage");
    return FALSE;
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
    Call call("DispatchMessageW");
    return TheDesktop().Dispatch(*message);
}

DWORD WINAPI MsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, DWORD milliseconds,
                                         DWORD wakeMask, DWORD flags) {
    Call call("MsgWaitForMultipleObjectsEx", nullptr, ERROR_INVALID_HANDLE);
    if (call.Failed()) return call.With(WAIT_FAILED);
    if ((flags & ~static_cast<DWORD>(MWMO_INPUTAVAILABLE)) != 0 || count >= MAXIMUM_WAIT_OBJECTS) {
        Call::SetLast(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    std::vector<std::shared_ptr<platform::KernelObject>> objects;
    for (DWORD i = 0; i < count; ++i) {
        objects.push_back(call.machine.Get<platform::Handles>().Find(handles[i]));
        if (!objects.back()) {
            Call::SetLast(ERROR_INVALID_HANDLE);
            return WAIT_FAILED;
        }
    }

    Desktop& desktop = TheDesktop();
    platform::Scheduler& scheduler = call.machine.scheduler;
    const unsigned self = scheduler.CurrentThread();
    const bool freshOnly = (flags & MWMO_INPUTAVAILABLE) == 0;
    const auto signalled = [&]() -> DWORD {
        DWORD i = 0;
        while (i < count && !objects[i]->Signalled(self))
            ++i;
        return i;
    };
    const auto ready = [&] {
        return signalled() < count || (desktop.Status(self, freshOnly) & wakeMask) != 0;
    };
    std::optional<platform::Scheduler::Milliseconds> due;
    if (milliseconds != INFINITE) due = scheduler.Now() + milliseconds;

    if ((wakeMask & QS_INPUT) == 0) {
        if (!scheduler.BlockUntil(call.Name(), ready, due)) return WAIT_TIMEOUT;
    } else {
        // Whoever waits for input waits for the user.
        bool asked = false;
        while (!ready()) {
            if (!desktop.WaitWithUser(call.Name(), ready, due, asked)) return WAIT_TIMEOUT;
        }
    }
    const DWORD index = signalled();
    if (index < count)
        objects[index]->Take(self);
    else
        desktop.ForgetFresh();
    return WAIT_OBJECT_0 + index;
}
