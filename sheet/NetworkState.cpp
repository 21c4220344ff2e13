#include <winsock2.h>
#include <ws2tcpip.h>

#include "NetworkState.h"

#include <iphlpapi.h>
#include <objbase.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace sheet {

namespace {

constexpr DWORD kQueryGlobalStats = 0x170002;  // IOCTL_NDIS_QUERY_GLOBAL_STATS of ntddndis.h
constexpr DWORD kTeamStatus = 0xFFA0C909;      // an object identifier of the team's driver
constexpr int kMostQueries = 5;                // for a table that grows meanwhile

// The answer to kTeamStatus.
struct TeamReply {
    DWORD version;
    DWORD memberCount;
    struct {
        GUID adapter;
        BYTE isActive;
        BYTE isUp;
        WORD reserved;
    } members[8];
};
static_assert(sizeof(TeamReply) == 168);

bool IsHexDigit(WCHAR c) {
    return (c >= TEXT('0') && c <= TEXT('9')) || (c >= TEXT('A') && c <= TEXT('F'));
}

std::vector<BYTE> ReadAdapterTable() {
    ULONG size = 0;
    for (int query = 0; query < kMostQueries; ++query) {
        std::vector<BYTE> table(size);
        auto* const entries = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(table.data());
        const ULONG error = GetAdaptersAddresses(0, 0, nullptr, size ? entries : nullptr, &size);
        if (error == ERROR_SUCCESS) return table;
        if (error != ERROR_BUFFER_OVERFLOW) break;
    }
    return {};
}

bool QueryDriver(const Text& guid, DWORD oid, TeamReply& reply) {
    const HANDLE device = CreateFileW((TEXT("\\\\.\\") + guid).c_str(), GENERIC_READ,
                                      FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (device == INVALID_HANDLE_VALUE) return false;
    DWORD returned = 0;
    const BOOL isAnswered = DeviceIoControl(device, kQueryGlobalStats, &oid, sizeof(oid), &reply,
                                            sizeof(reply), &returned, nullptr);
    CloseHandle(device);
    return isAnswered != FALSE;
}

}  // namespace

Text GuidOf(TextView text) {
    constexpr TextView kShape = TEXT("{00000000-0000-0000-0000-000000000000}");
    if (text.size() != kShape.size()) return Text();
    Text guid(text);
    for (std::size_t i = 0; i < guid.size(); ++i) {
        WCHAR& c = guid[i];
        if (c >= TEXT('a') && c <= TEXT('f')) c = static_cast<WCHAR>(c - TEXT('a') + TEXT('A'));
        if (kShape[i] == TEXT('0') ? !IsHexDigit(c) : c != kShape[i]) return Text();
    }
    return guid;
}

std::set<Text> InterfacesUp() {
    std::set<Text> up;
    const std::vector<BYTE> table = ReadAdapterTable();
    if (table.empty()) return up;
    const auto* entry = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(table.data());
    for (; entry != nullptr; entry = entry->Next) {
        const std::string name = entry->AdapterName != nullptr ? entry->AdapterName : "";
        if (entry->OperStatus == IfOperStatusUp) up.insert(GuidOf(Text(name.begin(), name.end())));
    }
    up.erase(Text());
    return up;
}

std::map<Text, MemberState> QueryTeam(const Text& team) {
    std::map<Text, MemberState> members;
    TeamReply reply = {};
    if (!QueryDriver(team, kTeamStatus, reply) || reply.version != 1) return members;
    const auto count = std::min<std::size_t>(reply.memberCount, std::size(reply.members));
    for (std::size_t i = 0; i < count; ++i) {
        WCHAR text[39] = {};
        StringFromGUID2(reply.members[i].adapter, text, ARRAYSIZE(text));
        members.emplace(GuidOf(text),
                        MemberState{reply.members[i].isActive != 0, reply.members[i].isUp != 0});
    }
    return members;
}

}  // namespace sheet
