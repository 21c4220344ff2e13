#pragma once
// The VLANs and teams of the machine as its registry, its interfaces and the drivers of its teams
// tell of them, and what a failed or interrupted change of them has left behind.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "SheetText.h"

namespace sheet {

// GUIDs are texts of 38 characters in capitals, braces included.
struct Network {
    // A network adapter that can carry VLANs or be in a team, or that the tree of VLANs and teams
    // or a binding path names.
    struct Adapter {
        Text guid;
        Text name;         // its connection's; without one, what the driver calls it
        Text description;  // what the driver calls it
        bool isUp;
    };
    struct Team {
        Text guid;
        Text name;
        DWORD type;
        Text primary;  // a GUID; empty: none
        bool isUp;
    };
    enum class Role { Unknown, Active, Backup };
    struct Member {
        Text team;
        Text adapter;
        bool isUp;  // the link, as the team's driver sees it; else as the system does
        Role role;  // unknown: the driver doesn't tell
    };
    struct Vlan {
        Text lower;  // the adapter or team that carries it
        Text guid;
        Text id;
        Text priority;
        Text name;
        bool isUp;
    };
    struct Binding {
        Text guid;   // of the component at the path's lower end
        Text token;  // the path's name
        Text upper;  // the components above; several are parted by commas
        bool isEnabled;
    };
    struct Remnant {
        Text where;        // the GUID that it is about, or a key's path
        std::string what;  // in plain words, UTF-8
    };

    std::vector<Adapter> adapters;  // in the order of the class key
    std::vector<Team> teams;        // by GUID
    std::vector<Member> members;    // by adapter
    std::vector<Vlan> vlans;        // by lower GUID; newest first
    std::vector<Binding> bindings;  // by GUID and token
    std::vector<Remnant> remnants;
};

// Reads them. What can't be read is as what isn't there. Time and memory grow with the data alone.
Network ReadNetwork();

// The lines of `network list`.
std::string ListNetwork(const Network& network);

// The tree of `network`, in lines of at most 100 columns.
std::string DrawNetwork(const Network& network);

// "Fault Tolerance" and so on; an unknown type is the first, as for the tabs.
const char* NameOfTeamType(DWORD type);

}  // namespace sheet
