#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <netioapi.h>

#include "CardLookup.h"

#include <bit>
#include <cstring>
#include <string_view>
#include <strsafe.h>

#include "Diagnostics.h"
#include "LibraryState.h"

namespace {

using Text = std::basic_string_view<WCHAR>;

constexpr size_t kAliasCompared = 256;  // characters
constexpr int kCounterRanOut = 28;

struct InterfaceTableTraits {
    using Handle = PMIB_IF_TABLE2;
    static constexpr Handle none = nullptr;
    static void Close(Handle table) { FreeMibTable(table); }
};

struct GuidBytes {
    BYTE g[8];
};

bool HasPrefix(const GuidBytes& guid, BYTE g0, BYTE g1, BYTE g2) {
    return guid.g[0] == g0 && guid.g[1] == g1 && guid.g[2] == g2;
}

void SetMac(BYTE (&mac)[6], int m0, int m1, int m2, int m3, int m4, int m5) {
    const int bytes[] = {m0, m1, m2, m3, m4, m5};
    for (size_t i = 0; i < 6; ++i)
        mac[i] = static_cast<BYTE>(bytes[i]);
}

// Bit 0 of the mask stands for the last byte; the bytes keep the order of the GUID.
void SelectBytes(const GuidBytes& guid, BYTE mask, BYTE (&mac)[6]) {
    size_t filled = 0;
    for (size_t i = 0; i < 8; ++i)
        if (mask & (0x80 >> i)) mac[filled++] = guid.g[i];
}

int MacFromCounter(BYTE (&mac)[6]) {
    const ULONG number = ++Library().fallbackMacCount;
    if (number == 0) return kCounterRanOut;
    SetMac(mac, 0x02, 0x00, static_cast<BYTE>(number >> 24), static_cast<BYTE>(number >> 16),
           static_cast<BYTE>(number >> 8), static_cast<BYTE>(number));
    return 0;
}

enum class Walk { GoOn, Stop };

// Shows every port of every card to `visit` with the card's GUID, in the layer's order, until one
// stops the walk. 0, or 1 when the layer fails.
template <class Visit>
int WalkPorts(const char* allocationFailure, Visit visit) {
    AccessLayer layer;
    if (!layer.Open() || !layer.ReadCardGuids(allocationFailure)) return 1;
    for (const net64_t caGuid : layer.CardGuids()) {
        Card card(layer);
        if (!card.Open(caGuid) || !card.Query()) return 1;
        for (const ib_port_attr_t& port : card.Ports())
            if (visit(caGuid, port.port_guid) == Walk::Stop) return 0;
    }
    return 0;
}

}  // namespace

void FormatGuid(net64_t guid, WCHAR (&text)[20]) {
    const auto bytes = std::bit_cast<GuidBytes>(guid);
    UINT64 number = 0;
    for (const BYTE digits : bytes.g)
        number = number << 8 | digits;
    (void)StringCchPrintfW(text, ARRAYSIZE(text), TEXT("%016I64x"), number);
}

int GetMacFromIF(AdapterIfInfo& info) {
    Scoped<InterfaceTableTraits> table;
    if (GetIfTable2(table.Receive()) != NO_ERROR) {
        PrintDiagnostic("GetIfTable2 Failed\n");
        return 1;
    }
    const Text alias = Text(info.alias).substr(0, kAliasCompared);
    const MIB_IF_ROW2* rows = table.Get()->Table;
    for (const MIB_IF_ROW2& row : std::span(rows, table.Get()->NumEntries)) {
        if (Text(row.Alias).substr(0, kAliasCompared) != alias) continue;
        std::memcpy(info.mac, row.PermanentPhysicalAddress, sizeof(info.mac));
        info.isEthernetInterface = Text(row.Description).find(TEXT("Ethernet")) != Text::npos;
        return 0;
    }
    PrintDiagnostic("%S was not found\n", info.alias);
    return 1;
}

int GetPortGuidFromMac(AdapterIfInfo& info) {
    if (info.isEthernetInterface) {
        const BYTE(&m)[6] = info.mac;
        info.portGuid = std::bit_cast<net64_t>(
            GuidBytes{{static_cast<BYTE>(m[0] ^ 2), m[1], m[2], 0xFF, 0xFE, m[3], m[4], m[5]}});
    } else if (IpoIbMacToPortGuid(info) != 0) {
        PrintError("IpoIbMacToPortGuid failed\n");
        return 1;
    }
    FormatGuid(info.portGuid, info.portGuidText);
    return 0;
}

int IpoIbMacToPortGuid(AdapterIfInfo& info) {
    return WalkPorts("Couldn't allocate CA GUID array\n", [&](net64_t, net64_t portGuid) {
        BYTE mac[6];
        if (IpoIbPortGuidToMac(portGuid, info.guidMask, mac) != 0) {
            PrintDiagnostic("IpoIbPortGuidToMac failed\n");
            return Walk::Stop;
        }
        if (std::memcmp(mac, info.mac, sizeof(mac)) != 0) return Walk::GoOn;
        PrintDiagnostic("Matched\n");
        info.portGuid = portGuid;
        return Walk::Stop;
    });
}

int IpoIbPortGuidToMac(net64_t portGuid, ULONG mask, BYTE (&mac)[6]) {
    const auto guid = std::bit_cast<GuidBytes>(portGuid);
    const BYTE(&g)[8] = guid.g;
    if (HasPrefix(guid, 0x00, 0x02, 0xC9)) {
        switch (g[3] + 256 * g[4]) {
            case 2:
                SetMac(mac, 0x00, 0x02, 0xC9, g[5], g[6], g[7]);
                return 0;
            case 3:
                SetMac(mac, 0x02, 0x02, 0xC9, g[5], g[6], g[7]);
                return 0;
            default:
                return MacFromCounter(mac);
        }
    }
    if (HasPrefix(guid, 0x00, 0x08, 0xF1)) {
        SetMac(mac, 0x00, 0x08, 0xF1, g[4] ^ g[6], g[5] ^ g[7], g[5] + g[6] + g[7]);
        return 0;
    }
    const BYTE selected = static_cast<BYTE>(mask);
    if (std::popcount(selected) != 6) return MacFromCounter(mac);
    SelectBytes(guid, selected, mac);
    return 0;
}

int GetCaGuidFromPortGuid(AdapterIfInfo& info) {
    return WalkPorts("failed to allocate memory\n", [&](net64_t caGuid, net64_t portGuid) {
        if (portGuid != info.portGuid) return Walk::GoOn;
        info.caGuid = caGuid;
        FormatGuid(caGuid, info.caGuidText);
        return Walk::Stop;
    });
}
