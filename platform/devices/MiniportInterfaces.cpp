#include "MiniportInterfaces.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include "DeviceTree.h"
#include "Facts.h"
#include "MuxTree.h"
#include "Text.h"

namespace platform {
namespace {

template <class T>
using ByName = std::map<MuxText, T, LessNoCase>;

// The adapter that each miniport works over. The search goes from the adapters upwards and takes
// the first one to reach a miniport, so it looks at each entry of the tree once, whatever is bound
// above what.
class AdaptersBelow {
  public:
    // In the order of preference. They are borrowed.
    explicit AdaptersBelow(const std::vector<const NetworkInterface*>& adapters) {
        for (const MuxText& name : LowerObjects())
            m_above.emplace(name, UpperBindings(name));
        for (const NetworkInterface* adapter : adapters)
            m_adapters.emplace(adapter->name, adapter);
        for (const NetworkInterface* adapter : adapters)
            Reach(adapter);
    }
    // Null when there is none.
    const NetworkInterface* Of(const MuxText& miniport) const {
        const auto found = m_adapters.find(miniport);
        return found == m_adapters.end() ? nullptr : found->second;
    }

  private:
    void Reach(const NetworkInterface* adapter) {
        std::vector<MuxText> reached = {adapter->name};
        while (!reached.empty()) {
            const auto above = m_above.find(reached.back());
            reached.pop_back();
            if (above == m_above.end()) continue;
            for (const MuxText& miniport : above->second) {
                if (m_adapters.try_emplace(miniport, adapter).second) reached.push_back(miniport);
            }
        }
    }

    ByName<std::vector<MuxText>> m_above;
    ByName<const NetworkInterface*> m_adapters;
};

// Behind the first semicolon, where the text is a reference to an INF file's.
MuxText PlainDescription(const MuxText& text) {
    const std::size_t end = text.starts_with(TEXT('@')) ? text.find(TEXT(';')) : text.npos;
    return end == text.npos ? text : text.substr(end + 1);
}

MuxText DescriptionOf(const InstalledMiniport& miniport) {
    const auto device = ConnectionText(miniport.name, TEXT("PnpInstanceID"));
    auto text = device ? MachineText(DeviceKeyPath(*device), TEXT("DeviceDesc")) : std::nullopt;
    if (!text) text = MachineText(miniport.classKey, TEXT("DriverDesc"));
    return PlainDescription(text.value_or(TEXT("")));
}

}  // namespace

void AddMiniportInterfaces(std::vector<NetworkInterface>& interfaces) {
    const std::vector<InstalledMiniport> miniports = InstalledMiniports();
    if (miniports.empty()) return;
    std::set<MuxText, LessNoCase> named;
    std::set<MuxText, LessNoCase> installed;
    for (const NetworkInterface& known : interfaces)
        named.insert(known.name);
    for (const InstalledMiniport& miniport : miniports)
        installed.insert(miniport.name);

    std::vector<const NetworkInterface*> adapters;
    for (const bool isUp : {true, false}) {
        for (const NetworkInterface& known : interfaces) {
            const bool isAdapter = !known.isLoopback && !installed.contains(known.name);
            if (isAdapter && known.isUp == isUp) adapters.push_back(&known);
        }
    }
    const AdaptersBelow below(adapters);

    std::vector<NetworkInterface> added;
    for (const InstalledMiniport& miniport : miniports) {
        if (!named.insert(miniport.name).second) continue;
        NetworkInterface row;
        row.guid = GuidFromText(miniport.name).value_or(GUID{});
        row.name = miniport.name;
        row.alias = ConnectionText(miniport.name, TEXT("Name")).value_or(TEXT(""));
        row.description = DescriptionOf(miniport);
        if (const NetworkInterface* const adapter = below.Of(miniport.name)) {
            row.isUp = adapter->isUp;
            row.permanentAddress = adapter->permanentAddress;
            row.currentAddress = adapter->currentAddress;
        }
        added.push_back(std::move(row));
    }
    std::ranges::move(added, std::back_inserter(interfaces));
}

}  // namespace platform
