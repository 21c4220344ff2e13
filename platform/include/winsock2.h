#pragma once
// Sockets. Included ahead of <windows.h>, as in the SDK.

#include <minwindef.h>

#define AF_UNSPEC 0
#define AF_INET 2
#define AF_INET6 23

struct sockaddr {
    USHORT sa_family;
    CHAR sa_data[14];
};
using LPSOCKADDR = sockaddr*;

struct in_addr {
    union {
        struct {
            UCHAR s_b1, s_b2, s_b3, s_b4;
        } S_un_b;
        ULONG S_addr;
    } S_un;
};

struct sockaddr_in {
    SHORT sin_family;
    USHORT sin_port;
    in_addr sin_addr;
    CHAR sin_zero[8];
};

struct SOCKET_ADDRESS {
    LPSOCKADDR lpSockaddr;
    INT iSockaddrLength;
};
