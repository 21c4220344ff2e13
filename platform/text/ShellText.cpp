// Small text functions of the shell and the user interface.

#include <string_view>

#include <shlwapi.h>
#include <winbase.h>
#include <winuser.h>

#include "Text.h"

namespace {

bool IsDecimal(WCHAR unit) {
    return unit >= u'0' && unit <= u'9';
}

// The value of a hexadecimal digit, or -1.
int HexValue(WCHAR unit) {
    if (IsDecimal(unit)) return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    return -1;
}

}  // namespace

// A number too large for an int keeps its low 32 bits; what follows the digits is ignored. A
// hexadecimal number has no sign: one before it is dropped.
BOOL WINAPI StrToIntExW(PCWSTR text, STIF_FLAGS flags, int* number) {
    if (text == nullptr || number == nullptr) return FALSE;
    while (*text == u' ' || *text == u'\t' || *text == u'\n')
        ++text;
    const bool negative = *text == u'-';
    if (*text == u'-' || *text == u'+') ++text;
    unsigned value = 0;
    const bool prefixed = text[0] == u'0' && (text[1] == u'x' || text[1] == u'X');
    if ((flags & STIF_SUPPORT_HEX) != 0 && prefixed) {
        text += 2;
        if (HexValue(*text) < 0) return FALSE;
        for (; HexValue(*text) >= 0; ++text)
            value = value * 16 + static_cast<unsigned>(HexValue(*text));
        *number = static_cast<int>(value);
        return TRUE;
    }
    if (!IsDecimal(*text)) return FALSE;
    for (; IsDecimal(*text); ++text)
        value = value * 10 + static_cast<unsigned>(*text - u'0');
    *number = static_cast<int>(negative ? 0 - value : value);
    return TRUE;
}

int WINAPI lstrlenW(LPCWSTR text) {
    return text == nullptr ? 0 : static_cast<int>(std::u16string_view(text).size());
}

DWORD WINAPI CharLowerBuffW(LPWSTR text, DWORD length) {
    for (DWORD at = 0; at < length; ++at)
        text[at] = platform::DownCase(text[at]);
    return length;
}

DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD length) {
    for (DWORD at = 0; at < length; ++at)
        text[at] = platform::UpCase(text[at]);
    return length;
}
