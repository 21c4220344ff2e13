#pragma once
// The network components of the machine, and the registry tree that tells the MUX driver of VLANs
// and teams, as they stand.

#include <map>
#include <optional>
#include <vector>

#include "Network.h"

namespace sheet {

// A component of the class Net.
struct NetworkComponent {
    Text guid;
    Text id;           // the component id
    Text description;  // DriverDesc
    bool isMiniport;   // a VLAN or a team
    // Of a miniport; nothing where there is no such value.
    std::optional<Text> teamName;
    std::optional<Text> vlanId;
    std::optional<Text> vlanName;
    std::optional<Text> priority;
    bool hasBindingBackup;  // of an adapter that is or was in a team
};

// The subkey of an adapter or team.
struct LowerKey {
    Text guid;
    std::vector<Text> entries;     // of UpperBindings
    Text teamDevice;               // of a team's member
    std::optional<Text> teamName;  // these three only in a team's key
    std::optional<DWORD> teamType;
    std::optional<Text> teamGuid;
    Text primary;

    bool IsTeam() const { return teamName && teamType && teamGuid; }
};

struct NetworkTree {
    std::vector<NetworkComponent> components;
    std::vector<LowerKey> lowers;

    // Null when there is none of that GUID.
    const NetworkComponent* Component(const Text& guid) const;
    const LowerKey* Lower(const Text& guid) const;
    bool IsTeam(const Text& guid) const;

    std::map<Text, std::size_t> componentsByGuid;  // the first of each
    std::map<Text, std::size_t> lowersByGuid;
};

NetworkTree ReadNetworkTree();

// The GUID of "\Device\{...}"; empty when the text isn't one.
Text GuidOfDevice(const Text& device);

// What failures have left behind in it.
std::vector<Network::Remnant> FindRemnants(const NetworkTree& tree);

}  // namespace sheet
