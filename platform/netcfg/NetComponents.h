#pragma once
// Network components, as the registry has them.
//
// One of the class Net is an instance subkey of its class key with ComponentId and
// NetCfgInstanceId; one of another class is a key Control\Network\<class GUID>\<GUID> with
// ComponentId. Those with an empty id or a GUID that is none aren't seen.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

namespace platform {

using NetText = std::basic_string<WCHAR>;

struct NetComponent {
    GUID classGuid = {};
    NetText id;
    GUID guid = {};  // null while it isn't installed
    NetText key;     // of its parameters, below HKEY_LOCAL_MACHINE; empty while it isn't installed

    bool IsInstalled() const { return !key.empty(); }
};
using NetComponentPtr = std::shared_ptr<NetComponent>;

// In the order of the subkeys.
std::vector<NetComponentPtr> ReadComponents(const GUID& classGuid);
// The classes that may have components, Net first.
std::vector<GUID> ComponentClasses();

// The 38 characters of a GUID in braces, in capitals, and back.
NetText NetGuidText(REFGUID guid);
std::optional<GUID> ParseNetGuid(const NetText& text);

NetText JoinPath(NetText path, const NetText& name);
// Below HKEY_LOCAL_MACHINE: of the class Net, of a class of components, and of a component's
// connection.
NetText NetClassPath();
NetText NetworkPath(const GUID& classGuid);
NetText ConnectionPath(const NetText& guid);

}  // namespace platform
