#include "Miniports.h"

#include <cstring>
#include <utility>
#include <vector>

#include "Facts.h"

namespace platform {
namespace {

constexpr DWORD kQueryGlobalStats = 0x170002;  // IOCTL_NDIS_QUERY_GLOBAL_STATS

// The driver's answer, whose name is the number in any spelling.
std::optional<std::vector<BYTE>> FindAnswer(const std::basic_string<WCHAR>& path, DWORD oid) {
    for (const std::basic_string<WCHAR>& name : MachineValues(path)) {
        if (ParseNumber(name) == oid) return MachineBytes(path, name.c_str());
    }
    return std::nullopt;
}

}  // namespace

DWORD Miniport::Control(DWORD code, const void* input, DWORD inputSize, void* output,
                        DWORD capacity, DWORD& returned) const {
    if (code != kQueryGlobalStats) return ERROR_INVALID_FUNCTION;
    const auto oid = ReadOid(input, inputSize);
    if (!oid) return ERROR_INVALID_PARAMETER;
    const auto answer = FindAnswer(m_path, *oid);
    if (!answer) return ERROR_NOT_SUPPORTED;
    if (answer->size() > capacity) return ERROR_INSUFFICIENT_BUFFER;
    if (!answer->empty()) std::memcpy(output, answer->data(), answer->size());
    returned = static_cast<DWORD>(answer->size());
    return ERROR_SUCCESS;
}

std::shared_ptr<Miniport> OpenMiniport(std::basic_string_view<WCHAR> path) {
    constexpr std::basic_string_view<WCHAR> kPrefix = TEXT("\\\\.\\");
    if (!path.starts_with(kPrefix)) return nullptr;
    const std::basic_string<WCHAR> name(path.substr(kPrefix.size()));
    // A name of several parts is none of ours.
    if (name.empty() || name.find_first_of(TEXT("\\/")) != name.npos) return nullptr;
    auto key = FactPath(TEXT("Miniports\\") + name);
    return MachineKeyExists(key) ? std::make_shared<Miniport>(std::move(key)) : nullptr;
}

std::optional<DWORD> ReadOid(const void* input, DWORD size) {
    DWORD oid = 0;
    if (!input || size != sizeof(oid)) return std::nullopt;
    std::memcpy(&oid, input, sizeof(oid));
    return oid;
}

}  // namespace platform
