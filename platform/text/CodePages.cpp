// Conversion between code pages, and ordinal comparison.

#include "CodePages.h"

#include <algorithm>

#include <stringapiset.h>
#include <winerror.h>
#include <winnls.h>

#include "Call.h"
#include "Text.h"

namespace platform {
namespace {

// What stands at 0x80 to 0x9F. The five free places map to the control of that number.
constexpr char16_t ansiBlock[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// The byte of a character, or -1 when the code page lacks it.
int AnsiByte(char16_t unit) {
    if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) return unit;
    const auto* found = std::find(std::begin(ansiBlock), std::end(ansiBlock), unit);
    return found == std::end(ansiBlock) ? -1 : 0x80 + static_cast<int>(found - ansiBlock);
}

bool IsAnsi(UINT codePage) {
    return codePage == CP_ACP || codePage == CP_THREAD_ACP || codePage == ansiCodePage;
}

std::string Narrow(std::u16string_view text, char substitute, bool* lossy) {
    std::string narrow;
    narrow.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const int byte = AnsiByte(text[at]);
        narrow.push_back(byte < 0 ? substitute : static_cast<char>(byte));
        if (byte < 0 && lossy != nullptr) *lossy = true;
        const bool pair = (text[at] & 0xFC00) == 0xD800 && at + 1 < text.size() &&
                          (text[at + 1] & 0xFC00) == 0xDC00;
        if (pair) ++at;
    }
    return narrow;
}

// Gives a conversion's result as the system does: the length alone without a buffer, and what fits
// when the buffer is short.
template <class C>
int Give(const std::basic_string<C>& text, C* buffer, int capacity) {
    const auto size = static_cast<int>(text.size());
    if (capacity == 0) return size;
    text.copy(buffer, static_cast<std::size_t>(std::min(size, capacity)));
    if (size <= capacity) return size;
    Call::SetLast(ERROR_INSUFFICIENT_BUFFER);
    return 0;
}

int Refuse(DWORD error) {
    Call::SetLast(error);
    return 0;
}

// The text with its terminator when the length is negative. Nothing for parameters that no
// conversion takes.
template <class C, class D>
bool TakeSource(const C* source, int length, const D* destination, int capacity,
                std::basic_string_view<C>& text) {
    const auto* from = static_cast<const void*>(source);
    if (source == nullptr || length == 0 || capacity < 0) return false;
    if (capacity != 0 && (destination == nullptr || from == destination)) return false;
    text = length < 0
               ? std::basic_string_view<C>(source, std::basic_string_view<C>(source).size() + 1)
               : std::basic_string_view<C>(source, static_cast<std::size_t>(length));
    return true;
}

}  // namespace

char16_t FromAnsi(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x80 && value < 0xA0 ? ansiBlock[value - 0x80] : value;
}

std::u16string FromAnsi(std::string_view text) {
    std::u16string wide;
    wide.reserve(text.size());
    for (const char byte : text)
        wide.push_back(FromAnsi(byte));
    return wide;
}

std::string ToAnsi(std::u16string_view text, bool* lossy) {
    return Narrow(text, '?', lossy);
}

}  // namespace platform

using platform::Call;

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR multiByte, int bytes, LPWSTR wide,
                               int capacity) {
    Call call("MultiByteToWideChar", nullptr, ERROR_NO_UNICODE_TRANSLATION);
    if (call.Failed()) return call.With(0);
    std::string_view source;
    if (!platform::TakeSource(multiByte, bytes, wide, capacity, source))
        return platform::Refuse(ERROR_INVALID_PARAMETER);
    const bool utf8 = codePage == CP_UTF8;
    if (!utf8 && !platform::IsAnsi(codePage)) return platform::Refuse(ERROR_INVALID_PARAMETER);
    const DWORD known = MB_ERR_INVALID_CHARS | (utf8 ? 0 : MB_PRECOMPOSED);
    if ((flags & ~known) != 0) return platform::Refuse(ERROR_INVALID_FLAGS);
    const std::u16string text = utf8 ? platform::FromUtf8(source) : platform::FromAnsi(source);
    // Only what is well-formed comes back the same.
    if (utf8 && (flags & MB_ERR_INVALID_CHARS) != 0 && platform::ToUtf8(text) != source)
        return platform::Refuse(ERROR_NO_UNICODE_TRANSLATION);
    return platform::Give(text, wide, capacity);
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int characters,
                               LPSTR multiByte, int capacity, LPCSTR defaultChar,
                               LPBOOL usedDefaultChar) {
    Call call("WideCharToMultiByte", nullptr, ERROR_NO_UNICODE_TRANSLATION);
    if (call.Failed()) return call.With(0);
    std::u16string_view source;
    if (!platform::TakeSource(wide, characters, multiByte, capacity, source))
        return platform::Refuse(ERROR_INVALID_PARAMETER);
    if (codePage == CP_UTF8) {
        if (defaultChar != nullptr || usedDefaultChar != nullptr)
            return platform::Refuse(ERROR_INVALID_PARAMETER);
        if ((flags & ~DWORD{WC_ERR_INVALID_CHARS}) != 0)
            return platform::Refuse(ERROR_INVALID_FLAGS);
        const std::string text = platform::ToUtf8(source);
        if (flags != 0 && platform::FromUtf8(text) != source)
            return platform::Refuse(ERROR_NO_UNICODE_TRANSLATION);
        return platform::Give(text, multiByte, capacity);
    }
    if (!platform::IsAnsi(codePage)) return platform::Refuse(ERROR_INVALID_PARAMETER);
    if ((flags & ~DWORD{WC_NO_BEST_FIT_CHARS}) != 0) return platform::Refuse(ERROR_INVALID_FLAGS);
    bool lossy = false;
    const std::string text =
        platform::Narrow(source, defaultChar != nullptr ? *defaultChar : '?', &lossy);
    if (usedDefaultChar != nullptr) *usedDefaultChar = lossy;
    return platform::Give(text, multiByte, capacity);
}

int WINAPI CompareStringOrdinal(LPCWSTR first, int firstLength, LPCWSTR second, int secondLength,
                                BOOL ignoreCase) {
    if (first == nullptr || second == nullptr || firstLength < -1 || secondLength < -1)
        return platform::Refuse(ERROR_INVALID_PARAMETER);
    const auto view = [](LPCWSTR text, int length) {
        return length < 0 ? std::u16string_view(text)
                          : std::u16string_view(text, static_cast<std::size_t>(length));
    };
    const std::u16string_view a = view(first, firstLength);
    const std::u16string_view b = view(second, secondLength);
    const int order = ignoreCase ? platform::CompareNoCase(a, b) : a.compare(b);
    return order == 0 ? CSTR_EQUAL : (order < 0 ? CSTR_LESS_THAN : CSTR_GREATER_THAN);
}
