#include "Installation.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <utility>

#include <devguid.h>

#include "Bindings.h"
#include "ComponentDevice.h"
#include "DeviceTree.h"
#include "Facts.h"
#include "MiniportList.h"
#include "NewGuid.h"
#include "Text.h"

namespace platform {
namespace {

const NetText kConnectionName = TEXT("Local Area Connection ");
const NetText kAdapterProvider = TEXT("WinTsrTune_ipoib.dll,WinTsrTunePropPageProvider");
constexpr std::size_t kNumberDigits = 4;
constexpr unsigned long long kNumberEnd = 10'000;

void WriteTexts(const NetText& key,
                std::initializer_list<std::pair<const WCHAR*, NetText>> values) {
    for (const auto& [name, text] : values)
        WriteMachineText(key, name, text);
}

// The lowest free number of four digits among those names, or an empty text.
NetText FreeNumber(const std::vector<NetText>& names) {
    const std::set<NetText> taken(names.begin(), names.end());
    for (unsigned long long number = 0; number < kNumberEnd; ++number) {
        NetText text = NumberText(number, kNumberDigits);
        if (!taken.contains(text)) return text;
    }
    return {};
}

// "Local Area Connection <n>" with the lowest n from 1 that no connection of the class Net has.
NetText FreeConnectionName() {
    std::set<NetText> taken;
    for (const NetText& guid : MachineSubkeys(NetworkPath(GUID_DEVCLASS_NET))) {
        auto name = MachineText(ConnectionPath(guid), TEXT("Name"));
        if (name) taken.insert(FoldId(*name));
    }
    for (unsigned long long number = 1;; ++number) {
        NetText name = kConnectionName + NumberText(number);
        if (!taken.contains(FoldId(name))) return name;
    }
}

// The part of a device's id that says what it is: in capitals, and one part whatever it was.
NetText ModelOf(NetText id) {
    std::ranges::transform(id, id.begin(), UpCase);
    std::ranges::replace(id, TEXT('\\'), TEXT('&'));
    return TEXT("ROOT\\") + id;
}

bool InstallAdapter(NetComponent& component, const NetText& description) {
    const NetText number = FreeNumber(MachineSubkeys(NetClassPath()));
    const NetText model = ModelOf(component.id);
    const NetText instance = FreeNumber(MachineSubkeys(DeviceKeyPath(model)));
    if (number.empty() || instance.empty()) return false;
    const NetText device = JoinPath(model, instance);
    const NetText classGuid = NetGuidText(GUID_DEVCLASS_NET);
    component.guid = NewComponentGuid();
    component.key = JoinPath(NetClassPath(), number);
    const NetText guid = NetGuidText(component.guid);
    const NetText connectionName = FreeConnectionName();

    WriteTexts(component.key, {{TEXT("ComponentId"), component.id},
                               {TEXT("NetCfgInstanceId"), guid},
                               {TEXT("DriverDesc"), description},
                               {TEXT("EnumPropPages32"), kAdapterProvider}});
    WriteTexts(DeviceKeyPath(device), {{TEXT("Service"), TEXT("MUXMP")},
                                       {TEXT("Driver"), JoinPath(classGuid, number)},
                                       {TEXT("Class"), TEXT("Net")},
                                       {TEXT("ClassGUID"), classGuid},
                                       {TEXT("DeviceDesc"), description}});
    WriteTexts(ConnectionPath(guid),
               {{TEXT("Name"), connectionName}, {TEXT("PnpInstanceID"), device}});
    AddToMiniportList(device);
    return true;
}

void RemoveAdapter(const NetComponent& component) {
    const NetText guid = NetGuidText(component.guid);
    DeleteMachineKey(component.key);
    DeleteMachineKey(JoinPath(NetworkPath(GUID_DEVCLASS_NET), guid));
    DeleteMachineKey(FactPath(TEXT("Interfaces\\") + guid));
    RemovePathsAbove(guid);
}

// The key above, when the one that went was the last below it.
void RemoveEmptyParent(const NetText& key) {
    const NetText parent = key.substr(0, key.rfind(TEXT('\\')));
    if (MachineSubkeys(parent).empty()) DeleteMachineKey(parent);
}

void RemoveDevices(const std::set<NetText>& devices) {
    std::set<NetText> models;
    for (const NetText& device : devices) {
        DeleteMachineKey(DeviceKeyPath(device));
        models.insert(device.substr(0, device.rfind(TEXT('\\'))));
    }
    for (const NetText& model : models) {
        RemoveEmptyParent(DeviceKeyPath(model + TEXT("\\0000")));
        RemoveEmptyParent(DeviceKeyPath(model));
    }
    RemoveFromMiniportList(devices);
}

}  // namespace

bool InstallComponent(NetComponent& component, const NetText& description) {
    if (component.classGuid == GUID_DEVCLASS_NET) return InstallAdapter(component, description);
    component.guid = NewComponentGuid();
    component.key = JoinPath(NetworkPath(component.classGuid), NetGuidText(component.guid));
    WriteTexts(component.key, {{TEXT("ComponentId"), component.id}});
    if (component.classGuid == GUID_DEVCLASS_NETTRANS) AddProtocolPaths(component.id);
    return true;
}

void RemoveComponents(const std::vector<NetComponentPtr>& components) {
    // Which device is whose is asked before the first key goes. A shorter text than an id would
    // name a key with many devices.
    std::set<NetText> devices;
    for (const NetComponentPtr& component : components) {
        const NetText id = DeviceIdOf(*component);
        if (IsDeviceId(id)) devices.insert(FoldId(id));
    }
    for (const NetComponentPtr& component : components) {
        if (component->classGuid == GUID_DEVCLASS_NET) {
            RemoveAdapter(*component);
            continue;
        }
        if (component->classGuid == GUID_DEVCLASS_NETTRANS) RemoveProtocolPaths(component->id);
        DeleteMachineKey(component->key);
    }
    RemoveDevices(devices);
}

}  // namespace platform
