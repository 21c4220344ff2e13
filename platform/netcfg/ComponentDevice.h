#pragma once
// The device of a network component.

#include <optional>

#include "NetComponents.h"

namespace platform {

// The instance id that the component's connection gives, else that of the device whose Driver names
// the component's class key; empty when there is none. The device needn't exist.
NetText DeviceIdOf(const NetComponent& component);
// Whether a text has the three parts of an instance id.
bool IsDeviceId(const NetText& text);
// Where the device's values are, below HKEY_LOCAL_MACHINE; nothing when it doesn't exist.
std::optional<NetText> DeviceKeyOf(const NetComponent& component);
// FriendlyName of a device, else what DeviceDesc says, else nothing.
std::optional<NetText> DeviceName(const NetText& deviceKey);

}  // namespace platform
