#pragma once
// The way from a network connection to its card: connection name, permanent MAC address, port GUID,
// card GUID. The sheet's thread. Each step gives 0, or 1 on failure, and prints what went wrong.

#include <windows.h>

#include "AccessLayer.h"

// One lookup. Starts zeroed; GUIDs keep their bytes in network order.
struct AdapterIfInfo {
    WCHAR alias[260] = {};  // connection name
    BYTE mac[6] = {};       // permanent address
    net64_t caGuid = 0;
    WCHAR caGuidText[20] = {};  // 16 hexadecimal digits
    net64_t portGuid = 0;
    WCHAR portGuidText[20] = {};
    ULONG guidMask = 0;  // which GUID bytes make up a MAC on IPoIB, bit 0 for the last byte
    bool isEthernetInterface = false;
};

// Fills `mac` and `isEthernetInterface` from `alias`.
int GetMacFromIF(AdapterIfInfo& info);
// Fills `portGuid` and `portGuidText`.
int GetPortGuidFromMac(AdapterIfInfo& info);
// Searches the cards' ports for the one whose derived MAC is `mac`. No such port is no failure and
// leaves `portGuid` as it is.
int IpoIbMacToPortGuid(AdapterIfInfo& info);
// Derives the MAC of an IPoIB port. GUIDs that no rule covers get one from a process-wide counter;
// 28, and no MAC, when that has run through. Bits of the mask above the eighth are ignored.
int IpoIbPortGuidToMac(net64_t portGuid, ULONG mask, BYTE (&mac)[6]);
// Fills `caGuid` and `caGuidText` with the card that has port `portGuid`. No such card is no
// failure and leaves both as they are.
int GetCaGuidFromPortGuid(AdapterIfInfo& info);

// The 16 digits of a GUID in the order of its bytes.
void FormatGuid(net64_t guid, WCHAR (&text)[20]);
