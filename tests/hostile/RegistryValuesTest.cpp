// Each registry value that the library reads, and each answer of the driver and of the IP layer,
// with hostile data while all tabs are used.

#include <set>

#include "AllTabs.h"
#include "Hostile.h"
#include "Seeds.h"

namespace {

using namespace platform;

// A value below HKEY_LOCAL_MACHINE, there or not.
using Place = std::pair<std::u16string, std::u16string>;
using Places = std::vector<Place>;

// The machine's own nature, which isn't what it says of others.
bool IsMachineFact(const std::u16string& path) {
    const std::u16string_view standIn = u"SOFTWARE\\StandIn";
    return path.starts_with(standIn) && path.find(u"\\Miniports\\") == path.npos &&
           path.find(u"\\Interfaces\\") == path.npos;
}

// The values that are asked for when all tabs are used.
Places PlacesRead(std::size_t machine) {
    TestMachine test(MachineOf(machine));
    Registry& registry = test.machine.Get<Registry>();
    std::set<std::pair<const RegistryKey*, std::u16string>> queries;
    registry.onQuery = [&](const RegistryKey& key, std::u16string_view name) {
        queries.emplace(&key, name);
    };
    UseAllTabs(test, kScenarios);
    Places places;
    registry.Tree().Walk([&](const std::u16string& whole, const RegistryKey& key) {
        const std::u16string path = whole.substr(whole.find(u'\\') + 1);
        for (auto query = queries.lower_bound({&key, u""});
             query != queries.end() && query->first == &key; ++query)
            if (!IsMachineFact(path)) places.emplace_back(path, query->second);
    });
    return places;
}

// Sets a value to hostile data, or deletes it; gives what it did.
std::string Spoil(TestMachine& test, Hostile& hostile, const Place& place) {
    RegistryTree& tree = test.machine.Get<Registry>().Tree();
    const auto key = tree.Find(RegistryRoot::LocalMachine, place.first);
    std::string done = ToUtf8(place.first) + ": ";
    if (!key) return done + "no such key";
    const RegistryValue* old = key->FindValue(place.second);
    if (old && hostile.Below(8) == 0) {
        tree.DeleteValue(*key, place.second);
        return done + "-" + ToUtf8(place.second);
    }
    const std::vector<BYTE> data = hostile.Data(old ? old->Data() : std::span<const BYTE>());
    const DWORD type = old && hostile.Below(2) ? old->Type()
                       : hostile.Below(2)      ? DWORD{REG_SZ}
                                               : hostile.Type();
    tree.SetValue(*key, place.second, type, data);
    return done + FormatValue(place.second, type, data).substr(0, 300);
}

class HostileData : public testing::TestWithParam<std::size_t> {};

// Alone or with others. Each place has its turn.
TEST_P(HostileData, InEachPlaceThatIsRead) {
    const std::size_t machine = GetParam();
    const Places places = PlacesRead(machine);
    ASSERT_FALSE(places.empty());
    for (const std::uint64_t seed : Seeds(places.size())) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed * kMachines + machine);
        std::string spoilt;
        ExpectCleanUseAfter(machine, hostile.OneOf(kScenarios), hostile.Below(2) != 0,
                            [&](TestMachine& test) {
                                spoilt += Spoil(test, hostile, places[seed % places.size()]);
                                while (hostile.Below(3) == 0)
                                    spoilt += Spoil(test, hostile, hostile.OneOf(places));
                            });
        ASSERT_FALSE(HasFailure()) << spoilt;
    }
}

INSTANTIATE_TEST_SUITE_P(Machines, HostileData, testing::Range<std::size_t>(0, kMachines));

}  // namespace
