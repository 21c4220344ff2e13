#include "DeviceInstall.h"

#include <objbase.h>

#include "Facts.h"

namespace platform {
namespace {

constexpr const char* kListKind = "device list";

GUID ClassOf(const DeviceId& id) {
    GUID guid = {};
    const auto text = MachineText(DeviceKeyPath(id), TEXT("ClassGUID"));
    if (text) CLSIDFromString(text->c_str(), &guid);
    return guid;
}

}  // namespace

DeviceElement* DeviceList::At(ULONG_PTR number) {
    return number == 0 || number > elements.size() ? nullptr : &elements[number - 1];
}

void DeviceList::Describe(const DeviceElement& element, SP_DEVINFO_DATA& device) const {
    device.ClassGuid = element.classGuid;
    device.DevInst = element.node;
    device.Reserved = static_cast<ULONG_PTR>(&element - elements.data()) + 1;
}

HDEVINFO DeviceLists::Open(const GUID* classGuid, const Call& call) {
    m_next += 8;
    const HDEVINFO handle = reinterpret_cast<HDEVINFO>(m_next);
    DeviceList& list = m_open[handle];
    if (classGuid != nullptr) list.classGuid = *classGuid;
    call.machine.ledger.Enter(kListKind, handle, call.Name());
    return handle;
}

bool DeviceLists::Close(HDEVINFO handle, const Call& call) {
    if (m_open.erase(handle) == 0) return false;
    call.machine.ledger.Strike(kListKind, handle);
    return true;
}

DeviceList* DeviceLists::Find(HDEVINFO handle) {
    const auto found = m_open.find(handle);
    return found == m_open.end() ? nullptr : &found->second;
}

DeviceElement* DeviceLists::Add(DeviceList& list, const DeviceId& id, DWORD& error) {
    DeviceTree& tree = Machine::Current().Get<DeviceTree>();
    const DEVINST node = tree.Locate(id);
    error = ERROR_NO_SUCH_DEVINST;
    if (node == 0) return nullptr;
    for (DeviceElement& element : list.elements) {
        if (element.node == node) return &element;
    }
    const DeviceId spelling = tree.Id(node);
    const GUID classGuid = ClassOf(spelling);
    error = ERROR_CLASS_MISMATCH;
    if (list.classGuid && !IsEqualGUID(*list.classGuid, classGuid)) return nullptr;
    list.elements.push_back({spelling, node, classGuid, {}, {}});
    return &list.elements.back();
}

DeviceId InterfacePath(const DeviceId& id, const GUID& interfaceClass) {
    WCHAR classText[40];
    StringFromGUID2(interfaceClass, classText, ARRAYSIZE(classText));
    DeviceId path = TEXT("\\\\?\\");
    for (const WCHAR unit : id + TEXT('#') + classText) {
        if (unit == TEXT('\\'))
            path += TEXT('#');
        else if (unit >= TEXT('A') && unit <= TEXT('Z'))
            path += static_cast<WCHAR>(unit - TEXT('A') + TEXT('a'));
        else
            path += unit;
    }
    return path;
}

}  // namespace platform
