#include "RegistryAccess.h"

#include <algorithm>
#include <cstring>

namespace sheet {

namespace {

// Characters of the longest value name, with terminator; the longest key name is shorter.
constexpr DWORD kNameCapacity = 16384;

}  // namespace

Text TextOf(const std::vector<BYTE>& data) {
    Text text(data.size() / sizeof(WCHAR), TEXT('\0'));
    if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * sizeof(WCHAR));
    return text.substr(0, text.find(TEXT('\0')));
}

Key::Key(const Text& path)
    : m_status(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &m_key)) {}

Key::~Key() {
    if (m_status == ERROR_SUCCESS) RegCloseKey(m_key);
}

std::vector<Key::Value> Key::Values() const {
    std::vector<Value> values;
    std::vector<WCHAR> name(kNameCapacity);
    for (DWORD index = 0;; ++index) {
        DWORD length = kNameCapacity;
        DWORD type = REG_NONE;
        DWORD size = 0;
        LONG status =
            RegEnumValueW(m_key, index, name.data(), &length, nullptr, &type, nullptr, &size);
        if (status != ERROR_SUCCESS) return values;
        Value value{Text(name.data(), length), type, std::vector<BYTE>(size)};
        length = kNameCapacity;
        status = RegEnumValueW(m_key, index, name.data(), &length, nullptr, &type,
                               value.data.data(), &size);
        if (status == ERROR_SUCCESS) values.push_back(std::move(value));
    }
}

std::vector<Text> Key::Subkeys() const {
    std::vector<Text> subkeys;
    std::vector<WCHAR> name(kNameCapacity);
    for (DWORD index = 0;; ++index) {
        DWORD length = kNameCapacity;
        if (RegEnumKeyExW(m_key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return subkeys;
        subkeys.emplace_back(name.data(), length);
    }
}

std::optional<Key::Value> Key::Read(const WCHAR* name) const {
    Value value{name, REG_NONE, {}};
    DWORD size = 0;
    if (RegQueryValueExW(m_key, name, nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.data.resize(size);
    if (RegQueryValueExW(m_key, name, nullptr, &value.type, value.data.data(), &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    value.data.resize(size);
    return value;
}

std::optional<Text> Key::ReadText(const WCHAR* name) const {
    const std::optional<Value> value = Read(name);
    if (!value || (value->type != REG_SZ && value->type != REG_EXPAND_SZ)) return std::nullopt;
    return TextOf(value->data);
}

std::optional<DWORD> Key::ReadNumber(const WCHAR* name) const {
    const std::optional<Value> value = Read(name);
    if (!value || value->data.empty()) return std::nullopt;
    DWORD number = 0;
    std::memcpy(&number, value->data.data(), std::min(value->data.size(), sizeof(number)));
    return number;
}

std::vector<Text> Key::ReadTexts(const WCHAR* name) const {
    std::vector<Text> texts;
    const std::optional<Value> value = Read(name);
    if (!value) return texts;
    Text all(value->data.size() / sizeof(WCHAR), TEXT('\0'));
    if (!all.empty()) std::memcpy(all.data(), value->data.data(), all.size() * sizeof(WCHAR));
    for (std::size_t start = 0; start < all.size();) {
        const std::size_t end = std::min(all.find(TEXT('\0'), start), all.size());
        if (end == start) break;
        texts.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    return texts;
}

bool Key::Has(const WCHAR* name) const {
    return RegQueryValueExW(m_key, name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void SortByName(std::vector<Key::Value>& values) {
    std::sort(values.begin(), values.end(), [](const Key::Value& a, const Key::Value& b) {
        return CompareStringOrdinal(a.name.c_str(), -1, b.name.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    });
}

}  // namespace sheet
