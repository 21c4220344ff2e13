#include "ModalDialog.h"

#include "../resources/resource.h"
#include "LibraryState.h"
#include "Messages.h"

INT_PTR ModalDialog::Show(WORD dialogTemplate, HWND owner) {
    const INT_PTR result = DialogBoxParamW(Library().moduleHandle, MAKEINTRESOURCEW(dialogTemplate),
                                           owner, Procedure, reinterpret_cast<LPARAM>(this));
    m_window = nullptr;
    if (result == -1) ShowMessage(owner, IDS_DIALOG_FAILED, TEXT("Error"), MB_ICONHAND);
    return result;
}

INT_PTR CALLBACK ModalDialog::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        auto* dialog = reinterpret_cast<ModalDialog*>(lParam);
        dialog->m_window = window;
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        return dialog->OnStart();
    }
    auto* dialog = reinterpret_cast<ModalDialog*>(GetWindowLongPtrW(window, DWLP_USER));
    if (dialog && message == WM_COMMAND) dialog->OnCommand(LOWORD(wParam), HIWORD(wParam));
    return FALSE;
}
