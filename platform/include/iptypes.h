#pragma once
// The table of IP adapters.

#include <netioapi.h>
#include <ws2tcpip.h>

#define MAX_ADAPTER_ADDRESS_LENGTH 8
#define MAX_DHCPV6_DUID_LENGTH 130

struct IP_ADAPTER_UNICAST_ADDRESS {
    union {
        ULONGLONG Alignment;
        struct {
            ULONG Length;
            DWORD Flags;
        };
    };
    IP_ADAPTER_UNICAST_ADDRESS* Next;
    SOCKET_ADDRESS Address;
    int PrefixOrigin;
    int SuffixOrigin;
    int DadState;
    ULONG ValidLifetime;
    ULONG PreferredLifetime;
    ULONG LeaseLifetime;
    BYTE OnLinkPrefixLength;
};
using PIP_ADAPTER_UNICAST_ADDRESS = IP_ADAPTER_UNICAST_ADDRESS*;
static_assert(sizeof(IP_ADAPTER_UNICAST_ADDRESS) == 64 &&
              offsetof(IP_ADAPTER_UNICAST_ADDRESS, Address) == 16);

struct IP_ADAPTER_ADDRESSES {
    union {
        ULONGLONG Alignment;
        struct {
            ULONG Length;
            NET_IFINDEX IfIndex;
        };
    };
    IP_ADAPTER_ADDRESSES* Next;
    PSTR AdapterName;
    PIP_ADAPTER_UNICAST_ADDRESS FirstUnicastAddress;
    PVOID FirstAnycastAddress;
    PVOID FirstMulticastAddress;
    PVOID FirstDnsServerAddress;
    PWCHAR DnsSuffix;
    PWCHAR Description;
    PWCHAR FriendlyName;
    BYTE PhysicalAddress[MAX_ADAPTER_ADDRESS_LENGTH];
    ULONG PhysicalAddressLength;
    ULONG Flags;
    ULONG Mtu;
    IFTYPE IfType;
    IF_OPER_STATUS OperStatus;
    NET_IFINDEX Ipv6IfIndex;
    ULONG ZoneIndices[16];
    PVOID FirstPrefix;
    ULONG64 TransmitLinkSpeed;
    ULONG64 ReceiveLinkSpeed;
    PVOID FirstWinsServerAddress;
    PVOID FirstGatewayAddress;
    ULONG Ipv4Metric;
    ULONG Ipv6Metric;
    NET_LUID Luid;
    SOCKET_ADDRESS Dhcpv4Server;
    ULONG CompartmentId;
    NET_IF_NETWORK_GUID NetworkGuid;
    NET_IF_CONNECTION_TYPE ConnectionType;
    TUNNEL_TYPE TunnelType;
    SOCKET_ADDRESS Dhcpv6Server;
    BYTE Dhcpv6ClientDuid[MAX_DHCPV6_DUID_LENGTH];
    ULONG Dhcpv6ClientDuidLength;
    ULONG Dhcpv6Iaid;
    PVOID FirstDnsSuffix;
};
using PIP_ADAPTER_ADDRESSES = IP_ADAPTER_ADDRESSES*;
static_assert(sizeof(IP_ADAPTER_ADDRESSES) == 448 &&
              offsetof(IP_ADAPTER_ADDRESSES, OperStatus) == 104 &&
              offsetof(IP_ADAPTER_ADDRESSES, Luid) == 224);
