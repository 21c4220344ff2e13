// The help panes of the tabs.

#include <richedit.h>

#include "HelpDocument.h"
#include "LibraryState.h"

#include <strsafe.h>

namespace {

constexpr COLORREF kHelpBackground = 0xD2FAFF;

void PrepareHelpControl(HWND richEdit) {
    SendMessageW(richEdit, EM_SETBKGNDCOLOR, 0, kHelpBackground);
}

}  // namespace

void ShowHelp(HWND richEdit, LPCWSTR key, LPCWSTR suffix) {
    PrepareHelpControl(richEdit);
    ShowHelpTopic(Library().helpDocument.get(), richEdit, key, suffix);
}

void ShowHelpSentence(HWND richEdit, LPCWSTR sentence) {
    PrepareHelpControl(richEdit);
    // Rich Text Format gives these characters a meaning of their own.
    WCHAR text[1024] = TEXT("{\\rtf1\\pard ");
    size_t length = 0;
    (void)StringCchLengthW(text, ARRAYSIZE(text), &length);
    for (; *sentence != 0 && length + 3 < ARRAYSIZE(text); ++sentence) {
        const WCHAR character = *sentence == TEXT('\n') ? TEXT(' ') : *sentence;
        if (character == TEXT('\\') || character == TEXT('{') || character == TEXT('}'))
            text[length++] = TEXT('\\');
        text[length++] = character;
    }
    text[length++] = TEXT('}');
    text[length] = 0;
    SetRichEditText(richEdit, text);
}
