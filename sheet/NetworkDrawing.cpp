// The tree that `network` draws: below each adapter its team and its VLANs, below each team its
// members and VLANs, and what is bound above each.

#include <array>
#include <set>

#include "Canvas.h"
#include "Columns.h"
#include "Network.h"

namespace sheet {

namespace {

// Columns at which the parts of a row begin. A GUID takes the last 38 of 100.
constexpr int kRowNameColumn = 14;
constexpr int kRowDetailColumn = 43;
constexpr int kRowStateColumn = 55;
constexpr int kRowGuidColumn = 62;
constexpr int kTreeWidth = 100;

using DrawnText = std::u32string;

DrawnText PointsOf(const std::string& text) {
    return CodePoints(FromUtf8(text));
}

DrawnText Shown(const Text& text) {
    return text.empty() ? U"-" : Printable(text);
}

DrawnText DrawnState(bool isUp) {
    return isUp ? U"up" : U"down";
}

// Puts a text at its column, behind what the line has already.
void PutAt(DrawnText& line, int column, const DrawnText& text) {
    line = Padded(line, column);
    line += text;
}

// A row of the tree; what is below it stands deeper.
struct Branch {
    std::vector<DrawnText> lines;  // the first one with the row's own mark
    std::vector<Branch> below;
};

// name and detail are cut where the next part begins.
Branch TreeRow(const DrawnText& kind, const DrawnText& name, const DrawnText& detail,
               const DrawnText& state, const Text& guid) {
    DrawnText line = Shortened(kind, kRowNameColumn - 4);
    PutAt(line, kRowNameColumn - 3, Shortened(name, kRowDetailColumn - kRowNameColumn - 1));
    PutAt(line, kRowDetailColumn - 3, Shortened(detail, kRowStateColumn - kRowDetailColumn - 1));
    PutAt(line, kRowStateColumn - 3, state);
    PutAt(line, kRowGuidColumn - 3, Printable(guid));
    return {{line}, {}};
}

// What is bound above a component: a row for what is enabled, one for what is disabled.
class BindingRows {
  public:
    explicit BindingRows(const Network& network) {
        for (const auto& binding : network.bindings) {
            DrawnText& uppers = m_uppers[binding.guid][binding.isEnabled ? 0 : 1];
            if (!uppers.empty()) uppers += U", ";
            for (const char32_t point : Printable(binding.upper))
                uppers += point == U',' ? U'→' : point;
        }
    }
    // Takes them; what stays belongs to nothing that is drawn.
    void MoveTo(const Text& guid, int depth, std::vector<Branch>& rows) {
        const auto found = m_uppers.find(guid);
        if (found == m_uppers.end()) return;
        AddTo(rows, U"bound", found->second[0], depth);
        AddTo(rows, U"not bound", found->second[1], depth);
        m_uppers.erase(found);
    }
    std::vector<Text> Others() const {
        std::vector<Text> guids;
        for (const auto& [guid, uppers] : m_uppers)
            guids.push_back(guid);
        return guids;
    }

  private:
    static void AddTo(std::vector<Branch>& rows, const DrawnText& kind, const DrawnText& uppers,
                      int depth) {
        if (uppers.empty()) return;
        Branch row;
        for (const DrawnText& line : Wrap(uppers, kTreeWidth - kRowNameColumn - 3 * (depth - 1))) {
            DrawnText first = row.lines.empty() ? kind : DrawnText();
            PutAt(first, kRowNameColumn - 3, line);
            row.lines.push_back(std::move(first));
        }
        rows.push_back(std::move(row));
    }

    std::map<Text, std::array<DrawnText, 2>> m_uppers;
};

class NetworkTreeDrawing {
  public:
    explicit NetworkTreeDrawing(const Network& network) : m_network(network), m_bindings(network) {
        for (const auto& adapter : network.adapters)
            m_names.emplace(adapter.guid, adapter.name);
        for (const auto& team : network.teams)
            m_names.emplace(team.guid, team.name);
        for (const auto& vlan : network.vlans)
            m_vlans[vlan.lower].push_back(&vlan);
        for (const auto& member : network.members) {
            m_membersOf[member.team].push_back(&member);
            m_teamsOf[member.adapter].push_back(&member.team);
        }
    }

    std::string Draw() {
        for (const auto& adapter : m_network.adapters)
            DrawAdapter(adapter);
        for (const auto& team : m_network.teams)
            DrawTeam(team);
        DrawOthers();
        DrawRemnants();
        if (m_lines.empty()) m_lines.push_back(U"No adapter can carry VLANs or be in a team.");
        std::string text;
        for (const DrawnText& line : m_lines)
            text += ToUtf8(line.substr(0, line.find_last_not_of(U' ') + 1)) + "\n";
        return text;
    }

  private:
    DrawnText NameOf(const Text& guid) const {
        const auto found = m_names.find(guid);
        return found == m_names.end() ? Printable(guid) : Shown(found->second);
    }

    void Heading(const DrawnText& name, const DrawnText& state, const Text& guid) {
        if (!m_lines.empty()) m_lines.emplace_back();
        DrawnText line = Shortened(name, kRowStateColumn - 2);
        PutAt(line, kRowStateColumn, state);
        PutAt(line, kRowGuidColumn, Printable(guid));
        m_lines.push_back(std::move(line));
    }

    void DrawAdapter(const Network::Adapter& adapter) {
        Heading(Shown(adapter.name), DrawnState(adapter.isUp), adapter.guid);
        if (adapter.description != adapter.name)
            m_lines.push_back(Shortened(Printable(adapter.description), kTreeWidth));
        std::vector<Branch> rows;
        for (const Text* const team : m_teamsOf[adapter.guid])
            rows.push_back(TreeRow(U"in team", NameOf(*team), {}, {}, *team));
        AddCommonRows(rows, adapter.guid);
        AddLines(rows, {});
    }

    void DrawTeam(const Network::Team& team) {
        Heading(U"Team " + Shown(team.name), DrawnState(team.isUp), team.guid);
        DrawnText type = PointsOf(NameOfTeamType(team.type)) + U", ";
        type += team.primary.empty() ? U"no primary" : U"primary " + NameOf(team.primary);
        m_lines.push_back(Shortened(type, kTreeWidth));
        std::vector<Branch> rows;
        for (const auto* const member : m_membersOf[team.guid]) {
            constexpr const char32_t* kRoles[] = {U"-", U"Active", U"Backup"};
            rows.push_back(TreeRow(U"member", NameOf(member->adapter),
                                   kRoles[static_cast<int>(member->role)], DrawnState(member->isUp),
                                   member->adapter));
        }
        AddCommonRows(rows, team.guid);
        AddLines(rows, {});
    }

    // What an adapter and a team have alike.
    void AddCommonRows(std::vector<Branch>& rows, const Text& guid) {
        for (const auto* const vlan : m_vlans[guid]) {
            rows.push_back(TreeRow(U"VLAN " + Shown(vlan->id), Shown(vlan->name),
                                   U"priority " + Shown(vlan->priority), DrawnState(vlan->isUp),
                                   vlan->guid));
            m_bindings.MoveTo(vlan->guid, 2, rows.back().below);
        }
        m_vlans.erase(guid);
        m_bindings.MoveTo(guid, 1, rows);
    }

    // VLANs and bindings of what is neither an adapter nor a team here.
    void DrawOthers() {
        std::set<Text> others;
        for (const auto& [guid, vlans] : m_vlans)
            others.insert(guid);
        for (const Text& guid : others) {
            Heading(U"An adapter that isn't there", {}, guid);
            std::vector<Branch> rows;
            AddCommonRows(rows, guid);
            AddLines(rows, {});
        }
        for (const Text& guid : m_bindings.Others()) {
            Heading(U"Another component", {}, guid);
            std::vector<Branch> rows;
            m_bindings.MoveTo(guid, 1, rows);
            AddLines(rows, {});
        }
    }

    void DrawRemnants() {
        if (m_network.remnants.empty()) return;
        if (!m_lines.empty()) m_lines.emplace_back();
        m_lines.push_back(U"Left behind by a change that failed or was cut short");
        std::vector<Branch> rows;
        for (const auto& remnant : m_network.remnants) {
            Branch row;
            row.lines.push_back(Printable(remnant.where));
            for (const DrawnText& line : Wrap(PointsOf(remnant.what), kTreeWidth - 5))
                row.lines.push_back(U"  " + line);
            rows.push_back(std::move(row));
        }
        AddLines(rows, {});
    }

    void AddLines(const std::vector<Branch>& rows, const DrawnText& indent) {
        for (const Branch& row : rows) {
            const bool isLast = &row == &rows.back();
            const DrawnText next = indent + (isLast ? U"   " : U"│  ");
            for (const DrawnText& line : row.lines) {
                const bool isFirst = &line == &row.lines.front();
                DrawnText& drawn = m_lines.emplace_back(isFirst ? indent : next);
                if (isFirst) drawn += isLast ? U"└─ " : U"├─ ";
                drawn += line;
            }
            AddLines(row.below, next);
        }
    }

    const Network& m_network;
    BindingRows m_bindings;
    std::map<Text, Text> m_names;
    std::map<Text, std::vector<const Network::Vlan*>> m_vlans;  // by what carries them
    std::map<Text, std::vector<const Network::Member*>> m_membersOf;
    std::map<Text, std::vector<const Text*>> m_teamsOf;
    std::vector<DrawnText> m_lines;
};

}  // namespace

std::string DrawNetwork(const Network& network) {
    return NetworkTreeDrawing(network).Draw();
}

}  // namespace sheet
