// Counted strings and variants.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <oleauto.h>
#include <winerror.h>

#include "Call.h"

namespace platform {
namespace {

constexpr char kCountedString[] = "BSTR";
// In front of the text: four bytes that keep its place in memory even, and its length in bytes.
constexpr std::size_t headSize = 8;
constexpr UINT longest = 0x7FFFFFF0;  // characters

std::uint32_t& ByteLength(BSTR text) {
    return *reinterpret_cast<std::uint32_t*>(reinterpret_cast<char*>(text) - sizeof(std::uint32_t));
}

BSTR NewText(const Call& call, const OLECHAR* text, UINT length) {
    if (call.Failed() || length > longest) return nullptr;
    const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
    auto* head = static_cast<char*>(std::malloc(headSize + bytes + sizeof(OLECHAR)));
    if (head == nullptr) return nullptr;
    auto* made = reinterpret_cast<BSTR>(head + headSize);
    ByteLength(made) = static_cast<std::uint32_t>(bytes);
    if (text != nullptr) std::memcpy(made, text, bytes);
    made[length] = 0;
    call.machine.ledger.Enter(kCountedString, made, call.Name());
    return made;
}

std::u16string_view View(BSTR text) {
    return text == nullptr ? std::u16string_view() : std::u16string_view(text, SysStringLen(text));
}

}  // namespace
}  // namespace platform

using platform::Call;

BSTR WINAPI SysAllocString(const OLECHAR* text) {
    Call call("SysAllocString", text, ERROR_NOT_ENOUGH_MEMORY);
    if (text == nullptr) return nullptr;
    return platform::NewText(call, text, static_cast<UINT>(std::u16string_view(text).size()));
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length) {
    Call call("SysAllocStringLen", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    return platform::NewText(call, text, length);
}

void WINAPI SysFreeString(BSTR text) {
    if (text == nullptr) return;
    Call call("SysFreeString");
    if (!call.machine.ledger.Strike(platform::kCountedString, text)) {
        std::fputs("SysFreeString: not a counted string, or freed before\n", stderr);
        std::abort();
    }
    std::free(reinterpret_cast<char*>(text) - platform::headSize);
}

UINT WINAPI SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT WINAPI SysStringByteLen(BSTR text) {
    return text == nullptr ? 0 : platform::ByteLength(text);
}

// Ordinal: the stand-in has no collation.
HRESULT WINAPI VarBstrCmp(BSTR left, BSTR right, LCID locale, ULONG flags) {
    (void)locale;
    (void)flags;
    const int order = platform::View(left).compare(platform::View(right));
    return order == 0 ? VARCMP_EQ : (order < 0 ? VARCMP_LT : VARCMP_GT);
}

void WINAPI VariantInit(VARIANTARG* variant) {
    *variant = {};
}

HRESULT WINAPI VariantClear(VARIANTARG* variant) {
    switch (variant->vt) {
        case VT_BSTR:
            SysFreeString(variant->bstrVal);
            break;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            if (variant->punkVal != nullptr) variant->punkVal->Release();
            break;
        case VT_EMPTY:
        case VT_NULL:
        case VT_I4:
        case VT_BOOL:
        case VT_ERROR:
            break;
        default:
            return DISP_E_BADVARTYPE;
    }
    VariantInit(variant);
    return S_OK;
}
