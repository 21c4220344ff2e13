#pragma once
// The configuration manager: the device tree.

#include <minwindef.h>

using RETURN_TYPE = DWORD;
using CONFIGRET = RETURN_TYPE;
using DEVNODE = DWORD;
using DEVINST = DWORD;
using PDEVNODE = DEVNODE*;
using PDEVINST = DEVINST*;
using DEVINSTID_W = WCHAR*;
using HMACHINE = HANDLE;

#define CR_SUCCESS 0x00000000U
#define CR_OUT_OF_MEMORY 0x00000002U
#define CR_INVALID_POINTER 0x00000003U
#define CR_INVALID_FLAG 0x00000004U
#define CR_INVALID_DEVNODE 0x00000005U
#define CR_NO_SUCH_DEVNODE 0x0000000DU
#define CR_FAILURE 0x00000013U
#define CR_BUFFER_SMALL 0x0000001AU
#define CR_INVALID_DEVICE_ID 0x0000001EU
#define CR_INVALID_PROPERTY 0x00000035U
#define CR_NO_SUCH_VALUE 0x00000025U

#define CM_LOCATE_DEVNODE_NORMAL 0x00000000
#define CM_DRP_DRIVER 0x0000000A

CONFIGRET WINAPI CM_Locate_DevNode_ExW(PDEVINST node, DEVINSTID_W deviceId, ULONG flags,
                                       HMACHINE machine);
CONFIGRET WINAPI CM_Get_Parent_Ex(PDEVINST parent, DEVINST node, ULONG flags, HMACHINE machine);
CONFIGRET WINAPI CM_Get_Child(PDEVINST child, DEVINST node, ULONG flags);
CONFIGRET WINAPI CM_Get_Child_Ex(PDEVINST child, DEVINST node, ULONG flags, HMACHINE machine);
CONFIGRET WINAPI CM_Get_Sibling(PDEVINST sibling, DEVINST node, ULONG flags);
CONFIGRET WINAPI CM_Get_Sibling_Ex(PDEVINST sibling, DEVINST node, ULONG flags, HMACHINE machine);
CONFIGRET WINAPI CM_Get_Device_ID_ExW(DEVINST node, PWSTR buffer, ULONG bufferLength, ULONG flags,
                                      HMACHINE machine);
CONFIGRET WINAPI CM_Get_DevNode_Registry_PropertyW(DEVINST node, ULONG property, PULONG type,
                                                   PVOID buffer, PULONG length, ULONG flags);
