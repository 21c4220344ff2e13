#pragma once
// On which processors a port's work stands by the values of its class key.

#include <string>
#include <vector>

#include "CardPorts.h"

namespace sheet {

// Of each processor of the machine: does this work stand on it?
enum class Mark {
    Free,
    Work,   // a single processor's work
    Rss,    // RSS takes it
    Spare,  // RSS may take it, but has enough before it
};

// One row of a drawing.
struct WorkRow {
    std::string name;         // "receive"
    std::string place;        // what the registry says, at most kWidestPlace columns
    std::vector<Mark> marks;  // by flat processor number
};
inline constexpr std::size_t kWidestPlace = 13;

struct Placement {
    std::string scenario;            // "dual port traffic"; empty when none is stored
    std::vector<WorkRow> rows;       // receive, transmit, forwarding, RSS
    std::vector<std::string> notes;  // of RSS: where it stands by defaults, and what can't be used
};

// processors: how many the machine has; 0: not known.
Placement PlacementOf(const Port& port, DWORD processors);

}  // namespace sheet
