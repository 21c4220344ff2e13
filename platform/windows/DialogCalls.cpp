// The functions for dialogs and their controls.

#include <winerror.h>
#include <winuser.h>
#include <string>

#include "Call.h"
#include "Dialogs.h"

using platform::Call;
using platform::Dialog;
using platform::TheDesktop;
using platform::Window;

namespace {

// For faults and traces.
std::u16string Shown(const char16_t* name) {
    if (!IS_INTRESOURCE(name)) return name;
    return platform::FromUtf8(std::to_string(reinterpret_cast<ULONG_PTR>(name)));
}

// The child of that id; a missing one sets the last error.
HWND Item(HWND dialog, int id) {
    const HWND item = TheDesktop().Item(dialog, id);
    if (!item)
        Call::SetLast(TheDesktop().Find(dialog) ? ERROR_CONTROL_ID_NOT_FOUND
                                                : ERROR_INVALID_WINDOW_HANDLE);
    return item;
}

}  // namespace

INT_PTR WINAPI DialogBoxParamW(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter) {
    Call call("DialogBoxParamW", Shown(name).c_str(), ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<INT_PTR>(-1);
    if (owner && !TheDesktop().Find(owner)) return Call::SetLast(ERROR_INVALID_WINDOW_HANDLE), 0;
    const auto given = platform::LoadDialogTemplate(instance, name);
    if (!given) return -1;
    const HWND focus = TheDesktop().Focus();
    platform::ModalScope modal(owner);
    const HWND handle = platform::CreateDialogFrom(*given, instance, owner, procedure, parameter);
    const std::shared_ptr<Dialog> dialog = TheDesktop().Find<Dialog>(handle);
    if (!dialog) {
        const DWORD error = Call::GetLast();
        modal.End();
        Call::SetLast(error);
        return -1;
    }
    if (!dialog->ended) {
        dialog->modal = &modal;
        TheDesktop().Show(handle, true);
        TheDesktop().RunLoop(
            call.Name(), [&] { return dialog->ended || dialog->destroyed; },
            [&](const MSG& message) {
                return platform::IsWithin(message.hwnd, handle) &&
                       platform::HandleDialogKey(handle, message);
            });
    }
    modal.End();
    TheDesktop().Destroy(handle);
    if (TheDesktop().Find(focus)) TheDesktop().SetFocus(focus);
    return dialog->result;
}

HWND WINAPI CreateDialogParamW(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter) {
    Call call("CreateDialogParamW", Shown(name).c_str(), ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<HWND>(nullptr);
    const auto given = platform::LoadDialogTemplate(instance, name);
    if (!given) return nullptr;
    const HWND handle = platform::CreateDialogFrom(*given, instance, owner, procedure, parameter);
    if (!handle) return nullptr;
    call.machine.ledger.Enter("window", handle, call.Name());
    if ((given->style & WS_VISIBLE) != 0) TheDesktop().Show(handle, true);
    return handle;
}

BOOL WINAPI EndDialog(HWND handle, INT_PTR result) {
    Call call("EndDialog");
    const std::shared_ptr<Dialog> dialog = TheDesktop().Find<Dialog>(handle);
    if (!dialog) return Call::SetLast(ERROR_INVALID_WINDOW_HANDLE), FALSE;
    dialog->ended = true;
    dialog->result = result;
    // The owner is enabled first, so that it can become the foreground.
    if (dialog->modal) dialog->modal->End();
    TheDesktop().Show(handle, false);
    return TRUE;
}

BOOL WINAPI IsDialogMessageW(HWND dialog, LPMSG message) {
    Call call("IsDialogMessageW");
    if (!platform::IsWithin(message->hwnd, dialog)) return FALSE;
    if (!platform::HandleDialogKey(dialog, *message)) TheDesktop().Dispatch(*message);
    return TRUE;
}

BOOL WINAPI MapDialogRect(HWND handle, LPRECT rect) {
    Call call("MapDialogRect");
    const std::shared_ptr<Dialog> dialog = TheDesktop().Find<Dialog>(handle);
    if (!dialog) return Call::SetLast(ERROR_INVALID_WINDOW_HANDLE), FALSE;
    const RECT corner = dialog->units.ToPixels({0, 0, rect->left, rect->top});
    const RECT other = dialog->units.ToPixels({0, 0, rect->right, rect->bottom});
    *rect = {corner.right, corner.bottom, other.right, other.bottom};
    return TRUE;
}

HWND WINAPI GetDlgItem(HWND dialog, int id) {
    Call call("GetDlgItem", nullptr, ERROR_CONTROL_ID_NOT_FOUND);
    if (call.Failed()) return call.With<HWND>(nullptr);
    return Item(dialog, id);
}

int WINAPI GetDlgCtrlID(HWND handle) {
    Call call("GetDlgCtrlID");
    const std::shared_ptr<Window> window = TheDesktop().Find(handle);
    if (!window) return Call::SetLast(ERROR_INVALID_WINDOW_HANDLE), 0;
    return static_cast<int>(window->id);
}

BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check) {
    Call call("CheckDlgButton");
    if (call.Failed()) return call.With(FALSE);
    const HWND button = Item(dialog, id);
    if (!button) return FALSE;
    TheDesktop().Send(button, BM_SETCHECK, check);
    return TRUE;
}

UINT WINAPI IsDlgButtonChecked(HWND dialog, int id) {
    Call call("IsDlgButtonChecked");
    if (call.Failed()) return call.With(0U);
    return static_cast<UINT>(TheDesktop().Send(Item(dialog, id), BM_GETCHECK));
}

UINT WINAPI GetDlgItemTextW(HWND dialog, int id, LPWSTR text, int capacity) {
    Call call("GetDlgItemTextW");
    if (text == nullptr || capacity <= 0) return 0;
    text[0] = u'\0';
    if (call.Failed()) return call.With(0U);
    return static_cast<UINT>(TheDesktop().Send(Item(dialog, id), WM_GETTEXT,
                                               static_cast<WPARAM>(capacity),
                                               reinterpret_cast<LPARAM>(text)));
}
