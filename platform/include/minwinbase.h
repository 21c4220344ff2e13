#pragma once
// What the families of the base API share.

#include <minwindef.h>

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

#define STILL_ACTIVE 0x00000103
