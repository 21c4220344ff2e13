#pragma once
// The binding paths above components: values of the fact key NetCfg\Bindings\<GUID>,
// "<path token>"="<upper component id>,...;enabled" or ";disabled", in their order.

#include <optional>
#include <string_view>
#include <vector>

#include "NetComponents.h"

namespace platform {

struct BindingPath {
    NetText lower;  // the component's GUID
    NetText token;
    std::vector<NetText> uppers;  // component ids, from the top of the path down
    bool isEnabled = false;
};

// A path's value without its place, or nothing when it has another form.
std::optional<BindingPath> ParseBindingPath(std::basic_string_view<WCHAR> value);
std::vector<BindingPath> ReadPathsAbove(const GUID& component);
// Writes whether the path is enabled; nothing when the path isn't there any longer.
void WritePath(const BindingPath& path);

// A protocol's paths above each Net component but the virtual miniports.
void AddProtocolPaths(const NetText& protocol);
void RemoveProtocolPaths(const NetText& protocol);
// All paths above a component.
void RemovePathsAbove(const NetText& guid);

}  // namespace platform
