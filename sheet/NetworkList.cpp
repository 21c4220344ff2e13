// The lines of `network list`.

#include "Network.h"
#include "Transcript.h"

namespace sheet {

namespace {

// A field that is never empty.
std::string FieldOrDash(const Text& text) {
    return text.empty() ? "-" : Field(text);
}

const char* StateField(bool isUp) {
    return isUp ? "up" : "down";
}

const char* RoleField(Network::Role role) {
    return role == Network::Role::Active   ? "Active"
           : role == Network::Role::Backup ? "Backup"
                                           : "-";
}

}  // namespace

std::string ListNetwork(const Network& network) {
    std::string lines;
    for (const auto& adapter : network.adapters)
        lines += Line(
            {"adapter", Field(adapter.guid), FieldOrDash(adapter.name), StateField(adapter.isUp)});
    for (const auto& team : network.teams)
        lines += Line({"team", Field(team.guid), FieldOrDash(team.name), std::to_string(team.type),
                       FieldOrDash(team.primary)});
    for (const auto& member : network.members)
        lines += Line({"member", Field(member.team), Field(member.adapter), StateField(member.isUp),
                       RoleField(member.role)});
    for (const auto& vlan : network.vlans)
        lines += Line({"vlan", Field(vlan.lower), Field(vlan.guid), FieldOrDash(vlan.id),
                       FieldOrDash(vlan.priority), FieldOrDash(vlan.name), StateField(vlan.isUp)});
    for (const auto& binding : network.bindings)
        lines += Line({"binding", Field(binding.guid), Field(binding.token), Field(binding.upper),
                       binding.isEnabled ? "enabled" : "disabled"});
    for (const auto& remnant : network.remnants)
        lines += Line({"left", Field(remnant.where), Field(FromUtf8(remnant.what))});
    return lines;
}

}  // namespace sheet
