// Any bytes as a help file, each topic of which goes through the library into the control, and as a
// topic's text.

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <richedit.h>
#include <windows.h>

#include "HelpDocument.h"
#include "Machine.h"
#include "Rtf.h"
#include "Text.h"
#include "XmlTree.h"

// The control, apart from its window: shows what it is sent.
LRESULT WINAPI SendMessageW(HWND, UINT message, WPARAM, LPARAM text) {
    if (message != EM_SETTEXTEX || text == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(text));
    if (platform::RtfToPlainText(bytes).size() <= bytes.size()) return TRUE;
    std::fputs("more is shown than was sent\n", stderr);
    std::abort();
}

// Out of memory.
void WINAPI RaiseException(DWORD, DWORD, DWORD, const ULONG_PTR*) {
    std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static platform::Machine s_machine;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    SetRichEditText(nullptr, platform::FromUtf8(bytes).c_str());
    platform::XmlReader reader(size % 2 != 0);
    if (!reader.Feed(bytes)) return 0;
    const auto tree = reader.Finish();
    if (!tree) return 0;
    for (const std::size_t place : tree->Find(u"*"))
        SetRichEditText(nullptr, tree->Text(place).c_str());
    return 0;
}
