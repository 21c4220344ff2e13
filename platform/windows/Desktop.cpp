#include "Desktop.h"

#include <winerror.h>
#include <algorithm>
#include <utility>

#include "Call.h"

namespace platform {

int CopyText(std::u16string_view text, char16_t* buffer, int capacity) {
    if (buffer == nullptr || capacity <= 0) return 0;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(capacity) - 1);
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = u'\0';
    return static_cast<int>(length);
}

LRESULT Window::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETTEXT: {
            const auto* given = reinterpret_cast<const char16_t*>(lParam);
            text = given ? given : u"";
            return TRUE;
        }
        case WM_GETTEXT:
            return CopyText(text, reinterpret_cast<char16_t*>(lParam), static_cast<int>(wParam));
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(text.size());
        case WM_SETFONT:
            font = wParam;
            return 0;
        case WM_GETFONT:
            return static_cast<LRESULT>(font);
        case WM_CLOSE:
            TheDesktop().Destroy(handle);
            return 0;
        default:
            return 0;
    }
}

void Window::Command(UINT notification) const {
    const WPARAM idAndCode = MAKEWPARAM(id, notification);
    TheDesktop().Send(parent, WM_COMMAND, idAndCode, reinterpret_cast<LPARAM>(handle));
}

LRESULT Window::Notify(NMHDR& header, UINT code) const {
    header = {handle, static_cast<UINT_PTR>(id), code};
    return TheDesktop().Send(parent, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

Desktop& TheDesktop() {
    return Machine::Current().Get<Desktop>();
}

Desktop::Desktop() {
    AddButtonClass(*this);
    AddStaticClass(*this);
    AddEditClass(*this);
    AddListBoxClass(*this);
    AddComboBoxClass(*this);
    AddListViewClass(*this);
    AddTabControlClass(*this);
    AddDialogClass(*this);
}

void Desktop::AddClass(std::u16string name, Factory make) {
    m_classes.insert_or_assign(std::move(name), make);
}

void Desktop::RemoveClass(const std::u16string& name) {
    m_classes.erase(name);
}

HWND Desktop::Create(const Creation& creation) {
    const auto found = m_classes.find(creation.className);
    if (found == m_classes.end()) {
        Call::SetLast(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    Creation named = creation;
    named.className = found->first;  // in the class's own spelling
    return Create(found->second(), named);
}

HWND Desktop::Create(std::shared_ptr<Window> window, const Creation& creation) {
    const std::shared_ptr<Window> related = Find(creation.parent);
    const bool child = (creation.style & WS_CHILD) != 0;
    if (!related && (child || creation.parent != nullptr)) {
        Call::SetLast(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    window->handle = reinterpret_cast<HWND>(m_nextHandle);
    m_nextHandle += 2;
    window->className = creation.className;
    window->text = creation.text;
    window->style = creation.style & ~static_cast<DWORD>(WS_VISIBLE);
    window->exStyle = creation.exStyle;
    window->id = creation.id;
    window->rect = creation.rect;
    window->thread = Machine::Current().scheduler.CurrentThread();
    if (child)
        window->parent = creation.parent;
    else
        window->owner = TopLevel(creation.parent);
    window->OnCreate(creation);

    const HWND handle = window->handle;
    m_windows.emplace(handle, std::move(window));
    if (child) related->children.push_back(handle);
    if ((creation.style & WS_VISIBLE) != 0) Show(handle, true);
    return handle;
}

std::shared_ptr<Window> Desktop::Find(HWND window) const {
    const auto found = m_windows.find(window);
    return found == m_windows.end() ? nullptr : found->second;
}

void Desktop::Destroy(HWND handle) {
    const std::shared_ptr<Window> window = Find(handle);
    if (!window || window->destroyed) return;
    window->destroyed = true;
    const std::vector<HWND> others = TopLevels();
    for (const HWND other : others) {
        const std::shared_ptr<Window> owned = Find(other);
        if (owned && owned->owner == handle) Destroy(other);
    }
    if (m_foreground == handle) PassForegroundOn(handle);
    Send(handle, WM_DESTROY);
    const std::vector<HWND> children = window->children;
    for (const HWND child : children)
        Destroy(child);
    Send(handle, WM_NCDESTROY);
    Remove(handle);
}

void Desktop::Remove(HWND handle) {
    const std::shared_ptr<Window> window = Find(handle);
    if (const std::shared_ptr<Window> parent = Find(window->parent))
        std::erase(parent->children, handle);
    for (auto& [thread, queue] : m_queues) {
        std::erase_if(queue.posted, [&](const MSG& message) { return message.hwnd == handle; });
        if (queue.focus == handle) queue.focus = nullptr;
    }
    m_windows.erase(handle);
    Machine::Current().ledger.Strike("window", handle);
}

HWND Desktop::Item(HWND dialog, LONG_PTR id) const {
    const std::shared_ptr<Window> window = Find(dialog);
    if (!window) return nullptr;
    for (const HWND handle : window->children) {
        const std::shared_ptr<Window> child = Find(handle);
        if (child && static_cast<int>(child->id) == static_cast<int>(id)) return handle;
    }
    return nullptr;
}

HWND Desktop::TopLevel(HWND handle) const {
    for (std::shared_ptr<Window> window = Find(handle); window; window = Find(window->parent)) {
        if (!window->IsChild()) return window->handle;
    }
    return nullptr;
}

std::vector<HWND> Desktop::TopLevels() const {
    std::vector<const Window*> found;
    for (const auto& [handle, window] : m_windows) {
        if (!window->IsChild()) found.push_back(window.get());
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const Window* a, const Window* b) { return a->activated > b->activated; });
    std::vector<HWND> handles;
    handles.reserve(found.size());
    for (const Window* window : found)
        handles.push_back(window->handle);
    return handles;
}

bool Desktop::IsVisible(HWND handle) const {
    std::shared_ptr<Window> window = Find(handle);
    if (!window) return false;
    for (; window; window = Find(window->parent)) {
        if (!window->HasStyle(WS_VISIBLE)) return false;
    }
    return true;
}

POINT Desktop::Origin(HWND handle) const {
    POINT origin = {};
    for (std::shared_ptr<Window> window = Find(handle); window; window = Find(window->parent)) {
        origin.x += window->rect.left;
        origin.y += window->rect.top;
    }
    return origin;
}

void Desktop::Show(HWND handle, bool show) {
    const std::shared_ptr<Window> window = Find(handle);
    if (!window || window->HasStyle(WS_VISIBLE) == show) return;
    window->style ^= WS_VISIBLE;
    if (window->IsChild()) return;
    if (show)
        Activate(handle);
    else if (m_foreground == handle)
        PassForegroundOn(handle);
}

bool Desktop::Enable(HWND handle, bool enable) {
    const std::shared_ptr<Window> window = Find(handle);
    if (!window) return false;
    const bool wasDisabled = !window->IsEnabled();
    if (wasDisabled == enable) {
        if (!enable && Focus() == handle) SetFocus(nullptr);
        window->style ^= WS_DISABLED;
        Send(handle, WM_ENABLE, enable);
    }
    return wasDisabled;
}

void Desktop::Activate(HWND handle) {
    const std::shared_ptr<Window> window = Find(handle);
    if (!window) return;
    window->activated = m_nextActivation++;
    m_foreground = handle;
}

// The foreground leaves a window: to its owner, else to the next window that can have it.
void Desktop::PassForegroundOn(HWND from) {
    const auto canHave = [&](HWND candidate) {
        const std::shared_ptr<Window> window = Find(candidate);
        return window && candidate != from && window->HasStyle(WS_VISIBLE) && window->IsEnabled() &&
               !window->destroyed;
    };
    const HWND owner = Find(from)->owner;
    m_foreground = nullptr;
    if (canHave(owner)) return Activate(owner);
    for (const HWND next : TopLevels()) {
        if (canHave(next)) return Activate(next);
    }
}

ModalScope::ModalScope(HWND owner, bool task) {
    Desktop& desktop = TheDesktop();
    std::vector<HWND> windows;
    if (owner != nullptr)
        windows.push_back(desktop.TopLevel(owner));
    else if (task)
        windows = desktop.TopLevels();
    const unsigned thread = Machine::Current().scheduler.CurrentThread();
    for (const HWND handle : windows) {
        const std::shared_ptr<Window> window = desktop.Find(handle);
        if (!window || !window->IsEnabled() || (!owner && window->thread != thread)) continue;
        desktop.Enable(handle, false);
        m_disabled.push_back(handle);
    }
}

void ModalScope::End() {
    for (const HWND window : m_disabled)
        TheDesktop().Enable(window, true);
    m_disabled.clear();
}

}  // namespace platform
