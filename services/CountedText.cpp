#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "Messages.h"

void ThrowHresult(HRESULT result) {
    RaiseException(result == E_OUTOFMEMORY ? STATUS_NO_MEMORY : STATUS_ILLEGAL_INSTRUCTION,
                   EXCEPTION_NONCONTINUABLE, 0, nullptr);
    std::abort();
}

ScopedBstr AllocateText(LPCWSTR text) {
    ScopedBstr copy(SysAllocString(text));
    if (!copy) ThrowHresult(E_OUTOFMEMORY);
    return copy;
}

HRESULT AppendText(ScopedBstr& text, LPCWSTR more, int length) {
    if (length < 0) return E_INVALIDARG;
    if (length == 0) return S_OK;
    const UINT old = SysStringLen(text.Get());
    if (old > static_cast<UINT>(INT_MAX - length))
        return HRESULT_FROM_WIN32(ERROR_ARITHMETIC_OVERFLOW);
    ScopedBstr joined(SysAllocStringLen(nullptr, old + static_cast<UINT>(length)));
    if (!joined) return E_OUTOFMEMORY;
    if (old > 0) std::memcpy(joined.Get(), text.Get(), old * sizeof(WCHAR));
    std::memcpy(joined.Get() + old, more, static_cast<size_t>(length) * sizeof(WCHAR));
    text = std::move(joined);
    return S_OK;
}

bool EqualText(BSTR a, BSTR b) {
    return VarBstrCmp(a, b, LOCALE_USER_DEFAULT, 0) == static_cast<HRESULT>(VARCMP_EQ);
}
