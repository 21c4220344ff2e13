#pragma once
// What the system and the drivers say of network interfaces and teams at present.

#include <map>
#include <set>

#include "SheetText.h"

namespace sheet {

// The GUID of that text in capitals, or an empty text when it is none.
Text GuidOf(TextView text);

// The GUIDs of the interfaces that are up; none when the system doesn't tell.
std::set<Text> InterfacesUp();

// What a team's driver says of a member.
struct MemberState {
    bool isActive;
    bool isUp;
};
// By the members' GUIDs; nothing when the driver doesn't answer. A driver tells of eight at most.
std::map<Text, MemberState> QueryTeam(const Text& team);

}  // namespace sheet
