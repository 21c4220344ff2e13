#include "CardPorts.h"

#include <cfgmgr32.h>

namespace sheet {

namespace {

const Text kControl = TEXT("SYSTEM\\CurrentControlSet\\Control\\");
const Text kNetworkAdapters = TEXT("{4D36E972-E325-11CE-BFC1-08002BE10318}");

Text ReadText(const Text& path, const WCHAR* value) {
    const Key key(path);
    if (key.Status() != ERROR_SUCCESS) return Text();
    return key.ReadText(value).value_or(Text());
}

Text EnumKey(const Text& instanceId) {
    return TEXT("SYSTEM\\CurrentControlSet\\Enum\\") + instanceId;
}

Port ReadPort(const Text& instanceId) {
    Port port{instanceId, {}};
    const Text driver = ReadText(EnumKey(instanceId), TEXT("Driver"));
    if (driver.empty()) return port;
    const Text classPath = kControl + TEXT("Class\\") + driver;
    const Key classKey(classPath);
    if (classKey.Status() != ERROR_SUCCESS) return port;
    port.values = classKey.Values();
    const Text guid = ReadText(classPath, TEXT("NetCfgInstanceId"));
    const Text name = guid.empty() ? guid
                                   : ReadText(kControl + TEXT("Network\\") + kNetworkAdapters +
                                                  TEXT("\\") + guid + TEXT("\\Connection"),
                                              TEXT("Name"));
    if (!name.empty()) port.name = name;
    return port;
}

// A step through the device tree that wasn't possible.
struct TreeError {};

Text IdOf(DEVINST node) {
    WCHAR id[MAX_PATH] = {};
    if (CM_Get_Device_ID_ExW(node, id, MAX_PATH, 0, nullptr) != CR_SUCCESS) throw TreeError();
    return id;
}

bool IsPort(const Text& instanceId) {
    return instanceId.find(TEXT("ETH")) != Text::npos ||
           instanceId.find(TEXT("IPOIB")) != Text::npos;
}

// The id of the port beside the device, empty without one.
Text FindSibling(Text instanceId) {
    DEVINST node = 0;
    DEVINST next = 0;
    if (CM_Locate_DevNode_ExW(&node, instanceId.data(), CM_LOCATE_DEVNODE_NORMAL, nullptr) !=
        CR_SUCCESS)
        throw TreeError();
    if (CM_Get_Sibling_Ex(&next, node, 0, nullptr) == CR_SUCCESS) {
        const Text id = IdOf(next);
        return IsPort(id) ? id : Text();
    }
    DEVINST parent = 0;
    if (CM_Get_Parent_Ex(&parent, node, 0, nullptr) != CR_SUCCESS ||
        CM_Get_Child_Ex(&next, parent, 0, nullptr) != CR_SUCCESS)
        throw TreeError();
    do {
        if (next == node) continue;
        Text id = IdOf(next);
        if (IsPort(id)) return id;
    } while (CM_Get_Sibling_Ex(&next, next, 0, nullptr) == CR_SUCCESS);
    return Text();
}

}  // namespace

CardPorts ReadCardPorts(const Text& instanceId) {
    CardPorts card;
    if (!EqualNoCase(ReadText(EnumKey(instanceId), TEXT("ClassGUID")), kNetworkAdapters))
        return card;
    card.ports.push_back(ReadPort(instanceId));
    try {
        const Text sibling = FindSibling(instanceId);
        if (!sibling.empty()) card.ports.push_back(ReadPort(sibling));
    } catch (const TreeError&) {
        card.isTreeRead = false;
    }
    return card;
}

}  // namespace sheet
