#include "Miniports.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

#include <ioapiset.h>
#include <winerror.h>

#include "Call.h"
#include "Facts.h"
#include "Text.h"

namespace platform {
namespace {

constexpr DWORD kQueryGlobalStats = 0x170002;  // IOCTL_NDIS_QUERY_GLOBAL_STATS

struct Miniport : KernelObject {
    std::u16string path;  // of the key with its answers
};

std::optional<DWORD> ReadOid(const void* input, DWORD size) {
    DWORD oid = 0;
    if (!input || size != sizeof(oid)) return std::nullopt;
    std::memcpy(&oid, input, sizeof(oid));
    return oid;
}

std::u16string OidText(std::optional<DWORD> oid) {
    char text[11] = {};
    if (oid) std::snprintf(text, sizeof(text), "0x%08X", *oid);
    return FromUtf8(text);
}

// The driver's answer, whose name is the number in any spelling.
std::optional<std::vector<BYTE>> FindAnswer(const std::u16string& path, DWORD oid) {
    for (const std::u16string& name : MachineValues(path)) {
        if (ParseNumber(name) == oid) return MachineBytes(path, name.c_str());
    }
    return std::nullopt;
}

BOOL Fail(DWORD error) {
    Call::SetLast(error);
    return FALSE;
}

BOOL Answer(const Miniport& miniport, DWORD oid, void* output, DWORD capacity, DWORD* returned) {
    const auto answer = FindAnswer(miniport.path, oid);
    if (!answer) return Fail(ERROR_NOT_SUPPORTED);
    if (answer->size() > capacity) return Fail(ERROR_INSUFFICIENT_BUFFER);
    if (!answer->empty()) std::memcpy(output, answer->data(), answer->size());
    *returned = static_cast<DWORD>(answer->size());
    return TRUE;
}

}  // namespace

std::shared_ptr<KernelObject> OpenMiniport(std::u16string_view name) {
    // A name of several parts is none of ours.
    if (name.empty() || name.find_first_of(u"\\/") != name.npos) return nullptr;
    auto miniport = std::make_shared<Miniport>();
    miniport->path = FactPath(std::u16string(u"Miniports\\").append(name));
    return MachineKeyExists(miniport->path) ? miniport : nullptr;
}

}  // namespace platform

using namespace platform;

// The argument for faults and traces is the object identifier, as in 0xFFA0C915.
BOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                            DWORD outputSize, LPDWORD returned, LPOVERLAPPED overlapped) {
    const std::optional<DWORD> oid = ReadOid(input, inputSize);
    Call call("DeviceIoControl", OidText(oid).c_str(), ERROR_GEN_FAILURE);
    if (returned) *returned = 0;
    if (call.Failed()) return call.With(FALSE);
    if (!returned || overlapped || (!output && outputSize != 0))
        return Fail(ERROR_INVALID_PARAMETER);
    const auto object = call.machine.Get<Handles>().Find(device);
    if (!object) return Fail(ERROR_INVALID_HANDLE);
    const auto miniport = std::dynamic_pointer_cast<Miniport>(object);
    if (!miniport || code != kQueryGlobalStats) return Fail(ERROR_INVALID_FUNCTION);
    if (!oid) return Fail(ERROR_INVALID_PARAMETER);
    return Answer(*miniport, *oid, output, outputSize, returned);
}
