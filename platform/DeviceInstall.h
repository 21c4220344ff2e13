#pragma once
// The open lists of devices, and which devices are disabled.

#include <map>
#include <optional>
#include <set>
#include <utility>
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

    // The device becomes enabled or disabled in one scope. It runs when no scope disables it, and
    // has been restarted when this makes it run again: the fact key Restarts counts that.
    void ChangeState(const DeviceId& id, const SP_PROPCHANGE_PARAMS& change);

  private:
    bool IsDisabled(const DeviceId& key) const;

    std::map<HDEVINFO, DeviceList> m_open;
    ULONG_PTR m_next = 0x100;
    std::set<std::pair<DeviceId, DWORD>> m_disabled;  // folded id, DICS_FLAG_...
};

// The path of a device's interface: "\\?\", the id with '#' for each backslash, '#' and the class;
// in small letters.
DeviceId InterfacePath(const DeviceId& id, const GUID& interfaceClass);

}  // namespace platform
