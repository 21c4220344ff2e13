#pragma once
// Which devices are disabled, and how often what was restarted.

#include <optional>
#include <set>
#include <utility>

#include <windows.h>
#include <setupapi.h>

#include "DeviceTree.h"

namespace platform {

// Adds one to a count of the fact key Restarts. name: a device's id, or "Reboots" of the computer.
bool CountRestart(const DeviceId& name);

// The change of state that class install parameters ask for, or nothing and the error.
std::optional<SP_PROPCHANGE_PARAMS> ReadStateChange(const SP_CLASSINSTALL_HEADER* parameters,
                                                    DWORD size, DWORD& error);

class DeviceStates : public Part {
  public:
    // The device becomes enabled or disabled in one scope. It runs when no scope disables it, and
    // has been restarted when this makes it run again, which is counted.
    void Change(const DeviceId& id, const SP_PROPCHANGE_PARAMS& change);

  private:
    bool IsDisabled(const DeviceId& key) const;

    std::set<std::pair<DeviceId, DWORD>> m_disabled;  // folded id, DICS_FLAG_...
};

}  // namespace platform
