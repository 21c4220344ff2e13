#include "Dialogs.h"

#include <winerror.h>
#include <utility>

#include "Call.h"

namespace platform {
namespace {

constexpr const char16_t* kDialogClass = u"#32770";
// Stands for the font that a template names.
constexpr WPARAM kDialogFont = 0x0A0A0001;

// Messages whose answer is what the dialog procedure returns, not DWLP_MSGRESULT.
bool AnswersDirectly(UINT message) {
    return (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) ||
           message == WM_COMPAREITEM || message == WM_VKEYTOITEM || message == WM_CHARTOITEM ||
           message == WM_QUERYDRAGICON || message == WM_INITDIALOG;
}

// The dialog's own window from its template, in pixels.
Creation FrameOf(const DialogTemplate& given, const DialogUnits& units, HINSTANCE instance,
                 HWND parent) {
    Creation frame;
    frame.className = kDialogClass;
    frame.text = given.title;
    frame.style = given.style & ~static_cast<DWORD>(WS_VISIBLE);
    frame.exStyle = given.exStyle;
    frame.rect = units.ToPixels(given.rect);
    frame.parent = parent;
    frame.instance = instance;
    return frame;
}

Creation ControlOf(const DialogTemplate::Control& given, const DialogUnits& units,
                   HINSTANCE instance, HWND dialog) {
    Creation control;
    control.className = given.className;
    if (const auto* text = std::get_if<std::u16string>(&given.text))
        control.text = *text;
    else
        control.textOrdinal = std::get<WORD>(given.text);
    control.style = (given.style | WS_CHILD) & ~static_cast<DWORD>(WS_POPUP);
    control.exStyle = given.exStyle;
    control.rect = units.ToPixels(given.rect);
    control.parent = dialog;
    control.id = static_cast<LONG_PTR>(given.id);
    control.instance = instance;
    return control;
}

bool CanHaveFocus(const Window& control) {
    return control.HasStyle(WS_TABSTOP | WS_VISIBLE) && control.IsEnabled();
}

HWND FirstFocus(const Window& dialog) {
    for (const HWND child : dialog.children) {
        if (CanHaveFocus(*TheDesktop().Find(child))) return child;
    }
    return nullptr;
}

}  // namespace

LONG_PTR* Dialog::Extra(int offset) {
    if (offset % static_cast<int>(sizeof(LONG_PTR)) != 0) return nullptr;
    const auto index = static_cast<std::size_t>(offset) / sizeof(LONG_PTR);
    return index < std::size(m_words) ? &m_words[index] : nullptr;
}

LRESULT Dialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto procedure = reinterpret_cast<DLGPROC>(m_words[1]);
    if (!procedure) return Default(message, wParam, lParam);
    m_words[0] = 0;
    const INT_PTR answer = [&] {
        const CallbackScope inCallback;
        return procedure(handle, message, wParam, lParam);
    }();
    if (answer != 0) return AnswersDirectly(message) ? answer : m_words[0];
    return Default(message, wParam, lParam);
}

LRESULT Dialog::Default(UINT message, WPARAM wParam, LPARAM lParam) {
    Desktop& desktop = TheDesktop();
    switch (message) {
        case WM_CLOSE: {
            const HWND cancel = desktop.Item(handle, IDCANCEL);
            const std::shared_ptr<Window> button = desktop.Find(cancel);
            if (button && !button->IsEnabled()) return 0;
            desktop.Post(handle, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                         reinterpret_cast<LPARAM>(cancel));
            return 0;
        }
        case DM_GETDEFID:
            return m_defaultId == 0 ? 0 : MAKELONG(m_defaultId, DC_HASDEFID);
        case DM_SETDEFID:
            m_defaultId = static_cast<UINT>(wParam);
            return TRUE;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

HWND CreateDialogFrom(const DialogTemplate& given, HINSTANCE instance, HWND parent,
                      DLGPROC procedure, LPARAM parameter) {
    if (!given.className.empty() && !EqualNoCase(given.className, kDialogClass)) {
        Call::SetLast(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    Desktop& desktop = TheDesktop();
    const auto dialog = std::make_shared<Dialog>();
    dialog->units = UnitsOf(given);
    const HWND handle = desktop.Create(dialog, FrameOf(given, dialog->units, instance, parent));
    if (!handle) return nullptr;
    dialog->m_words[1] = reinterpret_cast<LONG_PTR>(procedure);

    const WPARAM font = given.fontSize ? kDialogFont : 0;
    if (font != 0) desktop.Send(handle, WM_SETFONT, font);
    for (const DialogTemplate::Control& item : given.controls) {
        const HWND control = desktop.Create(ControlOf(item, dialog->units, instance, handle));
        if (!control) {
            if ((given.style & DS_NOFAILCREATE) != 0) continue;
            const DWORD error = Call::GetLast();
            desktop.Destroy(handle);
            Call::SetLast(error);
            return nullptr;
        }
        if (font != 0) desktop.Send(control, WM_SETFONT, font, FALSE);
        const LRESULT code = desktop.Send(control, WM_GETDLGCODE);
        if ((code & DLGC_DEFPUSHBUTTON) != 0) dialog->m_defaultId = item.id;
    }

    const HWND focus = FirstFocus(*dialog);
    const LRESULT takesFocus =
        desktop.Send(handle, WM_INITDIALOG, reinterpret_cast<WPARAM>(focus), parameter);
    if (!desktop.Find(handle)) return nullptr;
    if (takesFocus != 0 && desktop.Find(focus)) desktop.SetFocus(focus);
    return handle;
}

bool IsWithin(HWND window, HWND other) {
    while (window != nullptr && window != other) {
        const std::shared_ptr<Window> found = TheDesktop().Find(window);
        window = found ? found->parent : nullptr;
    }
    return window != nullptr;
}

bool HandleDialogKey(HWND dialog, const MSG& message) {
    const bool isEnter = message.wParam == VK_RETURN;
    if (message.message != WM_KEYDOWN || (!isEnter && message.wParam != VK_ESCAPE)) return false;
    Desktop& desktop = TheDesktop();
    MSG copy = message;
    const LRESULT code =
        desktop.Send(message.hwnd, WM_GETDLGCODE, message.wParam, reinterpret_cast<LPARAM>(&copy));
    if ((code & DLGC_WANTMESSAGE) != 0) return false;
    int id = IDCANCEL;
    if (isEnter) {
        const LRESULT chosen = desktop.Send(dialog, DM_GETDEFID);
        id = HIWORD(chosen) == DC_HASDEFID ? LOWORD(chosen) : IDOK;
        constexpr LRESULT kPushButton = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;
        if ((code & kPushButton) != 0) id = static_cast<int>(desktop.Find(message.hwnd)->id);
    }
    const HWND button = desktop.Item(dialog, id);
    const std::shared_ptr<Window> found = desktop.Find(button);
    if (found && !found->IsEnabled()) return true;
    desktop.Send(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    return true;
}

void AddDialogClass(Desktop& desktop) {
    desktop.AddClass(kDialogClass, [] { return std::shared_ptr<Window>(new Dialog); });
}

}  // namespace platform
