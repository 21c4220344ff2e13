#pragma once
// What the MUX driver answers for the teams that are installed.

#include <optional>
#include <vector>

#include <windows.h>

#include "MuxTree.h"

namespace platform {

inline constexpr DWORD teamStatusOid = 0xFFA0C909;

// name: a GUID string in any case.
bool IsInstalledTeam(const MuxText& name);
// The answer to teamStatusOid: 168 bytes with a team's first 8 members, in the order of their
// subkeys, each with whether it is active and has a link.
std::vector<BYTE> TeamStatus(const MuxText& team);

}  // namespace platform
