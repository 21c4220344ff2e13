#include "PortTypes.h"

#include "Messages.h"

#include <strsafe.h>

namespace {

constexpr struct {
    LPCWSTR token;
    PortType type;
} kTokens[] = {
    {TEXT("ib"), ePORT_TYPE_IB},
    {TEXT("eth"), ePORT_TYPE_ETH},
    {TEXT("auto"), ePORT_TYPE_AUTO},
    {TEXT("none"), ePORT_TYPE_NONE},
};

// A port's bits of CapabilityFlag.
struct PortBits {
    DWORD infiniBand;
    DWORD ethernet;
    DWORD sensing;
    DWORD autoIsEthernet;  // "auto" without sensing is shown as Ethernet, else as InfiniBand
};
constexpr PortBits kPort1 = {0x02, 0x08, 0x80, 0x200};
constexpr PortBits kPort2 = {0x04, 0x10, 0x100, 0x400};

LPCWSTR TokenOf(PortType type) {
    for (const auto& row : kTokens)
        if (row.type == type) return row.token;
    return TEXT("");
}

// The protocol of a port that has only one. A port of which neither is known counts as one of both.
PortType OnlyType(DWORD flag, const PortBits& bits) {
    const DWORD protocols = flag & (bits.infiniBand | bits.ethernet);
    if (protocols == bits.ethernet) return ePORT_TYPE_ETH;
    if (protocols == bits.infiniBand) return ePORT_TYPE_IB;
    return ePORT_TYPE_NONE;
}

PortType FirstChoice(DWORD flag, const PortBits& bits) {
    const PortType only = OnlyType(flag, bits);
    if (only != ePORT_TYPE_NONE) return only;
    return flag & bits.sensing ? ePORT_TYPE_AUTO : ePORT_TYPE_IB;
}

PortButtons RenderPort(DWORD flag, const PortBits& bits, PortType chosen) {
    const PortType only = OnlyType(flag, bits);
    if (only != ePORT_TYPE_NONE) return {false, false, only};
    const bool canSense = (flag & bits.sensing) != 0;
    if (chosen == ePORT_TYPE_AUTO && !canSense)
        chosen = flag & bits.autoIsEthernet ? ePORT_TYPE_ETH : ePORT_TYPE_IB;
    return {true, canSense, chosen};
}

}  // namespace

bool IsSinglePort(DWORD capabilityFlag) {
    return (capabilityFlag & (kPort2.infiniBand | kPort2.ethernet)) == 0;
}

bool FindPortType(TextView token, PortType& type) {
    for (const auto& row : kTokens) {
        if (token != row.token) continue;
        type = row.type;
        return true;
    }
    return false;
}

ScopedBstr BuildPortType(const PortTypes& types, bool isSinglePort) {
    WCHAR text[ARRAYSIZE(TEXT("auto,auto"))];
    (void)StringCchCopyW(text, ARRAYSIZE(text), TokenOf(types.port1));
    if (!isSinglePort) {
        (void)StringCchCatW(text, ARRAYSIZE(text), TEXT(","));
        (void)StringCchCatW(text, ARRAYSIZE(text), TokenOf(types.port2));
    }
    return AllocateText(text);
}

bool IsHardwareDefault(const PortTypes& types, bool isSinglePort) {
    return EqualTypes(types, PortTypes(), isSinglePort);
}

bool EqualTypes(const PortTypes& a, const PortTypes& b, bool isSinglePort) {
    return a.port1 == b.port1 && (isSinglePort || a.port2 == b.port2);
}

PortTypes TypesFromCapabilities(DWORD capabilityFlag) {
    return {FirstChoice(capabilityFlag, kPort1), FirstChoice(capabilityFlag, kPort2)};
}

PortControls PortControlsFor(const PortCapabilities& capabilities, const PortTypes& chosen) {
    PortControls controls;
    controls.port2Shown = !capabilities.isSinglePort;
    // Port 1 speaks for both: its default takes the choice away from port 2 as well.
    controls.hardwareDefault = chosen.port1 == ePORT_TYPE_NONE;
    if (controls.hardwareDefault) return controls;
    controls.port1 = RenderPort(capabilities.flag, kPort1, chosen.port1);
    if (controls.port2Shown) controls.port2 = RenderPort(capabilities.flag, kPort2, chosen.port2);
    return controls;
}
