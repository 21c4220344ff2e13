#include "RegistryView.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "Transcript.h"

namespace sheet {

namespace {

std::string Quoted(TextView text) {
    std::string quoted = "\"";
    for (const char c : ToUtf8(text)) {
        if (c == '\\' || c == '"') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

// The value's text when it is just that and one terminator, and can be printed in UTF-8.
bool IsPlainText(const Key::Value& value, Text& text) {
    if (value.type != REG_SZ || value.data.size() % sizeof(WCHAR) != 0) return false;
    text.assign(value.data.size() / sizeof(WCHAR), TEXT('\0'));
    std::copy(value.data.begin(), value.data.end(), reinterpret_cast<BYTE*>(text.data()));
    if (text.empty() || text.find(TEXT('\0')) != text.size() - 1) return false;
    text.pop_back();
    return FromUtf8(ToUtf8(Printable(text))) == text;
}

// name: as it stands in front of the data.
std::string Hex(const Key::Value& value, const std::string& name) {
    // Behind this column an export goes on in the next line.
    constexpr std::size_t kLastColumn = 77;
    char piece[20] = "hex:";
    if (value.type != REG_BINARY)
        std::snprintf(piece, sizeof(piece), "hex(%x):", static_cast<unsigned>(value.type));
    std::string text = name + piece;
    std::size_t column = CodePoints(FromUtf8(text)).size();
    for (std::size_t i = 0; i < value.data.size(); ++i) {
        std::snprintf(piece, sizeof(piece), "%02x", value.data[i]);
        text += piece;
        if (i + 1 == value.data.size()) break;
        text += ',';
        column += 3;
        if (column < kLastColumn) continue;
        text += "\\\n  ";
        column = 2;
    }
    return text + "\n";
}

TextView BelowRoot(TextView path) {
    for (const TextView root : {TextView(TEXT("HKEY_LOCAL_MACHINE")), TextView(TEXT("HKLM"))}) {
        if (!StartsWithNoCase(path, root)) continue;
        const TextView rest = path.substr(root.size());
        if (rest.empty()) return rest;
        if (rest.front() == TEXT('\\')) return rest.substr(1);
    }
    return path;
}

}  // namespace

std::string DescribeName(const Key::Value& value) {
    return value.name.empty() ? "@=" : Quoted(value.name) + "=";
}

std::string DescribeValue(const Key::Value& value) {
    const std::string name = DescribeName(value);
    Text text;
    if (IsPlainText(value, text)) return name + Quoted(text) + "\n";
    if (value.type == REG_DWORD && value.data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data.data(), sizeof(number));
        char digits[20];
        std::snprintf(digits, sizeof(digits), "dword:%08x\n", static_cast<unsigned>(number));
        return name + digits;
    }
    return Hex(value, name);
}

std::string DescribeKey(TextView path) {
    Text below(BelowRoot(path));
    while (!below.empty() && below.back() == TEXT('\\'))
        below.pop_back();
    const Key key(below);
    if (key.Status() != ERROR_SUCCESS) {
        if (key.Status() == ERROR_FILE_NOT_FOUND) throw Refusal{"there is no key " + ToUtf8(path)};
        throw Refusal{"the key " + ToUtf8(path) + " can't be read: error " +
                      std::to_string(key.Status())};
    }
    const std::string root =
        "[HKEY_LOCAL_MACHINE" + (below.empty() ? std::string() : "\\" + ToUtf8(below));
    std::string description = root + "]\n";
    std::vector<Key::Value> values = key.Values();
    SortByName(values);
    for (const Key::Value& value : values)
        description += DescribeValue(value);
    for (const Text& subkey : key.Subkeys())
        description += root + "\\" + ToUtf8(subkey) + "]\n";
    return description;
}

}  // namespace sheet
