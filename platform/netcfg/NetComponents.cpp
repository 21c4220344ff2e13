#include "NetComponents.h"

#include <devguid.h>
#include <objbase.h>

#include "Facts.h"

namespace platform {
namespace {

constexpr std::size_t kGuidLength = 38;
const NetText kClassRoot = TEXT("SYSTEM\\CurrentControlSet\\Control\\Class");
const NetText kNetworkRoot = TEXT("SYSTEM\\CurrentControlSet\\Control\\Network");

// The component whose parameters that key has, or null.
NetComponentPtr ReadComponent(const GUID& classGuid, NetText key,
                              const std::optional<NetText>& guidText) {
    const auto guid = guidText ? ParseNetGuid(*guidText) : std::nullopt;
    if (!guid) return nullptr;
    auto id = MachineText(key, TEXT("ComponentId"));
    if (!id || id->empty()) return nullptr;
    return std::make_shared<NetComponent>(
        NetComponent{classGuid, std::move(*id), *guid, std::move(key)});
}

}  // namespace

std::vector<NetComponentPtr> ReadComponents(const GUID& classGuid) {
    const bool isNet = classGuid == GUID_DEVCLASS_NET;
    const NetText parent = isNet ? NetClassPath() : NetworkPath(classGuid);
    std::vector<NetComponentPtr> components;
    for (const NetText& name : MachineSubkeys(parent)) {
        NetText key = JoinPath(parent, name);
        const auto guid = isNet ? MachineText(key, TEXT("NetCfgInstanceId")) : name;
        if (auto component = ReadComponent(classGuid, std::move(key), guid))
            components.push_back(std::move(component));
    }
    return components;
}

std::vector<GUID> ComponentClasses() {
    std::vector<GUID> classes = {GUID_DEVCLASS_NET};
    for (const NetText& name : MachineSubkeys(kNetworkRoot)) {
        const auto guid = ParseNetGuid(name);
        if (guid && *guid != GUID_DEVCLASS_NET) classes.push_back(*guid);
    }
    return classes;
}

NetText NetGuidText(REFGUID guid) {
    WCHAR text[kGuidLength + 1] = {};
    StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
    return text;
}

std::optional<GUID> ParseNetGuid(const NetText& text) {
    GUID guid;
    if (text.size() != kGuidLength || CLSIDFromString(text.c_str(), &guid) != S_OK)
        return std::nullopt;
    return guid;
}

NetText JoinPath(NetText path, const NetText& name) {
    return path.append(1, TEXT('\\')).append(name);
}

NetText NetClassPath() {
    return JoinPath(kClassRoot, NetGuidText(GUID_DEVCLASS_NET));
}

NetText NetworkPath(const GUID& classGuid) {
    return JoinPath(kNetworkRoot, NetGuidText(classGuid));
}

NetText ConnectionPath(const NetText& guid) {
    return JoinPath(JoinPath(NetworkPath(GUID_DEVCLASS_NET), guid), TEXT("Connection"));
}

}  // namespace platform
