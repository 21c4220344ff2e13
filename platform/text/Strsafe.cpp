// Bounded copying, appending and formatting.

#include "Formatting.h"

#include <string_view>

#include <winerror.h>
#include <strsafe.h>

namespace {

using platform::FormatText;
using platform::VariadicArguments;

bool IsSize(size_t size) {
    return size <= STRSAFE_MAX_CCH;
}

template <class C>
bool IsDestination(const C* destination, size_t capacity) {
    return destination != nullptr && capacity != 0 && IsSize(capacity);
}

// Fills the room from `used` on with as much of the text as fits.
template <class C>
HRESULT Put(C* destination, size_t capacity, size_t used, std::basic_string_view<C> text) {
    const size_t room = capacity - used - 1;
    const size_t fitting = text.size() < room ? text.size() : room;
    text.copy(destination + used, fitting);
    destination[used + fitting] = 0;
    return fitting == text.size() ? S_OK : STRSAFE_E_INSUFFICIENT_BUFFER;
}

// Looks no further than `most` characters.
template <class C>
std::basic_string_view<C> Bounded(const C* text, size_t most) {
    size_t length = 0;
    while (length < most && text[length] != 0)
        ++length;
    return {text, length};
}

// The source isn't read beyond what fits, as it may lack a terminator there.
template <class C>
HRESULT Copy(C* destination, size_t capacity, const C* source, size_t most) {
    if (!IsDestination(destination, capacity)) return STRSAFE_E_INVALID_PARAMETER;
    return Put(destination, capacity, 0, Bounded(source, most < capacity ? most : capacity));
}

template <class C>
HRESULT CopyBounded(C* destination, size_t capacity, const C* source, size_t most) {
    if (IsSize(most)) return Copy(destination, capacity, source, most);
    if (IsDestination(destination, capacity)) destination[0] = 0;
    return STRSAFE_E_INVALID_PARAMETER;
}

template <class C>
HRESULT Cat(C* destination, size_t capacity, const C* source, size_t most) {
    if (!IsDestination(destination, capacity) || !IsSize(most)) return STRSAFE_E_INVALID_PARAMETER;
    const size_t used = Bounded(destination, capacity).size();
    if (used == capacity) return STRSAFE_E_INVALID_PARAMETER;
    return Put(destination, capacity, used, Bounded(source, most < capacity ? most : capacity));
}

template <class C>
HRESULT Print(C* destination, size_t capacity, const C* format, va_list list) {
    if (!IsDestination(destination, capacity)) return STRSAFE_E_INVALID_PARAMETER;
    VariadicArguments arguments(list);
    bool failed = false;
    const std::basic_string<C> text = FormatText(format, arguments, &failed);
    // A null character that %c has put in ends the text only for its reader.
    const HRESULT put = Put(destination, capacity, 0, std::basic_string_view<C>(text));
    return failed ? STRSAFE_E_INSUFFICIENT_BUFFER : put;
}

template <class C>
HRESULT Length(const C* text, size_t most, size_t* length) {
    const bool valid = text != nullptr && IsSize(most);
    const size_t found = valid ? Bounded(text, most).size() : 0;
    const bool terminated = valid && found < most;
    if (length != nullptr) *length = terminated ? found : 0;
    return terminated ? S_OK : STRSAFE_E_INVALID_PARAMETER;
}

}  // namespace

HRESULT StringCchCopyW(LPWSTR destination, size_t capacity, LPCWSTR source) {
    return Copy(destination, capacity, source, STRSAFE_MAX_CCH);
}

HRESULT StringCchCopyA(LPSTR destination, size_t capacity, LPCSTR source) {
    return Copy(destination, capacity, source, STRSAFE_MAX_CCH);
}

HRESULT StringCchCopyNW(LPWSTR destination, size_t capacity, LPCWSTR source, size_t most) {
    return CopyBounded(destination, capacity, source, most);
}

HRESULT StringCchCopyNA(LPSTR destination, size_t capacity, LPCSTR source, size_t most) {
    return CopyBounded(destination, capacity, source, most);
}

HRESULT StringCchCatW(LPWSTR destination, size_t capacity, LPCWSTR source) {
    return Cat(destination, capacity, source, STRSAFE_MAX_CCH);
}

HRESULT StringCchCatA(LPSTR destination, size_t capacity, LPCSTR source) {
    return Cat(destination, capacity, source, STRSAFE_MAX_CCH);
}

HRESULT StringCchCatNW(LPWSTR destination, size_t capacity, LPCWSTR source, size_t most) {
    return Cat(destination, capacity, source, most);
}

HRESULT StringCchCatNA(LPSTR destination, size_t capacity, LPCSTR source, size_t most) {
    return Cat(destination, capacity, source, most);
}

HRESULT StringCchVPrintfW(LPWSTR destination, size_t capacity, LPCWSTR format, va_list arguments) {
    return Print(destination, capacity, format, arguments);
}

HRESULT StringCchVPrintfA(LPSTR destination, size_t capacity, LPCSTR format, va_list arguments) {
    return Print(destination, capacity, format, arguments);
}

HRESULT StringCchPrintfW(LPWSTR destination, size_t capacity, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const HRESULT result = Print(destination, capacity, format, arguments);
    va_end(arguments);
    return result;
}

HRESULT StringCchPrintfA(LPSTR destination, size_t capacity, LPCSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const HRESULT result = Print(destination, capacity, format, arguments);
    va_end(arguments);
    return result;
}

HRESULT StringCchLengthW(LPCWSTR text, size_t most, size_t* length) {
    return Length(text, most, length);
}

HRESULT StringCchLengthA(LPCSTR text, size_t most, size_t* length) {
    return Length(text, most, length);
}
