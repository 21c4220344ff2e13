// The functions for windows.

#include <winerror.h>
#include <winuser.h>

#include "Call.h"
#include "Desktop.h"

using platform::Call;
using platform::Desktop;
using platform::TheDesktop;
using platform::Window;

namespace {

// Looks the window up; a missing one sets the last error.
std::shared_ptr<Window> Existing(HWND handle) {
    std::shared_ptr<Window> window = TheDesktop().Find(handle);
    if (!window) Call::SetLast(ERROR_INVALID_WINDOW_HANDLE);
    return window;
}

RECT AtOrigin(const Window& window) {
    return {0, 0, window.rect.right - window.rect.left, window.rect.bottom - window.rect.top};
}

// The word behind an index of GetWindowLongPtrW, for reading and writing; null for one that isn't
// kept in a word of its own.
LONG_PTR* Word(Window& window, int index) {
    if (index >= 0) return window.Extra(index);
    switch (index) {
        case GWLP_USERDATA:
            return &window.userData;
        case GWLP_ID:
            return &window.id;
        default:
            return nullptr;
    }
}

DWORD* Style(Window& window, int index) {
    switch (index) {
        case GWL_STYLE:
            return &window.style;
        case GWL_EXSTYLE:
            return &window.exStyle;
        default:
            return nullptr;
    }
}

HWND Neighbour(const Window& window, int step) {
    const std::shared_ptr<Window> parent = TheDesktop().Find(window.parent);
    const std::vector<HWND> row = parent ? parent->children : TheDesktop().TopLevels();
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (row[i] != window.handle) continue;
        if (step < 0) return i == 0 ? nullptr : row[i - 1];
        return i + 1 == row.size() ? nullptr : row[i + 1];
    }
    return nullptr;
}

}  // namespace

BOOL WINAPI DestroyWindow(HWND handle) {
    Call call("DestroyWindow");
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return FALSE;
    if (window->thread != call.machine.scheduler.CurrentThread()) {
        Call::SetLast(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    TheDesktop().Destroy(handle);
    return TRUE;
}

LRESULT WINAPI DefWindowProcW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Call call("DefWindowProcW");
    const std::shared_ptr<Window> window = Existing(handle);
    return window ? window->Window::OnMessage(message, wParam, lParam) : 0;
}

BOOL WINAPI IsWindow(HWND handle) {
    Call call("IsWindow");
    return TheDesktop().Find(handle) != nullptr;
}

BOOL WINAPI EnableWindow(HWND handle, BOOL enable) {
    Call call("EnableWindow");
    return Existing(handle) && TheDesktop().Enable(handle, enable != FALSE);
}

BOOL WINAPI IsWindowEnabled(HWND handle) {
    Call call("IsWindowEnabled");
    const std::shared_ptr<Window> window = Existing(handle);
    return window && window->IsEnabled();
}

BOOL WINAPI ShowWindow(HWND handle, int command) {
    Call call("ShowWindow");
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return FALSE;
    const bool wasVisible = window->HasStyle(WS_VISIBLE);
    TheDesktop().Show(handle, command != SW_HIDE);
    return wasVisible;
}

BOOL WINAPI IsWindowVisible(HWND handle) {
    Call call("IsWindowVisible");
    return TheDesktop().IsVisible(handle);
}

BOOL WINAPI SetWindowTextW(HWND handle, LPCWSTR text) {
    Call call("SetWindowTextW", text);
    if (call.Failed()) return call.With(FALSE);
    if (!Existing(handle)) return FALSE;
    return TheDesktop().Send(handle, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) > 0;
}

int WINAPI GetWindowTextW(HWND handle, LPWSTR text, int capacity) {
    Call call("GetWindowTextW");
    if (text == nullptr || capacity <= 0) return 0;
    text[0] = u'\0';
    if (call.Failed()) return call.With(0);
    if (!Existing(handle)) return 0;
    return static_cast<int>(TheDesktop().Send(handle, WM_GETTEXT, static_cast<WPARAM>(capacity),
                                              reinterpret_cast<LPARAM>(text)));
}

int WINAPI GetWindowTextLengthW(HWND handle) {
    Call call("GetWindowTextLengthW");
    if (call.Failed()) return call.With(0);
    if (!Existing(handle)) return 0;
    return static_cast<int>(TheDesktop().Send(handle, WM_GETTEXTLENGTH));
}

LONG_PTR WINAPI GetWindowLongPtrW(HWND handle, int index) {
    Call call("GetWindowLongPtrW");
    if (call.Failed()) return call.With<LONG_PTR>(0);
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return 0;
    if (const DWORD* style = Style(*window, index)) return *style;
    const LONG_PTR* word = Word(*window, index);
    if (!word) return Call::SetLast(ERROR_INVALID_INDEX), 0;
    return *word;
}

LONG_PTR WINAPI SetWindowLongPtrW(HWND handle, int index, LONG_PTR value) {
    Call call("SetWindowLongPtrW");
    if (call.Failed()) return call.With<LONG_PTR>(0);
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return 0;
    if (DWORD* style = Style(*window, index)) {
        const DWORD before = *style;
        *style = static_cast<DWORD>(value);
        return before;
    }
    LONG_PTR* word = Word(*window, index);
    if (!word) return Call::SetLast(ERROR_INVALID_INDEX), 0;
    return std::exchange(*word, value);
}

HWND WINAPI GetParent(HWND handle) {
    Call call("GetParent");
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return nullptr;
    if (window->IsChild()) return window->parent;
    return window->HasStyle(WS_POPUP) ? window->owner : nullptr;
}

HWND WINAPI GetWindow(HWND handle, UINT relation) {
    Call call("GetWindow");
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return nullptr;
    switch (relation) {
        case GW_HWNDNEXT:
            return Neighbour(*window, 1);
        case GW_HWNDPREV:
            return Neighbour(*window, -1);
        case GW_OWNER:
            return window->owner;
        case GW_CHILD:
            return window->children.empty() ? nullptr : window->children.front();
        default:
            Call::SetLast(ERROR_INVALID_PARAMETER);
            return nullptr;
    }
}

int WINAPI GetClassNameW(HWND handle, LPWSTR text, int capacity) {
    Call call("GetClassNameW");
    const std::shared_ptr<Window> window = Existing(handle);
    return window ? platform::CopyText(window->className, text, capacity) : 0;
}

HWND WINAPI GetForegroundWindow() {
    Call call("GetForegroundWindow");
    return call.Failed() ? nullptr : TheDesktop().Foreground();
}

HWND WINAPI GetFocus() {
    Call call("GetFocus");
    return TheDesktop().Focus();
}

HWND WINAPI SetFocus(HWND handle) {
    Call call("SetFocus");
    const HWND before = TheDesktop().Focus();
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window || window->thread != call.machine.scheduler.CurrentThread()) return nullptr;
    TheDesktop().SetFocus(handle);
    return before;
}

HWND WINAPI GetLastActivePopup(HWND handle) {
    Call call("GetLastActivePopup");
    const Desktop& desktop = TheDesktop();
    for (const HWND candidate : desktop.TopLevels()) {
        if (!desktop.Find(candidate)->HasStyle(WS_VISIBLE)) continue;
        for (HWND window = candidate; window != nullptr; window = desktop.Find(window)->owner) {
            if (window == handle) return candidate;
        }
    }
    return handle;
}

BOOL WINAPI GetWindowRect(HWND handle, LPRECT rect) {
    Call call("GetWindowRect");
    if (call.Failed()) return call.With(FALSE);
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return FALSE;
    const POINT origin = TheDesktop().Origin(handle);
    const RECT size = AtOrigin(*window);
    *rect = {origin.x, origin.y, origin.x + size.right, origin.y + size.bottom};
    return TRUE;
}

BOOL WINAPI GetClientRect(HWND handle, LPRECT rect) {
    Call call("GetClientRect");
    if (call.Failed()) return call.With(FALSE);
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return FALSE;
    *rect = AtOrigin(*window);
    return TRUE;
}

BOOL WINAPI ScreenToClient(HWND handle, LPPOINT point) {
    Call call("ScreenToClient");
    if (call.Failed()) return call.With(FALSE);
    if (!Existing(handle)) return FALSE;
    const POINT origin = TheDesktop().Origin(handle);
    point->x -= origin.x;
    point->y -= origin.y;
    return TRUE;
}

int WINAPI MapWindowPoints(HWND from, HWND to, LPPOINT points, UINT count) {
    Call call("MapWindowPoints");
    const POINT source = TheDesktop().Origin(from);
    const POINT target = TheDesktop().Origin(to);
    const POINT shift = {source.x - target.x, source.y - target.y};
    for (UINT i = 0; i < count; ++i) {
        points[i].x += shift.x;
        points[i].y += shift.y;
    }
    return MAKELONG(shift.x, shift.y);
}

BOOL WINAPI MoveWindow(HWND handle, int x, int y, int width, int height, BOOL) {
    Call call("MoveWindow");
    if (call.Failed()) return call.With(FALSE);
    const std::shared_ptr<Window> window = Existing(handle);
    if (!window) return FALSE;
    window->rect = {x, y, x + width, y + height};
    return TRUE;
}

HCURSOR WINAPI LoadCursorW(HINSTANCE instance, LPCWSTR name) {
    Call call("LoadCursorW");
    if (call.Failed()) return call.With<HCURSOR>(nullptr);
    // Only the system's own; it keeps one handle for each.
    if (instance != nullptr || (name != IDC_ARROW && name != IDC_WAIT)) {
        Call::SetLast(ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<HCURSOR>(reinterpret_cast<ULONG_PTR>(name));
}

HCURSOR WINAPI SetCursor(HCURSOR cursor) {
    Call call("SetCursor");
    return std::exchange(TheDesktop().cursor, cursor);
}
