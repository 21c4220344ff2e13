// The device tree's functions (cfgmgr32.h).

#include <algorithm>

#include "DeviceTree.h"
#include "Facts.h"

using namespace platform;

namespace {

DeviceTree& Tree() {
    return Machine::Current().Get<DeviceTree>();
}

// The text by which a call that concerns a node is told from others. Asked before the Call. The
// node becomes the tree's own.
DeviceId NameOf(DEVINST& node) {
    const QuietScope quiet;
    node = Tree().Adopt(node);
    return Tree().Id(node);
}

using Step = DEVINST (DeviceTree::*)(DEVINST);

// From one node to another. flags: none exist.
CONFIGRET Walk(const char* name, Step step, PDEVINST result, DEVINST node, ULONG flags) {
    const DeviceId id = NameOf(node);
    Call call(name, id.c_str(), CR_FAILURE);
    if (call.Failed()) return call.Error();
    if (result == nullptr) return CR_INVALID_POINTER;
    if (flags != 0) return CR_INVALID_FLAG;
    if (id.empty()) return CR_INVALID_DEVNODE;
    const DEVINST found = (Tree().*step)(node);
    if (found == 0) return CR_NO_SUCH_DEVNODE;
    *result = found;
    return CR_SUCCESS;
}

}  // namespace

CONFIGRET WINAPI CM_Locate_DevNode_ExW(PDEVINST node, DEVINSTID_W deviceId, ULONG flags, HMACHINE) {
    Call call("CM_Locate_DevNode_ExW", deviceId, CR_NO_SUCH_DEVNODE);
    if (call.Failed()) return call.Error();
    if (node == nullptr) return CR_INVALID_POINTER;
    if (deviceId == nullptr) return CR_INVALID_DEVICE_ID;
    if (flags != CM_LOCATE_DEVNODE_NORMAL) return CR_INVALID_FLAG;
    const DEVINST found = Tree().Locate(deviceId);
    if (found == 0) return CR_NO_SUCH_DEVNODE;
    *node = found;
    return CR_SUCCESS;
}

CONFIGRET WINAPI CM_Get_Parent_Ex(PDEVINST parent, DEVINST node, ULONG flags, HMACHINE) {
    return Walk("CM_Get_Parent_Ex", &DeviceTree::Parent, parent, node, flags);
}

CONFIGRET WINAPI CM_Get_Child(PDEVINST child, DEVINST node, ULONG flags) {
    return Walk("CM_Get_Child", &DeviceTree::FirstChild, child, node, flags);
}

CONFIGRET WINAPI CM_Get_Child_Ex(PDEVINST child, DEVINST node, ULONG flags, HMACHINE) {
    return Walk("CM_Get_Child_Ex", &DeviceTree::FirstChild, child, node, flags);
}

CONFIGRET WINAPI CM_Get_Sibling(PDEVINST sibling, DEVINST node, ULONG flags) {
    return Walk("CM_Get_Sibling", &DeviceTree::NextSibling, sibling, node, flags);
}

CONFIGRET WINAPI CM_Get_Sibling_Ex(PDEVINST sibling, DEVINST node, ULONG flags, HMACHINE) {
    return Walk("CM_Get_Sibling_Ex", &DeviceTree::NextSibling, sibling, node, flags);
}

CONFIGRET WINAPI CM_Get_Device_ID_ExW(DEVINST node, PWSTR buffer, ULONG bufferLength, ULONG flags,
                                      HMACHINE) {
    const DeviceId id = NameOf(node);
    Call call("CM_Get_Device_ID_ExW", id.c_str(), CR_FAILURE);
    if (call.Failed()) return call.Error();
    if (buffer == nullptr) return CR_INVALID_POINTER;
    if (flags != 0) return CR_INVALID_FLAG;
    if (id.empty()) return CR_INVALID_DEVNODE;
    if (bufferLength <= id.size()) return CR_BUFFER_SMALL;
    std::copy_n(id.c_str(), id.size() + 1, buffer);
    return CR_SUCCESS;
}

CONFIGRET WINAPI CM_Get_DevNode_Registry_PropertyW(DEVINST node, ULONG property, PULONG type,
                                                   PVOID buffer, PULONG length, ULONG flags) {
    const DeviceId id = NameOf(node);
    Call call("CM_Get_DevNode_Registry_PropertyW", id.c_str(), CR_NO_SUCH_VALUE);
    if (call.Failed()) return call.Error();
    if (length == nullptr || (buffer == nullptr && *length != 0)) return CR_INVALID_POINTER;
    if (flags != 0) return CR_INVALID_FLAG;
    if (property != CM_DRP_DRIVER) return CR_INVALID_PROPERTY;
    if (id.empty()) return CR_INVALID_DEVNODE;
    const auto text = MachineText(DeviceKeyPath(id), TEXT("Driver"));
    if (!text) return CR_NO_SUCH_VALUE;
    const ULONG needed = static_cast<ULONG>((text->size() + 1) * sizeof(WCHAR));
    const ULONG given = *length;
    *length = needed;
    if (type != nullptr) *type = REG_SZ;
    if (given < needed) return CR_BUFFER_SMALL;
    std::copy_n(text->c_str(), text->size() + 1, static_cast<WCHAR*>(buffer));
    return CR_SUCCESS;
}
