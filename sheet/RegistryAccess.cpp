#include "RegistryAccess.h"

#include <cstring>

namespace sheet {

namespace {

// Characters of the longest value name, with terminator; the longest key name is shorter.
constexpr DWORD kNameCapacity = 16384;

Text TextOf(const std::vector<BYTE>& data) {
    Text text(data.size() / sizeof(WCHAR), TEXT('\0'));
    if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * sizeof(WCHAR));
    return text.substr(0, text.find(TEXT('\0')));
}

}  // namespace

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

std::optional<Text> Key::ReadText(const WCHAR* name) const {
    DWORD type = REG_NONE;
    DWORD size = 0;
    if (RegQueryValueExW(m_key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
        return std::nullopt;
    std::vector<BYTE> data(size);
    if (RegQueryValueExW(m_key, name, nullptr, &type, data.data(), &size) != ERROR_SUCCESS)
        return std::nullopt;
    data.resize(size);
    return TextOf(data);
}

}  // namespace sheet
