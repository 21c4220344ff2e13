#include "NodeMap.h"

#include <algorithm>
#include <map>

namespace sheet {

namespace {

// Groups in order with their processors; without groups all count as one.
std::vector<DWORD> ReadGroups() {
    std::vector<DWORD> groups;
    for (WORD group = 0; group < GetActiveProcessorGroupCount(); ++group)
        groups.push_back(GetActiveProcessorCount(group));
    if (groups.empty()) groups.push_back(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
    return groups;
}

NodeMap::Node EmptyNodes(DWORD first, DWORD last) {
    const std::string number = std::to_string(first);
    if (first == last) return {"node " + number, {}};
    return {"nodes " + number + "-" + std::to_string(last), {}};
}

}  // namespace

NodeMap ReadNodeMap() {
    NodeMap map;
    std::map<DWORD, std::vector<DWORD>> nodes;
    NodeMap::Node unknown{"node ?", {}};
    const std::vector<DWORD> groups = ReadGroups();
    for (std::size_t group = 0; group < groups.size(); ++group) {
        for (DWORD number = 0; number < groups[group]; ++number) {
            PROCESSOR_NUMBER processor = {};
            processor.Group = static_cast<WORD>(group);
            processor.Number = static_cast<BYTE>(number);
            USHORT node = 0;
            const bool isTold = GetNumaProcessorNodeEx(&processor, &node) != FALSE;
            (isTold ? nodes[node] : unknown.processors).push_back(map.processors++);
        }
    }
    ULONG highest = 0;
    if (GetNumaHighestNodeNumber(&highest)) map.highestNode = highest;
    if (!nodes.empty()) map.highestNode = std::max(map.highestNode, nodes.rbegin()->first);

    DWORD next = 0;
    for (auto& [number, processors] : nodes) {
        if (number > next) map.nodes.push_back(EmptyNodes(next, number - 1));
        map.nodes.push_back({"node " + std::to_string(number), std::move(processors)});
        next = number + 1;
    }
    if (next <= map.highestNode && map.processors != 0)
        map.nodes.push_back(EmptyNodes(next, map.highestNode));
    if (!unknown.processors.empty()) map.nodes.push_back(std::move(unknown));
    return map;
}

}  // namespace sheet
