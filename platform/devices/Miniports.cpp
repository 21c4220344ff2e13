#include "Miniports.h"

#include <cstring>
#include <utility>
#include <vector>

#include "Facts.h"
#include "MuxDriver.h"

namespace platform {
namespace {

constexpr DWORD kQueryGlobalStats = 0x170002;  // IOCTL_NDIS_QUERY_GLOBAL_STATS

// What is asked: an object identifier, and the number at the start of the query's buffer.
struct Query {
    DWORD oid;
    std::optional<DWORD> number;
};

// The name of the value that answers, which is the object identifier and, before that, the
// identifier with the number behind a slash, in any spelling. Nothing when there is none.
std::optional<std::basic_string<WCHAR>> FindAnswer(const std::basic_string<WCHAR>& key,
                                                   const Query& query) {
    std::optional<std::basic_string<WCHAR>> plain;
    for (const std::basic_string<WCHAR>& name : MachineValues(key)) {
        const auto parts = SplitFields(name, TEXT('/'));
        if (parts.empty() || ParseNumber(parts[0]) != query.oid) continue;
        if (parts.size() == 1 && !plain) plain = name;
        if (parts.size() == 2 && query.number && ParseNumber(parts[1]) == *query.number)
            return name;
    }
    return plain;
}

}  // namespace

DWORD Miniport::Control(DWORD code, const void* input, DWORD inputSize, void* output,
                        DWORD capacity, DWORD& returned) const {
    if (code != kQueryGlobalStats) return ERROR_INVALID_FUNCTION;
    const auto oid = ReadOid(input, inputSize);
    if (!oid) return ERROR_INVALID_PARAMETER;
    std::optional<DWORD> number;
    if (capacity >= sizeof(DWORD)) std::memcpy(&number.emplace(), output, sizeof(DWORD));
    const auto key = FactPath(TEXT("Miniports\\") + m_name);
    const auto name = FindAnswer(key, {*oid, number});
    auto answer = name ? MachineBytes(key, name->c_str()) : std::nullopt;
    if (!answer && *oid == teamStatusOid && IsInstalledTeam(m_name)) answer = TeamStatus(m_name);
    if (!answer) return ERROR_NOT_SUPPORTED;
    if (answer->size() > capacity) return ERROR_INSUFFICIENT_BUFFER;
    if (!answer->empty()) std::memcpy(output, answer->data(), answer->size());
    returned = static_cast<DWORD>(answer->size());
    return ERROR_SUCCESS;
}

std::shared_ptr<Miniport> OpenMiniport(std::basic_string_view<WCHAR> path) {
    constexpr std::basic_string_view<WCHAR> kPrefix = TEXT("\\\\.\\");
    if (!path.starts_with(kPrefix)) return nullptr;
    std::basic_string<WCHAR> name(path.substr(kPrefix.size()));
    // A name of several parts is none of ours.
    if (name.empty() || name.find_first_of(TEXT("\\/")) != name.npos) return nullptr;
    const bool exists =
        MachineKeyExists(FactPath(TEXT("Miniports\\") + name)) || IsInstalledTeam(name);
    return exists ? std::make_shared<Miniport>(std::move(name)) : nullptr;
}

std::optional<DWORD> ReadOid(const void* input, DWORD size) {
    DWORD oid = 0;
    if (!input || size != sizeof(oid)) return std::nullopt;
    std::memcpy(&oid, input, sizeof(oid));
    return oid;
}

}  // namespace platform
