#pragma once
// The open lists of devices.

#include <map>
#include <optional>
#include <vector>

#include <windows.h>
#include <setupapi.h>

#include "Call.h"
#include "DeviceTree.h"

namespace platform {

struct DeviceElement {
    DeviceId id;
    DEVINST node;
    GUID classGuid;                              // null when the device has none
    std::optional<SP_PROPCHANGE_PARAMS> change;  // class install parameters
    std::vector<GUID> interfaces;                // classes of the interfaces that were made
};

// In a caller's record (SP_DEVINFO_DATA), Reserved holds the element's number in its list, from 1;
// in that of an interface, the element's number and the interface's.
struct DeviceList {
    std::optional<GUID> classGuid;
    std::vector<DeviceElement> elements;

    DeviceElement* At(ULONG_PTR number);
    void Describe(const DeviceElement& element, SP_DEVINFO_DATA& device) const;
};

class DeviceLists : public Part {
  public:
    // classGuid: the class of all devices in the list, or null.
    HDEVINFO Open(const GUID* classGuid, const Call& call);
    bool Close(HDEVINFO handle, const Call& call);
    DeviceList* Find(HDEVINFO handle);

    // The list's element of that device, which is added when it isn't there; else null and the
    // error.
    DeviceElement* Add(DeviceList& list, const DeviceId& id, DWORD& error);

  private:
    std::map<HDEVINFO, DeviceList> m_open;
    ULONG_PTR m_next = 0x100;
};

// The path of a device's interface: "\\?\", the id with '#' for each backslash, '#' and the class;
// in small letters.
DeviceId InterfacePath(const DeviceId& id, const GUID& interfaceClass);

}  // namespace platform
