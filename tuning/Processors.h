#pragma once
// Which processors belong to which NUMA node. The table is built anew for each press of Run Tuning
// and is a plain value of its handler. The sheet's thread.
//
// A flat processor number counts through all groups, each by its own size.

#include <windows.h>

#include "TuningLog.h"

inline constexpr BYTE kFewestProcessors = 2;  // of a node, to be tuned for
inline constexpr DWORD kTableNodes = 32;
inline constexpr DWORD kTableProcessors = 256;  // flat numbers; a row holds them as bytes

struct NumaNodeRow {
    BYTE processors[64];  // flat numbers, ascending
    BYTE count;           // how many of them are valid
};

// A larger machine is in the table as far as it fits: flat numbers below kTableProcessors, nodes
// below kTableNodes, and the first processors of a node until its row is full.
struct ProcessorsInfo {
    NumaNodeRow nodes[kTableNodes];  // by node number
    DWORD highestNode;               // of the nodes in the table; 0: one node
    DWORD processorCount;            // active processors of all groups, in the table or not

    // The row of a node, or null when the table has no such row.
    const NumaNodeRow* Row(DWORD node) const {
        return node < ARRAYSIZE(nodes) ? &nodes[node] : nullptr;
    }
    // How many processors the rows hold.
    DWORD CountInRows() const;
    // False for a node that the table has too little of to be tuned for, because the machine is
    // larger than the table. Always true when the whole machine is in the table.
    bool CanUse(DWORD node) const;
    // The node if it can be used, else the next one that can, behind the highest from 0 on. The
    // node itself when none can.
    DWORD UsableFrom(DWORD node) const;
};

// Fills the table. What doesn't fit is told in one line of the log, which may be null. False when a
// processor's node isn't to be had, with a line in the log, or when the groups don't add up, with a
// diagnostic. When the machine answers no NUMA questions at all the result is true and the table
// has empty rows.
bool GetProcessorsInfo(LogStream* log, ProcessorsInfo& table);

struct ProcessorCounts {
    DWORD all;      // active processors of all groups
    WORD groups;    // active groups
    DWORD inFirst;  // active processors of group 0
};
ProcessorCounts ReadProcessorCounts();
// Group and number of a flat processor number. False when there are groups and none of them has it.
bool SplitProcessorNumber(const ProcessorCounts& counts, DWORD flat, PROCESSOR_NUMBER& processor);
