// The writing of machine files, in the layout of Windows's own exports.

#include "MachineFile.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include <winnt.h>

#include "Registry.h"
#include "Text.h"

namespace platform {
namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::u16string_view header = u"Windows Registry Editor Version 5.00";
constexpr std::size_t hexColumn = 77;  // behind it a line of bytes goes on with the next one

enum class Surrogates { AnyInText, PairedInText };

bool HasLoneSurrogate(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] & 0xF800) != 0xD800) continue;
        const bool isPair =
            text[i] < 0xDC00 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
        if (!isPair) return true;
        ++i;
    }
    return false;
}

// The text of a REG_SZ's data that is one text with its terminator and can be printed, else
// nothing.
std::optional<std::u16string> PlainText(std::span<const BYTE> data, Surrogates surrogates) {
    if (data.empty() || data.size() % sizeof(char16_t) != 0) return std::nullopt;
    std::u16string text(data.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), data.data(), data.size());
    if (text.find(u'\0') != text.size() - 1) return std::nullopt;
    text.pop_back();
    if (HasControlCharacter(text)) return std::nullopt;
    if (surrogates == Surrogates::PairedInText && HasLoneSurrogate(text)) return std::nullopt;
    return text;
}

void AppendQuoted(std::u16string& out, std::u16string_view text) {
    out += u'"';
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\') out += u'\\';
        out += unit;
    }
    out += u'"';
}

void AppendName(std::u16string& out, std::u16string_view name) {
    if (name.empty()) {
        out += u'@';
    } else {
        AppendQuoted(out, name);
    }
}

void AppendHex(std::u16string& out, DWORD number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        out += u"0123456789abcdef"[number >> shift & 0xF];
}

void AppendBytes(std::u16string& out, std::size_t column, std::span<const BYTE> data,
                 std::u16string_view lineEnd) {
    for (std::size_t i = 0; i < data.size(); ++i) {
        AppendHex(out, data[i], 2);
        if (i + 1 == data.size()) break;
        out += u',';
        column += 3;
        if (column < hexColumn) continue;
        out.append(u"\\").append(lineEnd).append(u"  ");
        column = 2;
    }
}

void AppendValue(std::u16string& out, std::u16string_view name, DWORD type,
                 std::span<const BYTE> data, std::u16string_view lineEnd, Surrogates surrogates) {
    const std::size_t start = out.size();
    AppendName(out, name);
    out += u'=';
    const auto text = type == REG_SZ ? PlainText(data, surrogates) : std::nullopt;
    if (text) {
        AppendQuoted(out, *text);
    } else if (type == REG_DWORD && data.size() == sizeof(DWORD)) {
        DWORD number;
        std::memcpy(&number, data.data(), sizeof number);
        out += u"dword:";
        AppendHex(out, number, 8);
    } else {
        out += u"hex";
        if (type != REG_BINARY) {
            out += u'(';
            AppendHex(out, type, (static_cast<int>(std::bit_width(type | 1U)) + 3) / 4);
            out += u')';
        }
        out += u':';
        AppendBytes(out, out.size() - start, data, lineEnd);
    }
    out += lineEnd;
}

// Gives the text of a whole file to `write`, a key at a time.
template <class Write>
void WriteTree(const RegistryTree& tree, std::u16string_view lineEnd, Surrogates surrogates,
               const Write& write) {
    std::u16string chunk(header);
    chunk += lineEnd;
    tree.Walk([&](const std::u16string& path, const RegistryKey& key) {
        if (key.IsRoot() && key.Values().empty()) return;
        chunk.append(lineEnd).append(u"[").append(path).append(u"]").append(lineEnd);
        for (const RegistryValue& value : key.Values())
            AppendValue(chunk, value.Name(), value.Type(), value.Data(), lineEnd, surrogates);
        write(chunk);
        chunk.clear();
    });
    chunk += lineEnd;
    write(chunk);
}

}  // namespace

bool HasControlCharacter(std::u16string_view text) {
    constexpr struct {
        char16_t first, last;
    } ranges[] = {
        {u'\0', u'\x1F'},       {u'\x7F', u'\x9F'},     {u'\x061C', u'\x061C'},
        {u'\x200E', u'\x200F'}, {u'\x202A', u'\x202E'}, {u'\x2066', u'\x2069'},
    };
    return std::ranges::any_of(text, [&](char16_t unit) {
        return std::ranges::any_of(ranges, [unit](const auto& range) {
            return unit >= range.first && unit <= range.last;
        });
    });
}

std::string SaveMachineFile(Machine& machine) {
    std::string bytes = "\xFF\xFE";
    WriteTree(machine.Get<Registry>().Tree(), u"\r\n", Surrogates::AnyInText,
              [&](const std::u16string& text) {
                  bytes.append(reinterpret_cast<const char*>(text.data()),
                               text.size() * sizeof(char16_t));
              });
    return bytes;
}

std::string FormatRegistry(const RegistryTree& tree) {
    std::string bytes;
    WriteTree(tree, u"\n", Surrogates::PairedInText,
              [&](const std::u16string& text) { bytes += ToUtf8(text); });
    return bytes;
}

std::string FormatValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) {
    std::u16string line;
    AppendValue(line, name, type, data, u"\n", Surrogates::PairedInText);
    return ToUtf8(line);
}

std::string FormatValueName(std::u16string_view name) {
    std::u16string text;
    AppendName(text, name);
    return ToUtf8(text);
}

}  // namespace platform
