#pragma once
// What the registry says of teams and VLANs: the tree of the MUX driver, and its installed virtual
// miniports. Any of it may be damaged: what isn't of the right form counts as absent.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

namespace platform {

using MuxText = std::basic_string<WCHAR>;

// The names of the Adapters key's subkeys, which are GUID strings, in the registry's order.
std::vector<MuxText> LowerObjects();
// The path of such a subkey, below HKEY_LOCAL_MACHINE.
MuxText LowerObjectPath(const MuxText& name);
// The GUID strings of the miniports that are bound over a lower object, in their order.
std::vector<MuxText> UpperBindings(const MuxText& lowerObject);
// What stands behind the last backslash of a device name.
std::optional<MuxText> GuidOfDeviceName(std::basic_string_view<WCHAR> deviceName);
std::optional<GUID> GuidFromText(const MuxText& text);

struct InstalledMiniport {
    MuxText name;      // its GUID string
    MuxText classKey;  // the path below HKEY_LOCAL_MACHINE
};
// The components with the id cvta_muxmp, in the order of their class keys.
std::vector<InstalledMiniport> InstalledMiniports();

}  // namespace platform
