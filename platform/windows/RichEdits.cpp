#include "RichEdits.h"

#include <richedit.h>
#include <winnt.h>
#include <algorithm>

#include "CodePages.h"
#include "Desktop.h"
#include "Rtf.h"
#include "Text.h"

namespace platform {
namespace {

constexpr UINT kWideCodePage = 1200;
constexpr UINT kUtf8CodePage = 65001;
constexpr COLORREF kWhite = 0xFFFFFF;

// The text is kept as a rich edit of version 2 keeps it: paragraphs parted by CR.
std::u16string WithCr(std::u16string_view text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
        result.push_back(text[i] == u'\n' ? u'\r' : text[i]);
    }
    return result;
}

std::u16string WithCrLf(std::u16string_view text) {
    std::u16string result;
    for (const char16_t unit : text) {
        result.push_back(unit);
        if (unit == u'\r') result.push_back(u'\n');
    }
    return result;
}

std::u16string FromNarrow(std::string_view text, UINT codePage) {
    return codePage == kUtf8CodePage ? FromUtf8(text) : FromAnsi(text);
}

std::string ToNarrow(std::u16string_view text, UINT codePage) {
    return codePage == kUtf8CodePage ? ToUtf8(text) : ToAnsi(text);
}

bool IsRtf(std::string_view text) {
    return text.starts_with("{\\rtf");
}

class RichEdit : public Window {
  public:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::optional<LRESULT> FailureOf(UINT message) const override;

  private:
    LRESULT SetTextEx(const SETTEXTEX& how, const void* given);
    LRESULT GetTextEx(const GETTEXTEX& how, void* buffer) const;
    LRESULT TextLengthEx(const GETTEXTLENGTHEX& how) const;
    void SetWide(std::u16string_view given);

    COLORREF m_background = kWhite;
};

// The control holds a document with its last paragraph's end left out.
std::u16string TextOfDocument(std::string_view rtf) {
    std::u16string text = RtfToPlainText(rtf);
    if (text.ends_with(u'\n')) text.pop_back();
    return text;
}

void RichEdit::SetWide(std::u16string_view given) {
    const std::string narrow = ToAnsi(given);
    text = WithCr(IsRtf(narrow) ? TextOfDocument(narrow) : std::u16string(given));
}

LRESULT RichEdit::SetTextEx(const SETTEXTEX& how, const void* given) {
    if (given == nullptr) {
        text.clear();
    } else if (how.codepage == kWideCodePage) {
        SetWide(static_cast<const char16_t*>(given));
    } else {
        const std::string_view narrow = static_cast<const char*>(given);
        text = WithCr(IsRtf(narrow) ? TextOfDocument(narrow) : FromNarrow(narrow, how.codepage));
    }
    return TRUE;
}

LRESULT RichEdit::GetTextEx(const GETTEXTEX& how, void* buffer) const {
    const std::u16string given = (how.flags & GT_USECRLF) != 0 ? WithCrLf(text) : text;
    if (how.codepage == kWideCodePage)
        return CopyText(given, static_cast<char16_t*>(buffer),
                        static_cast<int>(how.cb / sizeof(char16_t)));
    const std::string narrow = ToNarrow(given, how.codepage);
    if (how.cb == 0) return 0;
    const std::size_t length = std::min<std::size_t>(narrow.size(), how.cb - 1);
    auto* target = static_cast<char*>(buffer);
    std::copy_n(narrow.begin(), length, target);
    target[length] = '\0';
    return static_cast<LRESULT>(length);
}

LRESULT RichEdit::TextLengthEx(const GETTEXTLENGTHEX& how) const {
    const std::u16string given = (how.flags & GTL_USECRLF) != 0 ? WithCrLf(text) : text;
    if (how.codepage != kWideCodePage)
        return static_cast<LRESULT>(ToNarrow(given, how.codepage).size());
    const auto units = static_cast<LRESULT>(given.size());
    return (how.flags & GTL_NUMBYTES) != 0 ? units * LRESULT{sizeof(char16_t)} : units;
}

std::optional<LRESULT> RichEdit::FailureOf(UINT message) const {
    if (message == EM_SETTEXTEX) return FALSE;
    return std::nullopt;
}

LRESULT RichEdit::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case EM_SETTEXTEX:
            return SetTextEx(*reinterpret_cast<const SETTEXTEX*>(wParam),
                             reinterpret_cast<const void*>(lParam));
        case EM_GETTEXTEX:
            return GetTextEx(*reinterpret_cast<const GETTEXTEX*>(wParam),
                             reinterpret_cast<void*>(lParam));
        case EM_GETTEXTLENGTHEX:
            return TextLengthEx(*reinterpret_cast<const GETTEXTLENGTHEX*>(wParam));
        case EM_SETBKGNDCOLOR: {
            const COLORREF colour = wParam != 0 ? kWhite : static_cast<COLORREF>(lParam);
            return static_cast<LRESULT>(std::exchange(m_background, colour));
        }
        case EM_SETREADONLY:
            style = wParam ? style | ES_READONLY : style & ~static_cast<DWORD>(ES_READONLY);
            return TRUE;
        case WM_SETTEXT: {
            const auto* given = reinterpret_cast<const char16_t*>(lParam);
            SetWide(given ? std::u16string_view(given) : std::u16string_view());
            return TRUE;
        }
        case WM_GETTEXT:
            return CopyText(WithCrLf(text), reinterpret_cast<char16_t*>(lParam),
                            static_cast<int>(wParam));
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(WithCrLf(text).size());
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

BOOL WINAPI Entry(HINSTANCE, DWORD reason, LPVOID) {
    for (const char16_t* name : {u"RichEdit20W", u"RichEdit20A"}) {
        if (reason == DLL_PROCESS_ATTACH)
            TheDesktop().AddClass(name, [] { return std::shared_ptr<Window>(new RichEdit); });
        else if (reason == DLL_PROCESS_DETACH)
            TheDesktop().RemoveClass(name);
    }
    return TRUE;
}

}  // namespace

ModuleImage RichEditImage() {
    return {u"Riched20.dll", &Entry, {}, {}};
}

}  // namespace platform
