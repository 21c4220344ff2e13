#pragma once
// Which processors belong to which NUMA node. The table is built anew for each press of Run Tuning
// and is a plain value of its handler. The sheet's thread.
//
// A flat processor number counts through all groups. It is split by the size of group 0, on the
// assumption that all groups are as large.

#include <windows.h>

#include "TuningLog.h"

struct NumaNodeRow {
    BYTE processors[64];  // flat numbers, ascending
    BYTE count;           // how many of them are valid
};

struct ProcessorsInfo {
    NumaNodeRow nodes[32];  // by node number
    DWORD highestNode;      // 0: one node
    DWORD processorCount;   // active processors of all groups

    // The row of a node, or null when the table has no such row.
    const NumaNodeRow* Row(DWORD node) const {
        return node < ARRAYSIZE(nodes) ? &nodes[node] : nullptr;
    }
};

// Fills the table. False when a processor's node isn't to be had, with a line in the log (which may
// be null), or when the machine is larger than the table, with a diagnostic. When the machine
// answers no NUMA questions at all the result is true and the table has empty rows.
bool GetProcessorsInfo(LogStream* log, ProcessorsInfo& table);

struct ProcessorCounts {
    DWORD all;      // active processors of all groups
    WORD groups;    // active groups
    DWORD inFirst;  // active processors of group 0
};
ProcessorCounts ReadProcessorCounts();
// Group and number of a flat processor number. False when groups exist and group 0 is empty.
bool SplitProcessorNumber(const ProcessorCounts& counts, DWORD flat, PROCESSOR_NUMBER& processor);
