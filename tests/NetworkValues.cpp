#include "NetworkValues.h"

#include <algorithm>
#include <cctype>

namespace {

const std::string kNet = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
const std::string kRoot = "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\";
const std::string kClassKey = kRoot + "Control\\Class\\" + kNet + "\\";
const std::string kProtocols = kRoot + "Control\\Network\\{4D36E975-E325-11CE-BFC1-08002BE10318}\\";
const std::string kTree = kRoot + "Services\\MUXP\\Parameters\\Adapters\\";
const std::string kDevices = kRoot + "Services\\MUXMP\\Enum\\";

// A value's text without the type, the zero bytes and what follows the first terminator.
std::string TextOf(const Values& values, const std::string& name) {
    const auto found = values.find(name);
    if (found == values.end() || found->second == "key") return {};
    std::string text;
    const std::string& bytes = found->second;
    for (std::size_t at = bytes.find(':') + 1; at < bytes.size(); ++at) {
        if (bytes.compare(at, 6, "\\00\\00") == 0) break;
        if (bytes.compare(at, 3, "\\00") == 0)
            at += 2;
        else
            text += bytes[at];
    }
    return text;
}

// A text as a value of two-byte characters shows it.
std::string Shown(const std::string& text) {
    std::string shown;
    for (const char c : text)
        shown += c + std::string("\\00");
    return shown;
}

bool SameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

void Replace(std::string& text, const std::string& what, const std::string& by) {
    if (text.size() < what.size()) return;
    for (auto at = text.begin();;) {
        at = std::search(at, text.end(), what.begin(), what.end(), SameLetter);
        if (at == text.end()) return;
        const auto place = at - text.begin();
        text.replace(static_cast<std::size_t>(place), what.size(), by);
        at = text.begin() + place + static_cast<std::ptrdiff_t>(by.size());
    }
}

struct Component {
    std::string number;  // of its class key; empty for a protocol
    std::string guid;
    std::string device;
    std::string label;  // empty for one that is left behind
};

std::vector<Component> ComponentsOf(const Values& values) {
    std::vector<Component> components;
    for (auto at = values.lower_bound(kClassKey);
         at != values.end() && at->first.starts_with(kClassKey); ++at) {
        if (!at->first.ends_with("\\ComponentId") || TextOf(values, at->first) != "cvta_muxmp")
            continue;
        const std::string key = at->first.substr(0, at->first.rfind('\\') + 1);
        Component each{key.substr(kClassKey.size(), key.size() - kClassKey.size() - 1),
                       TextOf(values, key + "NetCfgInstanceId"),
                       {},
                       {}};
        each.device = TextOf(values, kRoot + "Control\\Network\\" + kNet + "\\" + each.guid +
                                         "\\Connection\\PnpInstanceID");
        const std::string title = TextOf(values, kRoot + "Enum\\" + each.device + "\\FriendlyName");
        const std::size_t dash = title.find(" - ");
        each.label = dash == std::string::npos ? "new" : title.substr(dash + 3);
        const bool isListed =
            std::any_of(values.lower_bound(kTree), values.end(), [&](auto& value) {
                return value.first == kTree + each.guid + "\\" ||
                       (value.first.ends_with("\\UpperBindings") &&
                        value.second.find(Shown(each.guid)) != std::string::npos);
            });
        if (!isListed) each.label.clear();
        components.push_back(each);
    }
    for (auto at = values.lower_bound(kProtocols);
         at != values.end() && at->first.starts_with(kProtocols); ++at)
        if (at->first.ends_with("\\ComponentId"))
            components.push_back(
                {"", at->first.substr(kProtocols.size(), kNet.size()), "", "protocol"});
    return components;
}

// The engine gives no such GUIDs.
bool IsOfSample(const std::string& guid) {
    return guid.starts_with("{5E7B0D21") || guid.starts_with("{0A000000");
}

// Takes the entries out of a list whose GUIDs no component has. Gives their count.
int DropStrangers(std::string& list, const std::vector<Component>& components) {
    const std::string start = Shown("\\Device\\");
    int dropped = 0;
    for (std::size_t at = 0; (at = list.find(start, at)) != std::string::npos;) {
        const std::string entry = list.substr(at, start.size() + 3 * kNet.size() + kNet.size());
        const bool isKnown = std::any_of(components.begin(), components.end(), [&](auto& each) {
            return entry == start + Shown(each.guid);
        });
        if (!isKnown) {
            list.erase(at, entry.size() + 6);
            ++dropped;
        } else {
            at += entry.size();
        }
    }
    return dropped;
}

}  // namespace

void NameComponents(Values& values) {
    const std::vector<Component> components = ComponentsOf(values);
    int left = 0;
    std::vector<std::pair<std::string, std::string>> names;
    std::size_t miniports = 0;
    for (const Component& each : components) {
        left += each.label.empty();
        miniports += !each.number.empty();
        const std::string label = each.label.empty() ? "<left>" : "<" + each.label + ">";
        if (IsOfSample(each.guid) && !each.label.empty()) continue;
        names.emplace_back(each.guid, label);
        if (each.number.empty()) continue;
        names.emplace_back(kNet + "\\" + each.number, kNet + "\\" + label);
        if (!each.device.empty()) names.emplace_back(each.device, label);
    }
    Values named;
    for (const auto& value : values) {
        auto [name, data] = std::pair<std::string, std::string>(value);
        if (name.ends_with("\\UpperBindings")) {
            const int dropped = DropStrangers(data, components);
            left += dropped;
            if (dropped != 0 && data == "7:\\00\\00") continue;
        }
        if (name.starts_with(kDevices) && name != kDevices) {
            if (!name.ends_with("\\Count")) continue;  // the numbers in it
            if (data == "4:\\0" + std::to_string(miniports) + "\\00\\00\\00")
                data = "as many as there are";
        }
        for (const auto& [what, by] : names) {
            if (name.find('{') != std::string::npos || name.find("ROOT") != std::string::npos)
                Replace(name, what, by);
            if (data.starts_with("1:") || data.starts_with("7:"))
                Replace(data, Shown(what), Shown(by));
        }
        if (name.ends_with(">\\Connection\\Name")) data = "a name";
        if (name.ends_with("\\ROOT\\") || name.ends_with("\\CVTA_MUXMP\\")) continue;
        if (name.find("<left>") == std::string::npos) named[name] = data;
    }
    named["left"] = std::to_string(left);
    values = std::move(named);
}
