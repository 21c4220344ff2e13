#include "MiniportList.h"

#include <algorithm>
#include <map>

#include "DeviceTree.h"
#include "Facts.h"

namespace platform {
namespace {

const NetText kListKey = TEXT("SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum");
// The instance numbers of one driver's devices have four digits.
constexpr std::size_t kMostDevices = 10'000;

struct MiniportList {
    std::map<std::size_t, NetText> entries;  // by their numbers
    std::size_t count;                       // Count may know of devices that have no entry

    std::size_t Unlisted() const { return count - std::min(count, entries.size()); }
};

std::optional<std::size_t> EntryNumber(const NetText& name) {
    const auto number = ParseNumber(name);
    if (!number || name != NumberText(static_cast<std::size_t>(*number))) return std::nullopt;
    return static_cast<std::size_t>(*number);
}

MiniportList ReadMiniportList() {
    MiniportList list;
    for (const NetText& name : MachineValues(kListKey)) {
        const auto number = EntryNumber(name);
        if (!number) continue;
        list.entries.emplace(*number, MachineText(kListKey, name.c_str()).value_or(NetText()));
    }
    const std::size_t count = MachineNumber(kListKey, TEXT("Count")).value_or(0);
    list.count = count > kMostDevices ? list.entries.size() : std::max(count, list.entries.size());
    return list;
}

void WriteEntry(std::size_t number, const NetText& deviceId) {
    WriteMachineText(kListKey, NumberText(number).c_str(), deviceId);
}

void WriteCount(std::size_t count) {
    WriteMachineNumber(kListKey, TEXT("Count"), static_cast<DWORD>(count));
}

}  // namespace

void AddToMiniportList(const NetText& deviceId) {
    const MiniportList list = ReadMiniportList();
    std::size_t number = list.count;
    while (list.entries.contains(number))
        ++number;
    WriteCount(list.count + 1);
    WriteEntry(number, deviceId);
}

void RemoveFromMiniportList(const std::set<NetText>& deviceIds) {
    const MiniportList list = ReadMiniportList();
    std::vector<NetText> kept;
    for (const auto& [number, id] : list.entries) {
        if (!deviceIds.contains(FoldId(id))) kept.push_back(id);
    }
    const std::size_t listed = list.entries.size() - kept.size();
    const std::size_t others = deviceIds.size() - std::min(listed, deviceIds.size());
    const std::size_t gone = listed + std::min(others, list.Unlisted());
    if (gone == 0) return;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const auto old = list.entries.find(i);
        if (old == list.entries.end() || old->second != kept[i]) WriteEntry(i, kept[i]);
    }
    for (auto old = list.entries.lower_bound(kept.size()); old != list.entries.end(); ++old)
        DeleteMachineValue(kListKey, NumberText(old->first).c_str());
    WriteCount(list.count - gone);
}

}  // namespace platform
