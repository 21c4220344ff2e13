#include "RegistrySnapshot.h"

#include <set>

#include "../RegistryView.h"
#include "../Transcript.h"

namespace sheet {

namespace {

using Keys = std::map<Text, KeySnapshot, NameLess>;

constexpr const WCHAR* kRoots[] = {TEXT("SOFTWARE"), TEXT("SYSTEM\\CurrentControlSet")};
constexpr const WCHAR* kLeftOut[] = {
    TEXT("SOFTWARE\\Classes"), TEXT("SYSTEM\\CurrentControlSet\\Control\\DeviceClasses"),
    TEXT("SYSTEM\\CurrentControlSet\\Enum"), TEXT("SOFTWARE\\StandIn\\Restarts")};

// Of what is left out, what VLANs and teams are made of: their devices.
constexpr TextView kMiniports = TEXT("SYSTEM\\CurrentControlSet\\Enum\\ROOT\\CVTA_MUXMP");

bool IsLeftOut(const Text& path) {
    for (const WCHAR* const leftOut : kLeftOut) {
        if (EqualNoCase(path, leftOut)) return true;
    }
    return false;
}

// Leads to what is taken all the same.
bool IsOnTheWay(const Text& path) {
    return StartsWithNoCase(kMiniports, path + TEXT('\\'));
}

// A device's class, which Wine may write anew in small letters when it lists the device.
void CapitaliseClass(Key::Value& value) {
    if (!EqualNoCase(value.name, TEXT("ClassGUID"))) return;
    CharUpperBuffW(reinterpret_cast<WCHAR*>(value.data.data()),
                   static_cast<DWORD>(value.data.size() / sizeof(WCHAR)));
}

KeySnapshot Take(const Text& path, bool withAll = true) {
    KeySnapshot snapshot;
    const Key key(path);
    if (key.Status() != ERROR_SUCCESS) return snapshot;
    if (withAll) {
        for (Key::Value& value : key.Values()) {
            CapitaliseClass(value);
            snapshot.values.emplace(value.name, std::move(value));
        }
    }
    for (const Text& name : key.Subkeys()) {
        Text below = path;
        below.append(TEXT("\\")).append(name);
        const bool isTaken = (withAll && !IsLeftOut(below)) || EqualNoCase(below, kMiniports);
        if (isTaken || IsOnTheWay(below)) snapshot.subkeys.emplace(name, Take(below, isTaken));
    }
    return snapshot;
}

bool IsSame(const Key::Value& a, const Key::Value& b) {
    return a.type == b.type && a.data == b.data;
}

std::string LineOf(const Text& path, const char* bracket) {
    return "\n" + std::string(bracket) + "HKEY_LOCAL_MACHINE\\" + ToUtf8(path) + "]\n";
}

std::string ChangedValues(const KeySnapshot& from, const KeySnapshot& to) {
    std::string lines;
    for (const auto& [name, value] : from.values) {
        if (!to.values.contains(name)) lines += DescribeName(value) + "-\n";
    }
    for (const auto& [name, value] : to.values) {
        const auto old = from.values.find(name);
        if (old == from.values.end() || !IsSame(old->second, value)) lines += DescribeValue(value);
    }
    return lines;
}

void Compare(const Text& path, const Keys& from, const Keys& to, std::string& text);

void CompareKey(const Text& path, const KeySnapshot& from, const KeySnapshot& to, bool isNew,
                std::string& text) {
    const std::string values = ChangedValues(from, to);
    if (isNew || !values.empty()) text += LineOf(path, "[") + values;
    Compare(path, from.subkeys, to.subkeys, text);
}

void Compare(const Text& path, const Keys& from, const Keys& to, std::string& text) {
    std::set<Text, NameLess> names;
    for (const Keys* const keys : {&from, &to}) {
        for (const auto& [name, key] : *keys)
            names.insert(name);
    }
    static const KeySnapshot kNone;
    for (const Text& name : names) {
        Text below = path;
        if (!below.empty()) below += TEXT('\\');
        below += name;
        const auto old = from.find(name);
        const auto made = to.find(name);
        if (made == to.end()) {
            text += LineOf(below, "[-");
        } else {
            const bool isNew = old == from.end();
            CompareKey(below, isNew ? kNone : old->second, made->second, isNew, text);
        }
    }
}

}  // namespace

bool NameLess::operator()(const Text& a, const Text& b) const {
    return CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(),
                                static_cast<int>(b.size()), TRUE) == CSTR_LESS_THAN;
}

std::map<Text, KeySnapshot, NameLess> TakeRegistrySnapshot() {
    Keys keys;
    for (const WCHAR* const root : kRoots)
        keys.emplace(root, Take(root));
    return keys;
}

std::string FormatChanges(const Keys& from, const Keys& to) {
    std::string text = "Windows Registry Editor Version 5.00\n";
    Compare(Text(), from, to, text);
    return text;
}

}  // namespace sheet
