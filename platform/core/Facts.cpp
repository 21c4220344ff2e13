#include "Facts.h"

#include <cstring>
#include <limits>
#include <utility>

#include "Call.h"

namespace platform {
namespace {

using Text = std::basic_string<WCHAR>;
using TextView = std::basic_string_view<WCHAR>;

// A key below HKEY_LOCAL_MACHINE for as long as it is read; the calls are quiet.
class Key {
  public:
    Key(const Text& path, REGSAM access) {
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &m_key) != ERROR_SUCCESS)
            m_key = nullptr;
    }
    ~Key() {
        if (m_key != nullptr) RegCloseKey(m_key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    explicit operator bool() const { return m_key != nullptr; }
    HKEY Get() const { return m_key; }

  private:
    QuietScope m_quiet;
    HKEY m_key = nullptr;
};

struct Value {
    DWORD type;
    std::vector<BYTE> data;
};

std::optional<Value> ReadValue(const Text& path, const WCHAR* name) {
    const Key key(path, KEY_QUERY_VALUE);
    if (!key) return std::nullopt;
    Value value{};
    for (;;) {
        DWORD size = static_cast<DWORD>(value.data.size());
        const LSTATUS status =
            RegQueryValueExW(key.Get(), name, nullptr, &value.type, value.data.data(), &size);
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return std::nullopt;
        // A query without a buffer succeeds and gives the size.
        const bool fits = status == ERROR_SUCCESS && size <= value.data.size();
        value.data.resize(size);
        if (fits) return value;
    }
}

bool WriteValue(const Text& path, const WCHAR* value, DWORD type, const void* data,
                std::size_t size) {
    const QuietScope quiet;
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_SET_VALUE, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return false;
    const LSTATUS status = RegSetValueExW(key, value, 0, type, static_cast<const BYTE*>(data),
                                          static_cast<DWORD>(size));
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

// The names that enumerate(index, buffer, length) gives one after the other.
template <class Enumerate>
std::vector<Text> Names(std::size_t longest, const Enumerate& enumerate) {
    std::vector<Text> names;
    Text buffer(longest + 1, TEXT('\0'));
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(buffer.size());
        if (enumerate(index, buffer.data(), &length) != ERROR_SUCCESS) return names;
        names.emplace_back(buffer, 0, length);
    }
}

bool IsBlank(WCHAR unit) {
    return unit == TEXT(' ') || unit == TEXT('\t');
}

TextView Trim(TextView text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

int DigitOf(WCHAR unit) {
    if (unit >= TEXT('0') && unit <= TEXT('9')) return unit - TEXT('0');
    if (unit >= TEXT('a') && unit <= TEXT('f')) return unit - TEXT('a') + 10;
    if (unit >= TEXT('A') && unit <= TEXT('F')) return unit - TEXT('A') + 10;
    return 16;
}

}  // namespace

std::optional<Text> MachineText(const Text& path, const WCHAR* value) {
    const auto found = ReadValue(path, value);
    if (!found || found->type != REG_SZ) return std::nullopt;
    Text text(found->data.size() / sizeof(WCHAR), TEXT('\0'));
    if (!text.empty()) std::memcpy(text.data(), found->data.data(), text.size() * sizeof(WCHAR));
    return text.substr(0, text.find(TEXT('\0')));
}

std::optional<DWORD> MachineNumber(const Text& path, const WCHAR* value) {
    const auto found = ReadValue(path, value);
    DWORD number;
    if (!found || found->type != REG_DWORD || found->data.size() != sizeof number)
        return std::nullopt;
    std::memcpy(&number, found->data.data(), sizeof number);
    return number;
}

std::optional<std::vector<BYTE>> MachineBytes(const Text& path, const WCHAR* value) {
    auto found = ReadValue(path, value);
    if (!found) return std::nullopt;
    return std::move(found->data);
}

bool MachineKeyExists(const Text& path) {
    return static_cast<bool>(Key(path, KEY_QUERY_VALUE));
}

std::vector<Text> MachineSubkeys(const Text& path) {
    constexpr std::size_t longestKeyName = 255;
    const Key key(path, KEY_ENUMERATE_SUB_KEYS);
    if (!key) return {};
    return Names(longestKeyName, [&](DWORD index, WCHAR* name, DWORD* length) {
        return RegEnumKeyExW(key.Get(), index, name, length, nullptr, nullptr, nullptr, nullptr);
    });
}

std::vector<Text> MachineValues(const Text& path) {
    constexpr std::size_t longestValueName = 16383;
    const Key key(path, KEY_QUERY_VALUE);
    if (!key) return {};
    return Names(longestValueName, [&](DWORD index, WCHAR* name, DWORD* length) {
        return RegEnumValueW(key.Get(), index, name, length, nullptr, nullptr, nullptr, nullptr);
    });
}

bool WriteMachineNumber(const Text& path, const WCHAR* value, DWORD number) {
    return WriteValue(path, value, REG_DWORD, &number, sizeof number);
}

bool WriteMachineText(const Text& path, const WCHAR* value, const Text& text) {
    return WriteValue(path, value, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
}

bool DeleteMachineValue(const Text& path, const WCHAR* value) {
    const Key key(path, KEY_SET_VALUE);
    return key && RegDeleteValueW(key.Get(), value) == ERROR_SUCCESS;
}

bool DeleteMachineKey(const Text& path) {
    const QuietScope quiet;
    return RegDeleteTreeW(HKEY_LOCAL_MACHINE, path.c_str()) == ERROR_SUCCESS;
}

Text FactPath(const Text& key) {
    const Text path = TEXT("SOFTWARE\\StandIn");
    return key.empty() ? path : path + TEXT('\\') + key;
}

std::optional<Text> FactText(const Text& key, const WCHAR* value) {
    return MachineText(FactPath(key), value);
}

std::optional<DWORD> FactNumber(const Text& key, const WCHAR* value) {
    return MachineNumber(FactPath(key), value);
}

std::optional<std::vector<BYTE>> FactBytes(const Text& key, const WCHAR* value) {
    return MachineBytes(FactPath(key), value);
}

std::vector<Text> SplitFields(TextView text, WCHAR separator) {
    std::vector<Text> fields;
    if (Trim(text).empty()) return fields;
    for (;;) {
        const std::size_t length = text.find(separator);
        fields.emplace_back(Trim(text.substr(0, length)));
        if (length == TextView::npos) return fields;
        text.remove_prefix(length + 1);
    }
}

std::optional<long long> ParseNumber(TextView text) {
    const bool isNegative = text.starts_with(TEXT('-'));
    if (isNegative) text.remove_prefix(1);
    int base = 10;
    if (text.starts_with(TEXT("0x")) || text.starts_with(TEXT("0X"))) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty()) return std::nullopt;
    constexpr long long most = std::numeric_limits<long long>::max();
    long long number = 0;
    for (const WCHAR unit : text) {
        const int digit = DigitOf(unit);
        if (digit >= base || number > (most - digit) / base) return std::nullopt;
        number = number * base + digit;
    }
    return isNegative ? -number : number;
}

Text NumberText(unsigned long long number, std::size_t digits) {
    Text text;
    for (; number != 0 || text.size() < digits; number /= 10)
        text.insert(text.begin(), static_cast<WCHAR>(TEXT('0') + number % 10));
    return text;
}

}  // namespace platform
