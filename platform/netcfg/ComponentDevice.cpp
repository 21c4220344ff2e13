#include "ComponentDevice.h"

#include <algorithm>
#include <map>

#include <devguid.h>

#include "DeviceTree.h"
#include "Facts.h"
#include "RegistryGeneration.h"

namespace platform {
namespace {

// The devices by the folded text of their Driver; of several with one Driver the first counts.
struct DriverIndex : Part {
    std::uint64_t generation = 0;
    std::map<NetText, NetText> devices;
};

void IndexModel(const NetText& model, std::map<NetText, NetText>& devices) {
    for (const NetText& instance : MachineSubkeys(DeviceKeyPath(model))) {
        const NetText id = JoinPath(model, instance);
        const auto driver = MachineText(DeviceKeyPath(id), TEXT("Driver"));
        if (driver) devices.emplace(FoldId(*driver), id);
    }
}

NetText DeviceOfDriver(const NetText& driver) {
    auto& index = Machine::Current().Get<DriverIndex>();
    const std::uint64_t generation = RegistryGeneration();
    if (index.generation != generation) {
        index.devices.clear();
        for (const NetText& enumerator : MachineSubkeys(DeviceKeyPath({}))) {
            for (const NetText& model : MachineSubkeys(DeviceKeyPath(enumerator)))
                IndexModel(JoinPath(enumerator, model), index.devices);
        }
        index.generation = generation;
    }
    const auto found = index.devices.find(FoldId(driver));
    return found == index.devices.end() ? NetText() : found->second;
}

}  // namespace

NetText DeviceIdOf(const NetComponent& component) {
    if (!component.IsInstalled() || component.classGuid != GUID_DEVCLASS_NET) return {};
    const NetText connection = ConnectionPath(NetGuidText(component.guid));
    const auto id = MachineText(connection, TEXT("PnpInstanceID"));
    if (id && !id->empty()) return *id;
    // Driver is the class key from its class on.
    const std::size_t number = component.key.rfind(TEXT('\\'));
    return DeviceOfDriver(component.key.substr(component.key.rfind(TEXT('\\'), number - 1) + 1));
}

bool IsDeviceId(const NetText& text) {
    return std::count(text.begin(), text.end(), TEXT('\\')) == 2 && text.front() != TEXT('\\') &&
           text.back() != TEXT('\\') && text.find(TEXT("\\\\")) == NetText::npos;
}

std::optional<NetText> DeviceKeyOf(const NetComponent& component) {
    const NetText id = DeviceIdOf(component);
    if (!IsDeviceId(id) || !MachineKeyExists(DeviceKeyPath(id))) return std::nullopt;
    return DeviceKeyPath(id);
}

std::optional<NetText> DeviceName(const NetText& deviceKey) {
    if (auto name = MachineText(deviceKey, TEXT("FriendlyName"))) return name;
    auto description = MachineText(deviceKey, TEXT("DeviceDesc"));
    // "@file,%key%;text" names a text of an INF file, and repeats it.
    if (description && description->starts_with(TEXT('@')))
        description->erase(0, description->rfind(TEXT(';')) + 1);
    return description;
}

}  // namespace platform
