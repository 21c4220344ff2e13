#pragma once
// The protocols of a card's one or two ports: the texts that the registry keeps of them, what the
// device can do, and what the tab's controls show for both. Knows no window. Any thread.

#include <windows.h>
#include <string_view>

#include "AutoClasses.h"

using TextView = std::basic_string_view<WCHAR>;

enum PortType : DWORD {
    ePORT_TYPE_NONE = 0,  // the hardware's default
    ePORT_TYPE_IB = 1,
    ePORT_TYPE_ETH = 2,
    ePORT_TYPE_AUTO = 3,  // the port senses its protocol
};

// By port. Of a single-port device only port 1 counts.
struct PortTypes {
    PortType port1 = ePORT_TYPE_NONE;
    PortType port2 = ePORT_TYPE_NONE;
};

// What the bus driver says of its device.
struct PortCapabilities {
    DWORD flag = 0;  // bits of the value CapabilityFlag
    bool isSinglePort = false;
};

// A flag that gives port 2 no protocol is that of a single-port device.
bool IsSinglePort(DWORD capabilityFlag);

// The type of a registry token, exact and with case. False when there is no such token.
bool FindPortType(TextView token, PortType& type);
// The registry's text for the types: a token a port, parted by a comma.
ScopedBstr BuildPortType(const PortTypes& types, bool isSinglePort);
// Every port is left to the hardware.
bool IsHardwareDefault(const PortTypes& types, bool isSinglePort);
bool EqualTypes(const PortTypes& a, const PortTypes& b, bool isSinglePort);

// The types to start with when the hardware's default is given up: the only protocol of a port,
// else sensing where the port offers it, else InfiniBand.
PortTypes TypesFromCapabilities(DWORD capabilityFlag);

// The three buttons of a port.
struct PortButtons {
    bool canChoose = false;              // "IB" and "ETH" are enabled
    bool canSense = false;               // "AUTO" is enabled
    PortType checked = ePORT_TYPE_NONE;  // none: no button
};
struct PortControls {
    bool hardwareDefault = false;  // the box is checked
    bool port2Shown = true;
    PortButtons port1;
    PortButtons port2;
};
PortControls PortControlsFor(const PortCapabilities& capabilities, const PortTypes& chosen);
