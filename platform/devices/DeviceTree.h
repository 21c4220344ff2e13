#pragma once
// The machine's devices and how they hang together, as the registry tells it.
//
// A device is a key SYSTEM\CurrentControlSet\Enum\<instance id>. Its children are those that its
// row of the fact key DeviceTree lists. A device that no row lists is a child of the one whose
// ParentIdPrefix, followed by '&', begins the third part of its instance id (the longest such
// prefix); these children stand by Address, then by id. A device without a parent is the only child
// of the root: each such device has a root of its own.
//
// Ids compare without regard to case. They are given back as a row spells them, else as the Enum
// key does.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>
#include <cfgmgr32.h>

#include "Call.h"

namespace platform {

using DeviceId = std::basic_string<WCHAR>;

// Below HKEY_LOCAL_MACHINE.
DeviceId DeviceKeyPath(const DeviceId& id);
// Without regard to the case of the letters A to Z; ids have no others.
DeviceId FoldId(const DeviceId& id);
bool EqualIds(const DeviceId& a, const DeviceId& b);

class DeviceTree : public Part {
  public:
    // Each gives a device node, or 0 for none. A node keeps its number as long as the machine
    // lives.
    DEVINST Locate(const DeviceId& id);
    DEVINST Parent(DEVINST node);
    DEVINST FirstChild(DEVINST node);
    DEVINST NextSibling(DEVINST node);

    // The tree's own node for a node that may be of the tree or of its carrier; 0 for none.
    DEVINST Adopt(DEVINST node);
    // Empty when there is no such node.
    DeviceId Id(DEVINST node) const;

  private:
    // By folded id, of all devices that a row names or Enum holds.
    struct Device {
        DeviceId spelling;
        bool hasRow = false;
        bool listed = false;  // by a row, so that the parent is that of the row
        DeviceId parent;      // folded; empty: none
        std::vector<DeviceId> children;
        bool inOrder = false;  // the children; a big tree is read without every device's Address
    };
    using Devices = std::map<DeviceId, Device>;

    struct Snapshot {
        std::uint64_t generation;
        Devices devices;
    };
    // Far from the numbers that a system gives.
    static constexpr DEVINST kFirstNode = 0x5D000000;
    struct Node {
        DeviceId key;  // folded id; of a root: that of its only child
        bool isRoot;
        DeviceId spelling;
    };

    static void ReadRows(Devices& devices);
    static void ReadEnum(Devices& devices);
    // What the registry says now.
    const Devices& RowsNow();
    Devices& AllNow();
    static const std::vector<DeviceId>& ChildrenOf(Devices& devices, const DeviceId& key);

    DEVINST Number(const DeviceId& key, const DeviceId& spelling, bool isRoot = false);
    DEVINST NumberOf(const Devices& devices, const DeviceId& key);
    const Node* Find(DEVINST node) const;

    std::vector<Node> m_nodes;  // kFirstNode first
    std::map<std::pair<DeviceId, bool>, DEVINST> m_numbers;
    std::optional<Snapshot> m_rows;
    std::optional<Snapshot> m_all;
};

}  // namespace platform
