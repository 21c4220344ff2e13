#include "Network.h"

#include "NetworkState.h"
#include "NetworkTree.h"
#include "RegistryAccess.h"

namespace sheet {

namespace {

const Text kEnum = TEXT("SYSTEM\\CurrentControlSet\\Enum\\");
const Text kNetConnections =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\");
const Text kBindings = TEXT("SOFTWARE\\StandIn\\NetCfg\\Bindings");
// How the component ids of adapters begin that can carry VLANs or be in teams.
constexpr TextView kCapable[] = {TEXT("TSR4\\Tessaron-"), TEXT("IBA\\Tessaron-")};

Text TextIn(const Text& path, const WCHAR* value) {
    const Key key(path);
    if (key.Status() != ERROR_SUCCESS) return Text();
    return key.ReadText(value).value_or(Text());
}

// An adapter of another kind is told of where it takes part: a server has many that don't.
bool IsListed(const NetworkComponent& component, const NetworkTree& tree,
              const std::set<Text>& bound) {
    if (component.isMiniport) return false;
    if (bound.contains(component.guid)) return true;
    for (const TextView prefix : kCapable) {
        if (StartsWithNoCase(component.id, prefix)) return true;
    }
    return tree.Lower(component.guid) != nullptr;
}

Network::Adapter ReadAdapter(const NetworkComponent& component) {
    Network::Adapter adapter = {component.guid, {}, component.description, false};
    const Text connection = kNetConnections + component.guid + TEXT("\\Connection");
    const Text device = TextIn(connection, TEXT("PnpInstanceID"));
    const Text friendlyName =
        device.empty() ? device : TextIn(kEnum + device, TEXT("FriendlyName"));
    if (!friendlyName.empty()) adapter.description = friendlyName;
    adapter.name = TextIn(connection, TEXT("Name"));
    if (adapter.name.empty()) adapter.name = adapter.description;
    return adapter;
}

void AddVlans(Network& network, const NetworkTree& tree, const std::set<Text>& up) {
    for (const LowerKey& lower : tree.lowers) {
        for (const Text& entry : lower.entries) {
            const Text guid = GuidOfDevice(entry);
            const NetworkComponent* const vlan = tree.Component(guid);
            if (vlan == nullptr || !vlan->isMiniport || vlan->teamName || tree.IsTeam(guid))
                continue;
            network.vlans.push_back({lower.guid, guid, vlan->vlanId.value_or(Text()),
                                     vlan->priority.value_or(Text()),
                                     vlan->vlanName.value_or(Text()), up.contains(guid)});
        }
    }
}

void AddTeams(Network& network, const NetworkTree& tree, const std::set<Text>& up) {
    std::map<Text, std::map<Text, MemberState>> states;
    for (const LowerKey& lower : tree.lowers) {
        if (!lower.IsTeam()) continue;
        network.teams.push_back(
            {lower.guid, *lower.teamName, *lower.teamType, lower.primary, up.contains(lower.guid)});
        states.emplace(lower.guid, QueryTeam(lower.guid));
    }
    for (const LowerKey& lower : tree.lowers) {
        const Text team = GuidOfDevice(lower.teamDevice);
        const auto answers = states.find(team);
        if (answers == states.end() || team == lower.guid) continue;
        Network::Member member = {team, lower.guid, up.contains(lower.guid),
                                  Network::Role::Unknown};
        const auto state = answers->second.find(lower.guid);
        if (state != answers->second.end()) {
            member.isUp = state->second.isUp;
            member.role = state->second.isActive ? Network::Role::Active : Network::Role::Backup;
        }
        network.members.push_back(std::move(member));
    }
}

void AddBindings(Network& network) {
    const Key key(kBindings);
    if (key.Status() != ERROR_SUCCESS) return;
    for (const Text& name : key.Subkeys()) {
        Text subkey = kBindings;
        subkey.append(TEXT("\\")).append(name);
        const Key paths(subkey);
        if (paths.Status() != ERROR_SUCCESS) continue;
        const Text guid = GuidOf(name).empty() ? name : GuidOf(name);
        std::vector<Key::Value> values = paths.Values();
        SortByName(values);
        for (const Key::Value& path : values) {
            // "<upper component id>;enabled"
            const Text text = TextOf(path.data);
            const auto semicolon = text.rfind(TEXT(';'));
            if (semicolon == Text::npos) continue;
            network.bindings.push_back({guid, path.name, text.substr(0, semicolon),
                                        EqualNoCase(text.substr(semicolon + 1), TEXT("enabled"))});
        }
    }
}

}  // namespace

Network ReadNetwork() {
    const NetworkTree tree = ReadNetworkTree();
    const std::set<Text> up = InterfacesUp();
    Network network;
    AddBindings(network);
    std::set<Text> bound;
    for (const auto& binding : network.bindings)
        bound.insert(binding.guid);
    for (const NetworkComponent& component : tree.components) {
        if (!IsListed(component, tree, bound)) continue;
        network.adapters.push_back(ReadAdapter(component));
        network.adapters.back().isUp = up.contains(component.guid);
    }
    AddTeams(network, tree, up);
    AddVlans(network, tree, up);
    network.remnants = FindRemnants(tree);
    return network;
}

const char* NameOfTeamType(DWORD type) {
    constexpr const char* kNames[] = {
        "Fault Tolerance",
        "Switch Fault Tolerance",
        "Send Load Balancing",
        "Load Balancing (Send & Receive)",
        "Adaptive Load Balancing",
        "Dynamic Link Aggregation (802.3ad)",
        "Static Link Aggregation (802.3ad)",
    };
    return kNames[type >= 1 && type <= std::size(kNames) ? type - 1 : 0];
}

}  // namespace sheet
