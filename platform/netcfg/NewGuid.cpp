#include "NewGuid.h"

#include <cstdint>
#include <cstring>
#include <unordered_set>

#include <devguid.h>

#include "Facts.h"
#include "MuxTree.h"
#include "NetCfgCarrier.h"
#include "NetComponents.h"
#include "Text.h"

namespace platform {
namespace {

using GuidTexts = std::unordered_set<NetText>;  // in capitals

constexpr std::size_t kGuidTextLength = 38;

// SplitMix64: the n-th number of the seed.
std::uint64_t SeedNumber(std::uint64_t seed, std::uint64_t n) {
    std::uint64_t z = seed + (n + 1) * 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

// A random GUID by its form (version 4).
GUID SeedGuid(std::uint64_t seed, std::uint64_t n) {
    const std::uint64_t halves[] = {SeedNumber(seed, 2 * n), SeedNumber(seed, 2 * n + 1)};
    GUID guid;
    static_assert(sizeof guid == sizeof halves);
    std::memcpy(&guid, halves, sizeof guid);
    guid.Data3 = static_cast<WORD>((guid.Data3 & 0x0FFF) | 0x4000);
    guid.Data4[0] = static_cast<BYTE>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

void AddText(NetText text, GuidTexts& texts) {
    for (WCHAR& unit : text)
        unit = UpCase(unit);
    texts.insert(std::move(text));
}

void AddSubkeys(const NetText& path, GuidTexts& texts) {
    for (NetText& name : MachineSubkeys(path))
        AddText(std::move(name), texts);
}

// Every text in braces that is as long as a GUID.
void AddFromBytes(const std::vector<BYTE>& bytes, GuidTexts& texts) {
    NetText text(bytes.size() / sizeof(WCHAR), TEXT('\0'));
    if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
    for (auto at = text.find(TEXT('{')); at != NetText::npos; at = text.find(TEXT('{'), at + 1)) {
        const std::size_t end = at + kGuidTextLength;
        if (end <= text.size() && text[end - 1] == TEXT('}'))
            AddText(text.substr(at, kGuidTextLength), texts);
    }
}

GuidTexts GuidsInUse() {
    GuidTexts texts;
    const NetText netClass = NetClassPath();
    for (const NetText& instance : MachineSubkeys(netClass)) {
        const NetText key = JoinPath(netClass, instance);
        if (auto guid = MachineText(key, TEXT("NetCfgInstanceId"))) AddText(*guid, texts);
    }
    for (const GUID& classGuid : ComponentClasses())
        AddSubkeys(NetworkPath(classGuid), texts);
    for (const WCHAR* const key : {TEXT("Interfaces"), TEXT("Miniports"), TEXT("NetCfg\\Bindings")})
        AddSubkeys(FactPath(key), texts);
    for (const NetText& adapter : LowerObjects()) {
        AddText(adapter, texts);
        const NetText key = LowerObjectPath(adapter);
        for (const NetText& value : MachineValues(key)) {
            if (const auto bytes = MachineBytes(key, value.c_str())) AddFromBytes(*bytes, texts);
        }
    }
    return texts;
}

}  // namespace

GUID NewComponentGuid() {
    const GuidTexts inUse = GuidsInUse();
    std::uint64_t n = 0;
    while (inUse.contains(NetGuidText(SeedGuid(GuidSeed(), n))))
        ++n;
    return SeedGuid(GuidSeed(), n);
}

}  // namespace platform
