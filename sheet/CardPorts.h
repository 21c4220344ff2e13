#pragma once
// The ports of a card: a network adapter, and the port beside it in the device tree.

#include <vector>

#include "RegistryAccess.h"
#include "SheetText.h"

namespace sheet {

struct Port {
    Text name;                       // its connection's; without one, the device's instance id
    std::vector<Key::Value> values;  // of its class key
};

struct CardPorts {
    std::vector<Port> ports;  // the adapter, then its sibling if it has one; empty: no adapter
    bool isTreeRead = true;   // false: whether there is a sibling can't be told
};

// The sibling is found as the tuning tab finds it: the next device beside the adapter if it is a
// port, and for the last one the first port among the others.
CardPorts ReadCardPorts(const Text& instanceId);

}  // namespace sheet
