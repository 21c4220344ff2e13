#pragma once
// Who the device of a provider call is, by its registry entries and its interface. The sheet's
// thread; nothing is shown. On failure what was made is freed, and the out-values are of no use.

#include <windows.h>
#include <setupapi.h>

#include "AdapterContext.h"

// Fills the two texts of the context, all of the flags, and the detail of the device's interface.
bool GetDeviceInterfaceDetail(const SP_PROPSHEETPAGE_REQUEST& request,
                              ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W>& interfaceDetail,
                              AdapterContext& context, AdapterFlags& flags);

// The device that carries the ports of a card.
struct BusDevice {
    WCHAR instanceId[200] = {};
    WCHAR classKeyPath[kPathCapacity] = {};  // below HKEY_LOCAL_MACHINE
};
bool IdentifyBusDevice(const SP_PROPSHEETPAGE_REQUEST& request, BusDevice& bus);
