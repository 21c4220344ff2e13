#include "Processors.h"

#include "Diagnostics.h"

namespace {

constexpr DWORD kFlatNumbers = 256;  // a row holds them as bytes

// Adds the processor to the row of its node. False when the row isn't there or is full.
bool AddProcessor(ProcessorsInfo& table, USHORT node, DWORD flat) {
    const DWORD index = LOBYTE(node);
    if (index >= ARRAYSIZE(table.nodes)) return false;
    NumaNodeRow& row = table.nodes[index];
    if (row.count >= ARRAYSIZE(row.processors)) return false;
    row.processors[row.count++] = static_cast<BYTE>(flat);
    if (node > table.highestNode) table.highestNode = node;
    return true;
}

}  // namespace

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
    if (counts.inFirst == 0) return false;
    processor.Group = static_cast<WORD>(flat / counts.inFirst);
    processor.Number = static_cast<BYTE>(flat % counts.inFirst);
    return true;
}

bool GetProcessorsInfo(LogStream* log, ProcessorsInfo& table) {
    const ProcessorCounts counts = ReadProcessorCounts();
    table = {};
    table.processorCount = counts.all;

    ULONG highest = 0;  // only asked whether the machine answers
    if (!GetNumaHighestNodeNumber(&highest)) {
        PrintDiagnostic("GetNumaHighestNodeNumber failed gle = %d\n",
                        static_cast<int>(GetLastError()));
        return true;
    }
    if (counts.all >= kFlatNumbers) {
        PrintDiagnostic("GetProcessorsInfo: %d processors are too many\n",
                        static_cast<int>(counts.all));
        return false;
    }
    for (DWORD flat = 0; flat < counts.all; ++flat) {
        PROCESSOR_NUMBER processor;
        if (!SplitProcessorNumber(counts, flat, processor)) {
            PrintDiagnostic("GetProcessorsInfo: group 0 has no processors\n");
            return false;
        }
        USHORT node = 0;
        if (!GetNumaProcessorNodeEx(&processor, &node)) {
            LogFormatted(log, TEXT("%s: GetNumaProcessorNode() failed: %d"),
                         TEXT("GetProcessorsInfo"), static_cast<int>(GetLastError()));
            return false;
        }
        if (!AddProcessor(table, node, flat)) {
            PrintDiagnostic("GetProcessorsInfo: no room for processor %d of node %d\n",
                            static_cast<int>(flat), node);
            return false;
        }
    }
    return true;
}
