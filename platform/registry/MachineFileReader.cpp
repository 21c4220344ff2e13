#include "MachineFileReader.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <winnt.h>

#include "MachineFileLines.h"
#include "Text.h"

namespace platform {
namespace {

constexpr std::u16string_view header = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view oldHeader = u"REGEDIT4";
constexpr std::u16string_view blanks = u" \t";

int HexDigit(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    return -1;
}

void SkipBlanks(std::u16string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

bool Skip(std::u16string_view& text, std::u16string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// Nothing more on the line, but for blanks and a comment.
bool AtEnd(std::u16string_view text) {
    SkipBlanks(text);
    return text.empty() || text.front() == u';';
}

// Takes up to 8 hexadecimal digits off the text; false when there are none or more.
bool TakeHexNumber(std::u16string_view& text, DWORD& number) {
    constexpr std::size_t maxDigits = 8;
    std::size_t digits = 0;
    number = 0;
    for (; digits < text.size() && HexDigit(text[digits]) >= 0; ++digits)
        number = number << 4 | static_cast<DWORD>(HexDigit(text[digits]));
    text.remove_prefix(digits);
    return digits != 0 && digits <= maxDigits;
}

std::optional<RegistryRoot> RootOf(std::u16string_view name) {
    for (std::size_t i = 0; i < registryRoots; ++i) {
        const auto root = static_cast<RegistryRoot>(i);
        if (EqualNames(name, RootName(root))) return root;
    }
    return std::nullopt;
}

// Reads line by line. A function that fails has set the error.
class Reader {
  public:
    Reader(std::string_view bytes, MachineFileSink& sink) : m_lines(bytes), m_sink(sink) {}

    std::optional<MachineFileError> Run() {
        if (ReadHeader()) {
            while (NextLine() && ReadLine()) {
            }
        }
        return std::move(m_error);
    }

  private:
    bool Fail(std::size_t line, std::string message) {
        m_error = MachineFileError{line, std::move(message)};
        return false;
    }
    bool FailHere(std::string message) { return Fail(m_lines.Number(), std::move(message)); }
    bool Accept(MachineFileSink::Refusal refusal) {
        return !refusal || Fail(m_valueLine, std::move(*refusal));
    }

    // Puts the next line into m_text. False at the end of the file, too.
    bool NextLine() {
        if (m_lines.Next()) {
            m_text = m_lines.Text();
            return true;
        }
        if (m_lines.Error()) FailHere(m_lines.Error());
        return false;
    }

    bool ReadHeader();
    bool ReadLine();
    bool ReadKey();
    bool ReadValue();
    bool ReadQuoted(std::u16string& out);
    bool ReadString();
    bool ReadDword();
    bool ReadHex();
    bool ReadHexBytes();
    bool NextFilledLine();
    bool EndValue(DWORD type);

    MachineFileLines m_lines;
    MachineFileSink& m_sink;
    std::optional<MachineFileError> m_error;
    std::u16string_view m_text;   // what is left of the line
    std::size_t m_valueLine = 0;  // where the value (or key) at hand begins
    bool m_inKey = false;
    std::u16string m_name;
    std::u16string m_path;
    std::u16string m_string;
    std::vector<BYTE> m_data;
};

bool Reader::ReadHeader() {
    if (!NextLine()) return m_error ? false : Fail(1, "the file is empty");
    const std::u16string_view line =
        m_text.substr(0, m_text.find_last_not_of(blanks) + 1);  // npos + 1 is 0
    if (line == header) return true;
    if (line == oldHeader) return FailHere("a REGEDIT4 file; export it as version 5.00");
    return FailHere("the first line is not \"" + ToUtf8(header) + "\"");
}

bool Reader::ReadLine() {
    m_valueLine = m_lines.Number();
    if (AtEnd(m_text)) return true;
    SkipBlanks(m_text);
    switch (m_text.front()) {
        case u'[':
            return ReadKey();
        case u'"':
        case u'@':
            return ReadValue();
        default:
            return FailHere("neither a key nor a value nor a comment");
    }
}

bool Reader::ReadKey() {
    // Names may hold brackets: the last one of the line closes.
    const std::size_t close = m_text.rfind(u']');
    if (close == std::u16string_view::npos)
        return FailHere("the key's line has no closing bracket");
    if (!AtEnd(m_text.substr(close + 1))) return FailHere("text after the key");
    std::u16string_view rest = m_text.substr(1, close - 1);
    const bool isDeletion = Skip(rest, u"-");

    const std::u16string_view rootName = rest.substr(0, rest.find(u'\\'));
    const auto root = RootOf(rootName);
    if (!root) return FailHere("unknown root key \"" + ToUtf8(rootName) + "\"");
    rest.remove_prefix(rootName.size());
    m_path.clear();
    std::size_t depth = 1;
    for (auto part = NextPathPart(rest); !part.empty(); part = NextPathPart(rest)) {
        if (part.size() > maxKeyName) return FailHere("a key's name is longer than 255 characters");
        if (++depth > maxKeyDepth) return FailHere("the key lies deeper than 512 levels");
        if (!m_path.empty()) m_path += u'\\';
        m_path += part;
    }

    m_inKey = !isDeletion;
    if (!isDeletion) return Accept(m_sink.OpenKey(*root, m_path));
    if (m_path.empty()) return FailHere("a root key can't be deleted");
    return Accept(m_sink.DeleteKey(*root, m_path));
}

bool Reader::ReadValue() {
    if (!m_inKey) return FailHere("a value that stands in no key");
    m_name.clear();
    if (m_text.front() == u'@') {
        m_text.remove_prefix(1);
    } else if (!ReadQuoted(m_name)) {
        return false;
    }
    if (m_name.size() > maxValueName)
        return Fail(m_valueLine, "the value's name is longer than 16383 characters");
    SkipBlanks(m_text);
    if (!Skip(m_text, u"=")) return Fail(m_valueLine, "no \"=\" after the value's name");
    SkipBlanks(m_text);

    m_data.clear();
    if (m_text.starts_with(u'"')) return ReadString();
    if (Skip(m_text, u"dword:")) return ReadDword();
    if (Skip(m_text, u"hex")) return ReadHex();
    if (!Skip(m_text, u"-"))
        return Fail(m_valueLine, "the data is neither a text nor dword: nor hex: nor -");
    if (!AtEnd(m_text)) return Fail(m_valueLine, "text after the value");
    return Accept(m_sink.DeleteValue(m_name));
}

// Appends what stands between the quotes, which may go over several lines.
bool Reader::ReadQuoted(std::u16string& out) {
    m_text.remove_prefix(1);
    for (;;) {
        const std::size_t plain = m_text.find_first_of(u"\"\\");
        out += m_text.substr(0, plain);
        if (plain == std::u16string_view::npos) {
            out += m_lines.End();
            if (NextLine()) continue;
            return m_error ? false : Fail(m_valueLine, "the closing quote is missing");
        }
        m_text.remove_prefix(plain);
        if (Skip(m_text, u"\"")) return true;
        if (!m_text.starts_with(u"\\\\") && !m_text.starts_with(u"\\\""))
            return Fail(m_valueLine,
                        "a backslash in quotes comes before a backslash or a quote only");
        out += m_text[1];
        m_text.remove_prefix(2);
    }
}

bool Reader::ReadString() {
    m_string.clear();
    if (!ReadQuoted(m_string)) return false;
    m_string += u'\0';
    const auto* bytes = reinterpret_cast<const BYTE*>(m_string.data());
    m_data.assign(bytes, bytes + m_string.size() * sizeof(char16_t));
    return EndValue(REG_SZ);
}

bool Reader::ReadDword() {
    DWORD number;
    SkipBlanks(m_text);
    if (!TakeHexNumber(m_text, number))
        return FailHere("dword: takes one to eight hexadecimal digits");
    const auto* bytes = reinterpret_cast<const BYTE*>(&number);
    m_data.assign(bytes, bytes + sizeof number);
    return EndValue(REG_DWORD);
}

bool Reader::ReadHex() {
    DWORD type = REG_BINARY;
    if (Skip(m_text, u"(")) {
        if (!TakeHexNumber(m_text, type) || !Skip(m_text, u")"))
            return FailHere("the type in hex(...) is one to eight hexadecimal digits");
    }
    if (!Skip(m_text, u":")) return FailHere("no colon after hex");
    return ReadHexBytes() && EndValue(type);
}

// Goes to the next line that isn't blank or a comment; an error when there is none.
bool Reader::NextFilledLine() {
    while (NextLine()) {
        if (!AtEnd(m_text)) return true;
    }
    return m_error ? false : Fail(m_valueLine, "the hexadecimal data ends in a backslash");
}

// One or two digits a byte, commas between and perhaps behind them. A backslash behind a comma (or
// at the start) goes on with the next line that isn't blank or a comment.
bool Reader::ReadHexBytes() {
    for (;;) {
        SkipBlanks(m_text);
        if (m_text.starts_with(u'\\')) {
            if (!AtEnd(m_text.substr(1))) return FailHere("text after the backslash");
            if (!NextFilledLine()) return false;
            continue;
        }
        if (AtEnd(m_text)) return true;
        const int first = HexDigit(m_text.front());
        if (first < 0) return FailHere("bad hexadecimal data");
        m_text.remove_prefix(1);
        int byte = first;
        if (const int second = m_text.empty() ? -1 : HexDigit(m_text.front()); second >= 0) {
            byte = byte << 4 | second;
            m_text.remove_prefix(1);
        }
        m_data.push_back(static_cast<BYTE>(byte));
        SkipBlanks(m_text);
        if (!Skip(m_text, u",")) {
            if (!AtEnd(m_text)) return FailHere("bad hexadecimal data");
            return true;
        }
    }
}

bool Reader::EndValue(DWORD type) {
    if (!AtEnd(m_text)) return Fail(m_valueLine, "text after the value");
    if (m_data.size() > maxValueData) return Fail(m_valueLine, "the data is too large");
    return Accept(m_sink.SetValue(m_name, type, m_data));
}

}  // namespace

std::optional<MachineFileError> ReadMachineFile(std::string_view bytes, MachineFileSink& sink) {
    return Reader(bytes, sink).Run();
}

}  // namespace platform
