#pragma once
// The table of network interfaces.

#include <minwindef.h>
#include <guiddef.h>

#define IF_MAX_STRING_SIZE 256
#define IF_MAX_PHYS_ADDRESS_LENGTH 32

#define IF_TYPE_ETHERNET_CSMACD 6
#define IF_TYPE_SOFTWARE_LOOPBACK 24

using NETIO_STATUS = DWORD;
using NET_IFINDEX = ULONG;
using IFTYPE = ULONG;
using NET_IF_NETWORK_GUID = GUID;

union NET_LUID {
    ULONG64 Value;
    struct {
        ULONG64 Reserved : 24;
        ULONG64 NetLuidIndex : 24;
        ULONG64 IfType : 16;
    } Info;
};

enum IF_OPER_STATUS { IfOperStatusUp = 1, IfOperStatusDown };
enum NET_IF_ADMIN_STATUS { NET_IF_ADMIN_STATUS_UP = 1 };
enum NET_IF_MEDIA_CONNECT_STATE { MediaConnectStateConnected = 1, MediaConnectStateDisconnected };
enum NET_IF_ACCESS_TYPE { NET_IF_ACCESS_LOOPBACK = 1, NET_IF_ACCESS_BROADCAST };
enum NET_IF_DIRECTION_TYPE { NET_IF_DIRECTION_SENDRECEIVE };
enum NET_IF_CONNECTION_TYPE { NET_IF_CONNECTION_DEDICATED = 1 };
enum TUNNEL_TYPE { TUNNEL_TYPE_NONE };
enum NDIS_MEDIUM { NdisMedium802_3, NdisMediumLoopback = 17 };
enum NDIS_PHYSICAL_MEDIUM { NdisPhysicalMediumUnspecified };

struct MIB_IF_ROW2 {
    NET_LUID InterfaceLuid;
    NET_IFINDEX InterfaceIndex;
    GUID InterfaceGuid;
    WCHAR Alias[IF_MAX_STRING_SIZE + 1];
    WCHAR Description[IF_MAX_STRING_SIZE + 1];
    ULONG PhysicalAddressLength;
    UCHAR PhysicalAddress[IF_MAX_PHYS_ADDRESS_LENGTH];
    UCHAR PermanentPhysicalAddress[IF_MAX_PHYS_ADDRESS_LENGTH];
    ULONG Mtu;
    IFTYPE Type;
    TUNNEL_TYPE TunnelType;
    NDIS_MEDIUM MediaType;
    NDIS_PHYSICAL_MEDIUM PhysicalMediumType;
    NET_IF_ACCESS_TYPE AccessType;
    NET_IF_DIRECTION_TYPE DirectionType;
    struct {
        BOOLEAN HardwareInterface : 1;
        BOOLEAN FilterInterface : 1;
        BOOLEAN ConnectorPresent : 1;
        BOOLEAN NotAuthenticated : 1;
        BOOLEAN NotMediaConnected : 1;
        BOOLEAN Paused : 1;
        BOOLEAN LowPower : 1;
        BOOLEAN EndPointInterface : 1;
    } InterfaceAndOperStatusFlags;
    IF_OPER_STATUS OperStatus;
    NET_IF_ADMIN_STATUS AdminStatus;
    NET_IF_MEDIA_CONNECT_STATE MediaConnectState;
    NET_IF_NETWORK_GUID NetworkGuid;
    NET_IF_CONNECTION_TYPE ConnectionType;
    ULONG64 TransmitLinkSpeed;
    ULONG64 ReceiveLinkSpeed;
    ULONG64 InOctets;
    ULONG64 InUcastPkts;
    ULONG64 InNUcastPkts;
    ULONG64 InDiscards;
    ULONG64 InErrors;
    ULONG64 InUnknownProtos;
    ULONG64 InUcastOctets;
    ULONG64 InMulticastOctets;
    ULONG64 InBroadcastOctets;
    ULONG64 OutOctets;
    ULONG64 OutUcastPkts;
    ULONG64 OutNUcastPkts;
    ULONG64 OutDiscards;
    ULONG64 OutErrors;
    ULONG64 OutUcastOctets;
    ULONG64 OutMulticastOctets;
    ULONG64 OutBroadcastOctets;
    ULONG64 OutQLen;
};
using PMIB_IF_ROW2 = MIB_IF_ROW2*;
static_assert(sizeof(MIB_IF_ROW2) == 1352 && offsetof(MIB_IF_ROW2, Alias) == 28 &&
              offsetof(MIB_IF_ROW2, PermanentPhysicalAddress) == 1092 &&
              offsetof(MIB_IF_ROW2, OperStatus) == 1156);

struct MIB_IF_TABLE2 {
    ULONG NumEntries;
    MIB_IF_ROW2 Table[1];
};
using PMIB_IF_TABLE2 = MIB_IF_TABLE2*;

NETIO_STATUS WINAPI GetIfTable2(PMIB_IF_TABLE2* table);
void WINAPI FreeMibTable(PVOID table);
