// What a failed or interrupted change of VLANs and teams has left behind.

#include <algorithm>
#include <set>

#include "NetworkState.h"
#include "NetworkTree.h"

namespace sheet {

namespace {

constexpr std::size_t kLongestQuote = 60;  // characters of a value that is no name

std::string Quoted(const Text& text) {
    return "\"" + ToUtf8(text.substr(0, kLongestQuote)) + "\"";
}

std::string MissingTeamValues(const LowerKey& lower) {
    std::string missing;
    const auto add = [&](bool isThere, const char* name) {
        if (!isThere) missing += (missing.empty() ? "" : ", ") + std::string(name);
    };
    add(lower.teamName.has_value(), "TeamName");
    add(lower.teamType.has_value(), "TeamType");
    add(lower.teamGuid.has_value(), "TeamGuid");
    return missing;
}

class RemnantSearch {
  public:
    explicit RemnantSearch(const NetworkTree& tree) : m_tree(tree) {}

    std::vector<Network::Remnant> Find() {
        for (const LowerKey& lower : m_tree.lowers) {
            LookAtKey(lower);
            LookAtEntries(lower);
            LookAtMembership(lower);
        }
        for (const NetworkComponent& component : m_tree.components)
            LookAt(component);
        return std::move(m_found);
    }

  private:
    void Add(const Text& where, const std::string& what) { m_found.push_back({where, what}); }

    // The key itself: it must have its component and, for a team, its values.
    void LookAtKey(const LowerKey& lower) {
        const NetworkComponent* const component = m_tree.Component(lower.guid);
        const bool hasTeamValue = lower.teamName || lower.teamType || lower.teamGuid;
        const bool isOfTeam =
            hasTeamValue || (component != nullptr && component->teamName.has_value());
        if (isOfTeam && !lower.IsTeam())
            Add(lower.guid, "a team's key without " + MissingTeamValues(lower));
        if (isOfTeam && (component == nullptr || !component->isMiniport))
            Add(lower.guid, "a team's key without its miniport");
        if (!isOfTeam && component == nullptr &&
            (!lower.entries.empty() || !lower.teamDevice.empty()))
            Add(lower.guid, "the key of an adapter that isn't there");
        if (!lower.IsTeam() || lower.primary.empty()) return;
        const LowerKey* const primary = m_tree.Lower(lower.primary);
        if (primary == nullptr || GuidOfDevice(primary->teamDevice) != lower.guid)
            Add(lower.guid,
                "a team whose primary, " + ToUtf8(lower.primary) + ", isn't among its members");
    }

    void LookAtEntries(const LowerKey& lower) {
        const Text team = GuidOfDevice(lower.teamDevice);
        const std::string owner = ToUtf8(lower.guid);
        for (const Text& entry : lower.entries) {
            const Text guid = GuidOfDevice(entry);
            const NetworkComponent* const component = m_tree.Component(guid);
            m_listed.insert(guid);
            if (guid == team && !guid.empty()) continue;
            if (guid.empty()) {
                Add(lower.guid, "an entry of UpperBindings that names no device: " + Quoted(entry));
            } else if (component == nullptr || !component->isMiniport) {
                Add(guid, "an entry of UpperBindings of " + owner + " without its miniport");
            } else if (component->teamName || m_tree.IsTeam(guid)) {
                Add(lower.guid, "an entry of UpperBindings for the team " + ToUtf8(guid) +
                                    " without membership");
            }
        }
    }

    void LookAtMembership(const LowerKey& lower) {
        if (lower.teamDevice.empty()) return;
        const Text team = GuidOfDevice(lower.teamDevice);
        if (team.empty()) {
            Add(lower.guid, "a membership of " + Quoted(lower.teamDevice) + ", which is no team");
        } else if (!m_tree.IsTeam(team)) {
            Add(lower.guid, "a membership without its team, " + ToUtf8(team));
        } else if (std::none_of(lower.entries.begin(), lower.entries.end(),
                                [&](const Text& entry) { return GuidOfDevice(entry) == team; })) {
            Add(lower.guid,
                "a membership of the team " + ToUtf8(team) + " without its entry in UpperBindings");
        }
    }

    void LookAt(const NetworkComponent& component) {
        const LowerKey* const lower = m_tree.Lower(component.guid);
        if (component.isMiniport) {
            if (component.teamName && lower == nullptr)
                Add(component.guid, "a team's miniport without its key");
            if (!component.teamName && !m_tree.IsTeam(component.guid) &&
                !m_listed.contains(component.guid))
                Add(component.guid, "a VLAN's miniport that no list names");
        } else if (component.hasBindingBackup && (lower == nullptr || lower->teamDevice.empty())) {
            Add(component.guid, "an AdapterBindingBackup of an adapter that is in no team");
        }
    }

    const NetworkTree& m_tree;
    std::set<Text> m_listed;  // in some UpperBindings
    std::vector<Network::Remnant> m_found;
};

}  // namespace

std::vector<Network::Remnant> FindRemnants(const NetworkTree& tree) {
    return RemnantSearch(tree).Find();
}

}  // namespace sheet
