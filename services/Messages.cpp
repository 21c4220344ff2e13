#include "Messages.h"

#include "LibraryState.h"

#include <strsafe.h>

namespace {

constexpr DWORD kLanguage = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
constexpr size_t kMessageCapacity = 512;  // characters, with terminator
constexpr UINT kStringsPerBlock = 16;

// The string at `index` of a block: strings follow each other, each after its length in characters.
// Null when the block, of `count` characters, ends before it.
const WCHAR* FindBlockString(const WCHAR* block, size_t count, UINT index) {
    size_t at = 0;
    for (; at < count; at += 1 + block[at]) {
        if (count - at - 1 < block[at]) return nullptr;
        if (index-- == 0) return block + at;
    }
    return nullptr;
}

}  // namespace

bool LoadResourceString(HINSTANCE module, UINT id, ScopedBstr& text) {
    text.Reset();
    const HRSRC resource =
        FindResourceW(module, MAKEINTRESOURCEW(id / kStringsPerBlock + 1), RT_STRING);
    if (!resource) return false;
    const HGLOBAL loaded = LoadResource(module, resource);
    if (!loaded) return false;
    const auto* block = static_cast<const WCHAR*>(LockResource(loaded));
    if (!block) return false;

    const size_t count = SizeofResource(module, resource) / sizeof(WCHAR);
    const WCHAR* string = FindBlockString(block, count, id % kStringsPerBlock);
    if (!string || *string == 0) return false;
    text.Reset(SysAllocStringLen(string + 1, *string));
    if (!text) ThrowHresult(E_OUTOFMEMORY);
    return true;
}

bool FormatResourceMessage(UINT id, ScopedBstr& text, const LPCWSTR* arguments) {
    ScopedBstr format;
    if (!LoadResourceString(Library().moduleHandle, id, format)) return false;
    WCHAR message[kMessageCapacity];
    if (FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, format.Get(), 0,
                       kLanguage, message, ARRAYSIZE(message),
                       reinterpret_cast<va_list*>(const_cast<WCHAR**>(arguments))) == 0)
        return false;
    text = AllocateText(message);
    return true;
}

void ShowErrorMessage(UINT id, const LPCWSTR* arguments) {
    ScopedBstr text;
    if (!FormatResourceMessage(id, text, arguments)) return;
    MessageBoxW(GetForegroundWindow(), text.Get(), TEXT("Error"), MB_TASKMODAL | MB_ICONHAND);
}

void ShowSystemErrorMessage(UINT id, DWORD error) {
    ScopedLocal<WCHAR> systemText;
    if (FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                           FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, error, kLanguage, reinterpret_cast<LPWSTR>(systemText.Receive()), 0,
                       nullptr) == 0) {
        ShowHexErrorMessage(id, error);
        return;
    }
    const LPCWSTR arguments[] = {systemText.Get()};
    ShowErrorMessage(id, arguments);
}

void ShowHexErrorMessage(UINT id, DWORD code) {
    WCHAR number[12];
    StringCchPrintfW(number, ARRAYSIZE(number), TEXT("0x%X"), static_cast<UINT>(code));
    const LPCWSTR arguments[] = {number};
    ShowErrorMessage(id, arguments);
}

int ShowMessage(HWND owner, UINT id, LPCWSTR caption, UINT style,
                std::initializer_list<LPCWSTR> arguments) {
    ScopedBstr text;
    if (!FormatResourceMessage(id, text, arguments.begin())) return 0;
    return MessageBoxW(owner, text.Get(), caption, style);
}

int ShowCaptionedMessage(HWND owner, LPCWSTR text, UINT captionId, UINT style) {
    const LPCWSTR arguments[] = {TEXT("")};
    ScopedBstr caption;
    FormatResourceMessage(captionId, caption, arguments);
    return MessageBoxW(owner, text, caption ? caption.Get() : TEXT(""), style);
}
