#pragma once
// The device classes of network components.

#include <guiddef.h>

extern const GUID GUID_DEVCLASS_NET;
extern const GUID GUID_DEVCLASS_NETCLIENT;
extern const GUID GUID_DEVCLASS_NETSERVICE;
extern const GUID GUID_DEVCLASS_NETTRANS;
