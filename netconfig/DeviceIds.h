#pragma once
// The component ids that tell the kinds of network components apart. All compare without regard to
// case but where it is said.

#include <windows.h>

// Of every virtual miniport, and of the MUX driver's own component.
inline constexpr WCHAR kMuxMiniportId[] = TEXT("cvta_muxmp");
inline constexpr WCHAR kMuxProtocolId[] = TEXT("cvta_muxp");

// Whether it is the id of a virtual miniport.
bool IsMuxMiniport(LPCWSTR id);
// Whether it is the id of a physical adapter of that protocol; eL2_PROTOCOL_INVALID: of either.
bool IsPhysicalAdapter(LPCWSTR id, DWORD l2Protocol);
// The protocol's name in messages. l2Protocol: Ethernet or IPoIB.
const char* ProtocolName(DWORD l2Protocol);
