#include "MuxTree.h"

#include <cstring>

#include <objbase.h>

#include "Call.h"
#include "Facts.h"
#include "Text.h"

namespace platform {
namespace {

const MuxText kAdaptersKey =
    TEXT("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters");
const MuxText kNetClassKey =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}");

}  // namespace

std::vector<MuxText> LowerObjects() {
    return MachineSubkeys(kAdaptersKey);
}

MuxText LowerObjectPath(const MuxText& name) {
    return kAdaptersKey + TEXT('\\') + name;
}

std::vector<MuxText> UpperBindings(const MuxText& lowerObject) {
    const auto data = MachineBytes(LowerObjectPath(lowerObject), TEXT("UpperBindings"));
    if (!data) return {};
    MuxText texts(data->size() / sizeof(WCHAR), TEXT('\0'));
    if (!texts.empty()) std::memcpy(texts.data(), data->data(), texts.size() * sizeof(WCHAR));
    std::vector<MuxText> miniports;
    std::basic_string_view<WCHAR> rest = texts;
    while (!rest.empty() && rest.front() != TEXT('\0')) {
        const auto entry = rest.substr(0, rest.find(TEXT('\0')));
        if (auto guid = GuidOfDeviceName(entry)) miniports.push_back(std::move(*guid));
        rest.remove_prefix(std::min(entry.size() + 1, rest.size()));
    }
    return miniports;
}

std::optional<MuxText> GuidOfDeviceName(std::basic_string_view<WCHAR> deviceName) {
    const std::size_t last = deviceName.rfind(TEXT('\\'));
    if (last == deviceName.npos) return std::nullopt;
    return MuxText(deviceName.substr(last + 1));
}

std::optional<GUID> GuidFromText(const MuxText& text) {
    const QuietScope quiet;
    GUID guid;
    if (text.empty() || CLSIDFromString(text.c_str(), &guid) != S_OK) return std::nullopt;
    return guid;
}

std::vector<InstalledMiniport> InstalledMiniports() {
    std::vector<InstalledMiniport> miniports;
    for (const MuxText& number : MachineSubkeys(kNetClassKey)) {
        MuxText key = kNetClassKey;
        key.append(TEXT("\\")).append(number);
        const auto id = MachineText(key, TEXT("ComponentId"));
        if (!id || !EqualNoCase(*id, TEXT("cvta_muxmp"))) continue;
        auto name = MachineText(key, TEXT("NetCfgInstanceId"));
        if (name && GuidFromText(*name)) miniports.push_back({std::move(*name), std::move(key)});
    }
    return miniports;
}

}  // namespace platform
