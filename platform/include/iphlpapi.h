#pragma once
// The IP helper. Included behind <winsock2.h> and <ws2tcpip.h>, as in the SDK.

#include <iptypes.h>
#include <netioapi.h>

// Fills the list of adapters into a block of `*size` bytes, which also holds all that it points to.
ULONG WINAPI GetAdaptersAddresses(ULONG family, ULONG flags, PVOID reserved,
                                  PIP_ADAPTER_ADDRESSES addresses, PULONG size);
