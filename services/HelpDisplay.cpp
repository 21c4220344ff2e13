#include <richedit.h>
#include <memory>
#include <new>
#include <string_view>

#include "HelpDocument.h"
#include "Messages.h"

namespace {

// The text of the first element of that name, or null.
ScopedBstr FindTopic(IXMLDOMDocument* document, BSTR name) {
    ScopedReference<IXMLDOMNodeList> elements;
    ScopedReference<IXMLDOMNode> first;
    ScopedBstr text;
    LONG count = 0;
    if (FAILED(document->getElementsByTagName(name, elements.Receive())) || !elements ||
        FAILED(elements->get_length(&count)) || count < 1 ||
        FAILED(elements->get_item(0, first.Receive())) || !first ||
        FAILED(first->get_text(text.Receive())))
        return {};
    return text;
}

// The text with its terminator in the thread's code page, or null.
std::unique_ptr<char[]> ToMultiByte(std::basic_string_view<WCHAR> terminated) {
    const int length = static_cast<int>(terminated.size()) + 1;
    auto bytes = std::unique_ptr<char[]>(new (std::nothrow) char[static_cast<size_t>(length) * 2]);
    if (bytes && WideCharToMultiByte(CP_THREAD_ACP, 0, terminated.data(), length, bytes.get(),
                                     length * 2, nullptr, nullptr) == 0)
        bytes.reset();
    return bytes;
}

}  // namespace

void ShowHelpTopic(const HelpDocument* help, HWND richEdit, LPCWSTR key, LPCWSTR suffix) {
    // Names of standard keywords begin with an asterisk, which no element's name can.
    ScopedBstr name = AllocateText(*key == TEXT('*') ? key + 1 : key);
    const std::basic_string_view<WCHAR> tail(suffix ? suffix : TEXT(""));
    if (FAILED(AppendText(name, tail.data(), static_cast<int>(tail.size()))))
        ThrowHresult(E_OUTOFMEMORY);

    ScopedBstr topic;
    if (help && help->document) topic = FindTopic(help->document.Get(), name.Get());
    SetRichEditText(richEdit, topic ? topic.Get() : TEXT(""));
}

void SetRichEditText(HWND richEdit, LPCWSTR text) {
    const std::basic_string_view<WCHAR> whole(text);
    const size_t start = whole.find(TEXT('{'));
    std::unique_ptr<char[]> rich;
    if (start != whole.npos) rich = ToMultiByte(whole.substr(start));

    SETTEXTEX form = {};
    SendMessageW(richEdit, EM_SETTEXTEX, reinterpret_cast<WPARAM>(&form),
                 reinterpret_cast<LPARAM>(rich.get()));
}
