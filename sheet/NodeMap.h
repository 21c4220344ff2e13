#pragma once
// The machine's processors by NUMA node, as the system tells of them. Any thread.

#include <string>
#include <vector>

#include <windows.h>

namespace sheet {

struct NodeMap {
    struct Node {
        std::string name;               // "node 0"; "nodes 2-5" for a run of empty ones; "node ?"
        std::vector<DWORD> processors;  // flat numbers, counted through all groups, ascending
    };

    DWORD processors = 0;  // 0 when the system doesn't tell
    DWORD highestNode = 0;
    // By number, those without processors too; last the processors whose node isn't told.
    std::vector<Node> nodes;
};

NodeMap ReadNodeMap();

}  // namespace sheet
