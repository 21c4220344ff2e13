#pragma once
// Which tabs an adapter gets. Pure conditions over the adapter's classification and the machine.

#include "AdapterIdentity.h"

// What the VLAN and Teaming tabs ask of the machine.
struct MachineFacts {
    bool hasMuxPackage = false;
    bool isServerOfRelease4OrLater = false;  // has teams and VLANs of its own
};

MachineFacts GetMachineFacts();

bool InformationTabApplies(const AdapterFlags& adapter);
bool PerformanceTabApplies(const AdapterFlags& adapter);
bool VlanTabApplies(const AdapterFlags& adapter, const MachineFacts& machine);
bool TeamingTabApplies(const AdapterFlags& adapter, const MachineFacts& machine);
