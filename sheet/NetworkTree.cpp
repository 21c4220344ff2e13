#include "NetworkTree.h"

#include "NetworkState.h"
#include "RegistryAccess.h"

namespace sheet {

namespace {

const Text kNetClass =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}");
const Text kAdapters = TEXT("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters");
constexpr TextView kMiniportId = TEXT("cvta_muxmp");
constexpr TextView kDevice = TEXT("\\Device\\");

// A value of any type, as the driver and the tabs read it.
std::optional<Text> AnyText(const Key& key, const WCHAR* name) {
    const std::vector<Text> texts = key.ReadTexts(name);
    if (!texts.empty()) return texts.front();
    return key.Has(name) ? std::optional(Text()) : std::nullopt;
}

std::optional<NetworkComponent> ReadComponent(const Key& key) {
    NetworkComponent component = {};
    component.id = key.ReadText(TEXT("ComponentId")).value_or(Text());
    component.guid = GuidOf(key.ReadText(TEXT("NetCfgInstanceId")).value_or(Text()));
    if (component.id.empty() || component.guid.empty()) return std::nullopt;
    component.description = key.ReadText(TEXT("DriverDesc")).value_or(Text());
    component.isMiniport = EqualNoCase(component.id, kMiniportId);
    if (component.isMiniport) {
        component.teamName = AnyText(key, TEXT("TeamName"));
        component.vlanId = AnyText(key, TEXT("VlanID"));
        component.vlanName = AnyText(key, TEXT("VlanName"));
        component.priority = AnyText(key, TEXT("Priority"));
    } else {
        component.hasBindingBackup = key.Has(TEXT("AdapterBindingBackup"));
    }
    return component;
}

LowerKey ReadLowerKey(const Key& key, const Text& guid) {
    LowerKey lower;
    lower.guid = guid;
    lower.entries = key.ReadTexts(TEXT("UpperBindings"));
    lower.teamDevice = AnyText(key, TEXT("TeamDeviceName")).value_or(Text());
    lower.teamName = AnyText(key, TEXT("TeamName"));
    lower.teamType = key.ReadNumber(TEXT("TeamType"));
    lower.teamGuid = AnyText(key, TEXT("TeamGuid"));
    lower.primary = GuidOf(AnyText(key, TEXT("PrimaryAdapterGuid")).value_or(Text()));
    return lower;
}

// Calls visit with each subkey that can be opened, and its name.
template <class Visit>
void ForEachSubkey(const Text& path, const Visit& visit) {
    const Key key(path);
    if (key.Status() != ERROR_SUCCESS) return;
    for (const Text& name : key.Subkeys()) {
        Text below = path;
        below.append(TEXT("\\")).append(name);
        const Key subkey(below);
        if (subkey.Status() == ERROR_SUCCESS) visit(subkey, name);
    }
}

}  // namespace

const NetworkComponent* NetworkTree::Component(const Text& guid) const {
    const auto found = componentsByGuid.find(guid);
    return found == componentsByGuid.end() ? nullptr : &components[found->second];
}

const LowerKey* NetworkTree::Lower(const Text& guid) const {
    const auto found = lowersByGuid.find(guid);
    return found == lowersByGuid.end() ? nullptr : &lowers[found->second];
}

bool NetworkTree::IsTeam(const Text& guid) const {
    const LowerKey* const lower = Lower(guid);
    return lower != nullptr && lower->IsTeam();
}

NetworkTree ReadNetworkTree() {
    NetworkTree tree;
    ForEachSubkey(kNetClass, [&](const Key& key, const Text&) {
        std::optional<NetworkComponent> component = ReadComponent(key);
        if (!component) return;
        tree.componentsByGuid.emplace(component->guid, tree.components.size());
        tree.components.push_back(std::move(*component));
    });
    ForEachSubkey(kAdapters, [&](const Key& key, const Text& name) {
        const Text guid = GuidOf(name);
        if (guid.empty()) return;
        tree.lowersByGuid.emplace(guid, tree.lowers.size());
        tree.lowers.push_back(ReadLowerKey(key, guid));
    });
    return tree;
}

Text GuidOfDevice(const Text& device) {
    return StartsWithNoCase(device, kDevice) ? GuidOf(TextView(device).substr(kDevice.size()))
                                             : Text();
}

}  // namespace sheet
