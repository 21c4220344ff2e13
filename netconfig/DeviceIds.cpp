#include "DeviceIds.h"

#include <algorithm>
#include <string_view>

#include "ConfigurationOperations.h"
#include "MuxRegistry.h"

namespace {

// By protocol.
const struct {
    LPCWSTR prefix;
    const char* name;
} kProtocols[] = {
    {TEXT("TSR4\\Tessaron-"), "Ethernet"},
    {TEXT("IBA\\Tessaron-"), "IPoIB"},
};
static_assert(ARRAYSIZE(kProtocols) == eL2_PROTOCOL_INVALID);

bool BeginsWith(LPCWSTR text, std::basic_string_view<WCHAR> prefix) {
    const size_t length = std::basic_string_view<WCHAR>(text).size();
    const int compared = static_cast<int>(prefix.size());
    return length >= prefix.size() &&
           CompareStringOrdinal(text, compared, prefix.data(), compared, TRUE) == CSTR_EQUAL;
}

}  // namespace

bool IsMuxMiniport(LPCWSTR id) {
    return IsSameText(id, kMuxMiniportId);
}

bool IsPhysicalAdapter(LPCWSTR id, DWORD l2Protocol) {
    if (l2Protocol < eL2_PROTOCOL_INVALID) return BeginsWith(id, kProtocols[l2Protocol].prefix);
    return std::any_of(std::begin(kProtocols), std::end(kProtocols),
                       [id](const auto& row) { return BeginsWith(id, row.prefix); });
}

const char* ProtocolName(DWORD l2Protocol) {
    return kProtocols[l2Protocol].name;
}
