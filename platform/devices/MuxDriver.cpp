#include "MuxDriver.h"

#include <algorithm>
#include <cstring>

#include "Facts.h"
#include "Text.h"

namespace platform {
namespace {

constexpr DWORD kStatusVersion = 1;
constexpr DWORD kMostMembers = 8;
constexpr DWORD kFailOverOnly = 1;  // the type of a team that has one active member

struct StatusMember {
    GUID adapter;
    BYTE isActive;
    BYTE isLinkUp;
    WORD reserved;
};

struct StatusReply {
    DWORD version;
    DWORD memberCount;
    StatusMember members[kMostMembers];
};
static_assert(sizeof(StatusReply) == 168);

bool HasLink(const MuxText& adapter) {
    const MuxText key = TEXT("Interfaces\\") + adapter;
    return MachineKeyExists(FactPath(key)) && FactNumber(key, TEXT("Up")).value_or(1) != 0;
}

std::optional<GUID> GuidIn(const MuxText& key, const WCHAR* value) {
    const auto text = MachineText(key, value);
    return text ? GuidFromText(*text) : std::nullopt;
}

bool IsMember(const MuxText& adapter, const GUID& team) {
    const auto device = MachineText(LowerObjectPath(adapter), TEXT("TeamDeviceName"));
    const auto guid = device ? GuidOfDeviceName(*device) : std::nullopt;
    return guid && GuidFromText(*guid) == team;
}

std::vector<StatusMember> Members(const MuxText& team) {
    const auto guid = GuidFromText(team);
    std::vector<StatusMember> members;
    for (const MuxText& name : LowerObjects()) {
        const auto adapter = GuidFromText(name);
        if (!guid || !adapter || *adapter == *guid || !IsMember(name, *guid)) continue;
        members.push_back({*adapter, 0, HasLink(name), 0});
    }
    return members;
}

}  // namespace

bool IsInstalledTeam(const MuxText& name) {
    if (!MachineNumber(LowerObjectPath(name), TEXT("TeamType"))) return false;
    return std::ranges::any_of(InstalledMiniports(), [&](const InstalledMiniport& miniport) {
        return EqualNoCase(miniport.name, name);
    });
}

std::vector<BYTE> TeamStatus(const MuxText& team) {
    const MuxText key = LowerObjectPath(team);
    std::vector<StatusMember> members = Members(team);
    if (MachineNumber(key, TEXT("TeamType")) == kFailOverOnly) {
        const auto primary = GuidIn(key, TEXT("PrimaryAdapterGuid"));
        const auto hasLink = [](const StatusMember& member) { return member.isLinkUp != 0; };
        auto active = std::ranges::find_if(members, [&](const StatusMember& member) {
            return hasLink(member) && primary == member.adapter;
        });
        if (active == members.end()) active = std::ranges::find_if(members, hasLink);
        if (active != members.end()) active->isActive = 1;
    } else {
        for (StatusMember& member : members)
            member.isActive = member.isLinkUp;
    }

    StatusReply reply = {};
    reply.version = kStatusVersion;
    reply.memberCount = std::min<DWORD>(kMostMembers, static_cast<DWORD>(members.size()));
    std::copy_n(members.begin(), reply.memberCount, reply.members);
    std::vector<BYTE> bytes(sizeof(reply));
    std::memcpy(bytes.data(), &reply, sizeof(reply));
    return bytes;
}

}  // namespace platform
