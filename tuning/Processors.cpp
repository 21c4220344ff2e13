#include "Processors.h"

#include <algorithm>

#include "Diagnostics.h"

namespace {

// Adds the processor to the row of its node. A node without a row, or with a full one, is passed
// over.
void AddProcessor(ProcessorsInfo& table, USHORT node, DWORD flat) {
    if (node >= ARRAYSIZE(table.nodes)) return;
    NumaNodeRow& row = table.nodes[node];
    if (row.count >= ARRAYSIZE(row.processors)) return;
    row.processors[row.count++] = static_cast<BYTE>(flat);
    table.highestNode = std::max<DWORD>(table.highestNode, node);
}

}  // namespace

DWORD ProcessorsInfo::CountInRows() const {
    DWORD count = 0;
    for (const NumaNodeRow& row : nodes)
        count += row.count;
    return count;
}

bool ProcessorsInfo::CanUse(DWORD node) const {
    if (CountInRows() == processorCount) return true;
    const NumaNodeRow* row = Row(node);
    return row && row->count >= kFewestProcessors;
}

DWORD ProcessorsInfo::UsableFrom(DWORD node) const {
    for (DWORD step = 0; step <= highestNode; ++step) {
        const DWORD candidate = (node + step) % (highestNode + 1);
        if (CanUse(candidate)) return candidate;
    }
    return node;
}

ProcessorCounts ReadProcessorCounts() {
    ProcessorCounts counts = {};
    counts.all = GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    counts.groups = GetActiveProcessorGroupCount();
    counts.inFirst = GetActiveProcessorCount(0);
    return counts;
}

bool SplitProcessorNumber(const ProcessorCounts& counts, DWORD flat, PROCESSOR_NUMBER& processor) {
    processor = {};
    if (counts.groups == 0) {
        processor.Number = static_cast<BYTE>(flat);
        return true;
    }
    WORD group = 0;
    DWORD size = counts.inFirst;
    while (size != 0 && flat >= size) {
        flat -= size;
        size = ++group < counts.groups ? GetActiveProcessorCount(group) : 0;
    }
    processor.Group = group;
    processor.Number = static_cast<BYTE>(flat);
    return size != 0;
}

bool GetProcessorsInfo(LogStream* log, ProcessorsInfo& table) {
    constexpr LPCWSTR operation = TEXT("GetProcessorsInfo");
    const ProcessorCounts counts = ReadProcessorCounts();
    table = {};
    table.processorCount = counts.all;

    ULONG highest = 0;  // only asked whether the machine answers
    if (!GetNumaHighestNodeNumber(&highest)) {
        PrintDiagnostic("GetNumaHighestNodeNumber failed gle = %d\n",
                        static_cast<int>(GetLastError()));
        return true;
    }
    const DWORD end = std::min(counts.all, kTableProcessors);
    for (DWORD flat = 0; flat < end; ++flat) {
        PROCESSOR_NUMBER processor;
        if (!SplitProcessorNumber(counts, flat, processor)) {
            PrintDiagnostic("GetProcessorsInfo: no group has processor %d\n",
                            static_cast<int>(flat));
            return false;
        }
        USHORT node = 0;
        if (!GetNumaProcessorNodeEx(&processor, &node)) {
            LogFormatted(log, TEXT("%s: GetNumaProcessorNode() failed: %d"), operation,
                         static_cast<int>(GetLastError()));
            return false;
        }
        AddProcessor(table, node, flat);
    }
    const DWORD held = table.CountInRows();
    if (held != counts.all)
        LogFormatted(log, TEXT("%s: %d of %d processors don't fit into the table and aren't used"),
                     operation, static_cast<int>(counts.all - held), static_cast<int>(counts.all));
    return true;
}
