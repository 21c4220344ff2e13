#pragma once
// Sockets over TCP/IP.

#include <winsock2.h>

struct in6_addr {
    union {
        UCHAR Byte[16];
        USHORT Word[8];
    } u;
};

struct sockaddr_in6 {
    SHORT sin6_family;
    USHORT sin6_port;
    ULONG sin6_flowinfo;
    in6_addr sin6_addr;
    ULONG sin6_scope_id;
};
static_assert(sizeof(sockaddr_in6) == 28);
