#pragma once
// The binding paths above components: values of the fact key NetCfg\Bindings\<GUID>,
// "<path token>"="<upper component id>,...;enabled" or ";disabled", in their order.

#include <vector>

#include "BindingPath.h"
#include "NetComponents.h"

namespace platform {

std::vector<BindingPath> ReadPathsAbove(const GUID& component);
// Writes whether the path is enabled; nothing when the path isn't there any longer.
void WritePath(const BindingPath& path);

// A protocol's paths above each Net component but the virtual miniports.
void AddProtocolPaths(const NetText& protocol);
void RemoveProtocolPaths(const NetText& protocol);
// All paths above a component.
void RemovePathsAbove(const NetText& guid);

}  // namespace platform
