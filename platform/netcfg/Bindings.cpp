#include "Bindings.h"

#include <algorithm>

#include <devguid.h>

#include "Facts.h"
#include "Text.h"

namespace platform {
namespace {

NetText PathsKey(const NetText& guid) {
    return FactPath(TEXT("NetCfg\\Bindings\\") + guid);
}

NetText ProtocolToken(NetText protocol, const NetText& guid) {
    return protocol.append(TEXT("->")).append(guid);
}

}  // namespace

std::vector<BindingPath> ReadPathsAbove(const GUID& component) {
    std::vector<BindingPath> paths;
    const NetText guid = NetGuidText(component);
    const NetText key = PathsKey(guid);
    for (const NetText& token : MachineValues(key)) {
        const auto value = MachineText(key, token.c_str());
        auto path = value ? ParseBindingPath(*value) : std::nullopt;
        if (!path) continue;
        path->lower = guid;
        path->token = token;
        paths.push_back(std::move(*path));
    }
    return paths;
}

void WritePath(const BindingPath& path) {
    const NetText key = PathsKey(path.lower);
    const auto value = MachineText(key, path.token.c_str());
    const auto now = value ? ParseBindingPath(*value) : std::nullopt;
    if (!now || now->isEnabled == path.isEnabled) return;
    const NetText uppers = value->substr(0, value->find(TEXT(';')) + 1);
    WriteMachineText(key, path.token.c_str(),
                     uppers + (path.isEnabled ? kPathEnabled : kPathDisabled));
}

void AddProtocolPaths(const NetText& protocol) {
    const NetText value = protocol + TEXT(';') + kPathEnabled;
    for (const NetComponentPtr& lower : ReadComponents(GUID_DEVCLASS_NET)) {
        if (EqualNoCase(lower->id, TEXT("cvta_muxmp"))) continue;
        const NetText guid = NetGuidText(lower->guid);
        WriteMachineText(PathsKey(guid), ProtocolToken(protocol, guid).c_str(), value);
    }
}

void RemoveProtocolPaths(const NetText& protocol) {
    for (const NetText& guid : MachineSubkeys(PathsKey({}))) {
        const NetText key = PathsKey(guid);
        const bool wasThere = DeleteMachineValue(key, ProtocolToken(protocol, guid).c_str());
        if (wasThere && MachineValues(key).empty()) DeleteMachineKey(key);
    }
}

void RemovePathsAbove(const NetText& guid) {
    DeleteMachineKey(PathsKey(guid));
}

}  // namespace platform
