#pragma once
// Who the device of a provider call is, by its registry entries and its interface. The sheet's
// thread; nothing is shown. On failure what was made is freed, and the out-values are of no use.

#include <windows.h>
#include <setupapi.h>

#include "AdapterIdentity.h"

// Fills the identity, all of the flags, and the detail of the device's interface.
bool GetDeviceInterfaceDetail(const SP_PROPSHEETPAGE_REQUEST& request,
                              ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W>& interfaceDetail,
                              AdapterIdentity& identity, AdapterFlags& flags);

// The device that carries the ports of a card.
struct BusDevice {
    WCHAR instanceId[200] = {};
    RegistryPath classKeyPath = {};  // below HKEY_LOCAL_MACHINE
};
bool IdentifyBusDevice(const SP_PROPSHEETPAGE_REQUEST& request, BusDevice& bus);
