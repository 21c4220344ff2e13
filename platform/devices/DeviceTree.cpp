#include "DeviceTree.h"

#include <algorithm>
#include <utility>

#include "Carrier.h"
#include "Facts.h"
#include "RegistryGeneration.h"

namespace platform {
namespace {

const DeviceId kEnumRoot = TEXT("SYSTEM\\CurrentControlSet\\Enum");
const DeviceId kTreeRoot = TEXT("HTREE\\ROOT\\0");
const DeviceId kRowsKey = TEXT("DeviceTree");

WCHAR Fold(WCHAR unit) {
    const bool isSmall = unit >= TEXT('a') && unit <= TEXT('z');
    return isSmall ? static_cast<WCHAR>(unit - TEXT('a') + TEXT('A')) : unit;
}

DeviceId Join(const DeviceId& a, const DeviceId& b) {
    return a + TEXT('\\') + b;
}

// The third part; empty when there are fewer.
DeviceId InstancePart(const DeviceId& id) {
    const std::size_t last = id.rfind(TEXT('\\'));
    return last == DeviceId::npos ? DeviceId() : id.substr(last + 1);
}

// The id as the Enum key spells it, or nothing when there is no such device.
std::optional<DeviceId> EnumSpelling(const DeviceId& id) {
    if (std::count(id.begin(), id.end(), TEXT('\\')) != 2) return std::nullopt;
    DeviceId spelling;
    DeviceId path = kEnumRoot;
    std::size_t begin = 0;
    while (begin <= id.size()) {
        const std::size_t end = std::min(id.find(TEXT('\\'), begin), id.size());
        const DeviceId part = id.substr(begin, end - begin);
        const auto names = MachineSubkeys(path);
        const auto found = std::find_if(names.begin(), names.end(),
                                        [&](const DeviceId& name) { return EqualIds(name, part); });
        if (found == names.end()) return std::nullopt;
        path = Join(path, *found);
        spelling = spelling.empty() ? *found : Join(spelling, *found);
        begin = end + 1;
    }
    return spelling;
}

// The prefix's owner whose prefix, with the '&' behind it, begins the instance part; the longest
// counts.
template <class Owners>
const DeviceId* OwnerOfPrefix(const Owners& owners, const DeviceId& instance) {
    for (std::size_t end = instance.rfind(TEXT('&')); end != DeviceId::npos && end > 0;
         end = instance.rfind(TEXT('&'), end - 1)) {
        const auto owner = owners.find(instance.substr(0, end));
        if (owner != owners.end()) return &owner->second;
    }
    return nullptr;
}

}  // namespace

DeviceId DeviceKeyPath(const DeviceId& id) {
    return Join(kEnumRoot, id);
}

DeviceId FoldId(const DeviceId& id) {
    DeviceId folded = id;
    std::transform(folded.begin(), folded.end(), folded.begin(), Fold);
    return folded;
}

bool EqualIds(const DeviceId& a, const DeviceId& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](WCHAR x, WCHAR y) { return Fold(x) == Fold(y); });
}

void DeviceTree::ReadRows(Devices& devices) {
    for (const DeviceId& name : MachineValues(FactPath(kRowsKey))) {
        const DeviceId key = FoldId(name);
        devices[key].hasRow = true;
        devices[key].spelling = name;
        const auto row = FactText(kRowsKey, name.c_str());
        if (!row) continue;
        for (const DeviceId& childName : SplitFields(*row, TEXT(';'))) {
            const DeviceId childKey = FoldId(childName);
            Device& child = devices[childKey];
            if (child.listed) continue;
            child.listed = true;
            child.spelling = childName;
            child.parent = key;
            devices[key].children.push_back(childKey);
        }
    }
}

void DeviceTree::ReadEnum(Devices& devices) {
    std::map<DeviceId, DeviceId> owners;  // by folded prefix
    std::vector<DeviceId> unlisted;
    for (const DeviceId& enumerator : MachineSubkeys(kEnumRoot)) {
        for (const DeviceId& model : MachineSubkeys(Join(kEnumRoot, enumerator))) {
            const DeviceId two = Join(enumerator, model);
            for (const DeviceId& instance : MachineSubkeys(Join(kEnumRoot, two))) {
                const DeviceId id = Join(two, instance);
                const DeviceId key = FoldId(id);
                Device& device = devices[key];
                if (device.spelling.empty()) device.spelling = id;
                if (!device.listed) unlisted.push_back(key);
                const auto prefix = MachineText(DeviceKeyPath(id), TEXT("ParentIdPrefix"));
                if (prefix && !prefix->empty()) owners.emplace(FoldId(*prefix), key);
            }
        }
    }

    for (const DeviceId& key : unlisted) {
        const DeviceId* owner = OwnerOfPrefix(owners, InstancePart(key));
        if (owner == nullptr || *owner == key) continue;
        devices[key].parent = *owner;
        // A row, where there is one, is complete.
        Device& parent = devices[*owner];
        if (!parent.hasRow) parent.children.push_back(key);
    }
}

const std::vector<DeviceId>& DeviceTree::ChildrenOf(Devices& devices, const DeviceId& key) {
    Device& parent = devices.at(key);
    if (parent.inOrder || parent.hasRow) return parent.children;
    std::map<std::pair<DWORD, DeviceId>, DeviceId> places;
    for (const DeviceId& child : parent.children) {
        const auto path = DeviceKeyPath(devices.at(child).spelling);
        const DWORD last = static_cast<DWORD>(-1);
        const DWORD address = MachineNumber(path, TEXT("Address")).value_or(last);
        places.emplace(std::pair(address, child), child);
    }
    parent.children.clear();
    for (const auto& [place, child] : places)
        parent.children.push_back(child);
    parent.inOrder = true;
    return parent.children;
}

const DeviceTree::Devices& DeviceTree::RowsNow() {
    const std::uint64_t generation = RegistryGeneration();
    if (!m_rows || m_rows->generation != generation) {
        m_rows = Snapshot{generation, {}};
        ReadRows(m_rows->devices);
    }
    return m_rows->devices;
}

DeviceTree::Devices& DeviceTree::AllNow() {
    const std::uint64_t generation = RegistryGeneration();
    if (!m_all || m_all->generation != generation) {
        m_all = Snapshot{generation, RowsNow()};
        ReadEnum(m_all->devices);
    }
    return m_all->devices;
}

DEVINST DeviceTree::Number(const DeviceId& key, const DeviceId& spelling, bool isRoot) {
    DEVINST& number = m_numbers[{key, isRoot}];
    if (number == 0) {
        m_nodes.push_back({key, isRoot, spelling});
        number = kFirstNode + static_cast<DEVINST>(m_nodes.size() - 1);
    }
    m_nodes[number - kFirstNode].spelling = spelling;
    return number;
}

DEVINST DeviceTree::NumberOf(const Devices& devices, const DeviceId& key) {
    const auto device = devices.find(key);
    return device == devices.end() ? 0 : Number(key, device->second.spelling);
}

const DeviceTree::Node* DeviceTree::Find(DEVINST node) const {
    return node < kFirstNode || node - kFirstNode >= m_nodes.size() ? nullptr
                                                                    : &m_nodes[node - kFirstNode];
}

DEVINST DeviceTree::Locate(const DeviceId& id) {
    const auto spelling = EnumSpelling(id);
    if (!spelling) return 0;
    const DeviceId key = FoldId(id);
    const DEVINST listed = NumberOf(RowsNow(), key);
    return listed != 0 ? listed : Number(key, *spelling);
}

DEVINST DeviceTree::Adopt(DEVINST node) {
    return Find(node) != nullptr ? node : Locate(ForeignNodeId(node));
}

DeviceId DeviceTree::Id(DEVINST node) const {
    const Node* found = Find(node);
    return found != nullptr ? found->spelling : DeviceId();
}

DEVINST DeviceTree::Parent(DEVINST node) {
    const Node* found = Find(node);
    if (found == nullptr || found->isRoot || found->key == kTreeRoot) return 0;
    const Devices& devices = AllNow();
    const auto device = devices.find(found->key);
    if (device == devices.end()) return 0;
    const DeviceId& parent = device->second.parent;
    return parent.empty() ? Number(device->first, kTreeRoot, true) : NumberOf(devices, parent);
}

DEVINST DeviceTree::FirstChild(DEVINST node) {
    const Node* found = Find(node);
    if (found == nullptr) return 0;
    Devices& devices = AllNow();
    const DeviceId key = found->key;
    if (found->isRoot) return NumberOf(devices, key);
    if (!devices.contains(key)) return 0;
    const auto& children = ChildrenOf(devices, key);
    return children.empty() ? 0 : NumberOf(devices, children.front());
}

DEVINST DeviceTree::NextSibling(DEVINST node) {
    const Node* found = Find(node);
    if (found == nullptr || found->isRoot) return 0;
    Devices& devices = AllNow();
    const auto device = devices.find(found->key);
    if (device == devices.end() || device->second.parent.empty()) return 0;
    const auto& family = ChildrenOf(devices, device->second.parent);
    const auto place = std::find(family.begin(), family.end(), device->first);
    if (place == family.end() || place + 1 == family.end()) return 0;
    return NumberOf(devices, *(place + 1));
}

}  // namespace platform
