#include "InfFile.h"

#include <algorithm>
#include <cstring>

#include <setupapi.h>

#include "Call.h"

namespace platform {
namespace {

using InfText = InfFile::Text;
using InfView = InfFile::TextView;

constexpr std::size_t kLongestName = 255;      // of a section
constexpr std::size_t kLongestField = 511;     // before texts are replaced; what is more is cut off
constexpr std::size_t kLongestResult = 4095;   // after that
constexpr LONGLONG kLargestFile = 0x10000000;  // far above any INF file
constexpr WCHAR kEndOfFile = 0x1A;

// An open file, which is closed with its owner.
class FileHandle {
  public:
    explicit FileHandle(HANDLE handle) : m_handle(handle) {}
    ~FileHandle() {
        if (*this) CloseHandle(m_handle);
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

  private:
    HANDLE m_handle;
};

// Nothing when the bytes aren't of that code page.
std::optional<InfText> Widen(UINT codePage, std::string_view bytes) {
    if (bytes.empty()) return InfText();
    const DWORD flags = codePage == CP_UTF8 ? MB_ERR_INVALID_CHARS : 0;
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0);
    if (length <= 0) return std::nullopt;
    InfText text(static_cast<std::size_t>(length), TEXT('\0'));
    MultiByteToWideChar(codePage, flags, bytes.data(), size, text.data(), length);
    return text;
}

InfText Decode(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        bytes.remove_prefix(2);
        InfText text(bytes.size() / sizeof(WCHAR), TEXT('\0'));
        if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
        return text;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    auto text = Widen(CP_UTF8, bytes);
    if (!text) text = Widen(CP_ACP, bytes);
    return text.value_or(InfText());
}

bool IsBlank(WCHAR unit) {
    return unit == TEXT(' ') || (unit >= TEXT('\t') && unit <= TEXT('\r') && unit != TEXT('\n'));
}

// Takes a line apart. A line ends with the text's line, unless a backslash continues it.
class LineReader {
  public:
    explicit LineReader(InfView text) : m_rest(text) {}

    void SkipBlanks() {
        while (!AtEnd() && IsBlank(m_rest.front()))
            m_rest.remove_prefix(1);
    }
    // To the start of the next line of the text.
    void SkipLine() {
        SkipToEnd();
        if (!m_rest.empty()) m_rest.remove_prefix(1);
    }
    bool AtEnd() const { return m_rest.empty() || m_rest.front() == TEXT('\n'); }
    InfView Rest() const { return m_rest; }

    // Reads the next field, without quotes and the blanks around it. The separator that follows:
    // a comma or, where it counts as one, an equals sign; a line feed at the end of the line.
    WCHAR ReadField(InfText& field, bool equalsSeparates) {
        field.clear();
        SkipBlanks();
        std::size_t kept = 0;  // what isn't cut off as blanks at the end
        bool isQuoted = false;
        while (!AtEnd()) {
            const WCHAR unit = m_rest.front();
            if (!isQuoted && unit == TEXT('\\') && TakeContinuation()) {
                field.resize(kept);
                continue;
            }
            if (!isQuoted && unit == TEXT(';')) {
                SkipToEnd();
                break;
            }
            m_rest.remove_prefix(1);
            const bool separates = unit == TEXT(',') || (unit == TEXT('=') && equalsSeparates);
            if (!isQuoted && separates) {
                field.resize(kept);
                return unit;
            }
            const bool isQuote = unit == TEXT('"');
            const bool isDoubled = isQuote && isQuoted && m_rest.starts_with(TEXT('"'));
            if (isDoubled) m_rest.remove_prefix(1);
            if (isQuote && !isDoubled)
                isQuoted = !isQuoted;
            else if (field.size() < kLongestField)
                field.push_back(unit);
            if (isQuoted || isQuote || !IsBlank(unit)) kept = field.size();
        }
        field.resize(kept);
        return TEXT('\n');
    }

  private:
    void SkipToEnd() { m_rest.remove_prefix(std::min(m_rest.find(TEXT('\n')), m_rest.size())); }
    // At a backslash: when only blanks or a comment follow it, goes to the text of the next line.
    bool TakeContinuation() {
        LineReader next(m_rest.substr(1));
        next.SkipBlanks();
        if (!next.AtEnd() && next.m_rest.front() != TEXT(';')) return false;
        next.SkipLine();
        next.SkipBlanks();
        *this = next;
        return true;
    }

    InfView m_rest;
};

}  // namespace

DWORD ReadFileBytes(const InfText& path, std::string& bytes) {
    const QuietScope quiet;
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size;
    if (!file || !GetFileSizeEx(file.Get(), &size)) return GetLastError();
    if (size.QuadPart > kLargestFile) return ERROR_NOT_ENOUGH_MEMORY;
    bytes.assign(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
        return GetLastError();
    bytes.resize(read);
    return ERROR_SUCCESS;
}

DWORD InfFile::Read(const Text& path, UINT& errorLine) {
    const QuietScope quiet;
    std::string bytes;
    if (const DWORD error = ReadFileBytes(path, bytes)) return error;
    if (bytes.empty()) return ERROR_FILE_INVALID;
    m_text = Decode(bytes);
    m_text.resize(std::min(m_text.find(kEndOfFile), m_text.size()));
    std::ranges::replace(m_text, TEXT('\0'), TEXT(' '));
    if (const DWORD error = FindLines(errorLine)) return error;
    errorLine = 0;
    if (!IsOfCurrentStyle()) return ERROR_WRONG_INF_STYLE;
    ReadStrings();
    return ERROR_SUCCESS;
}

// Finds where sections and lines start. Their fields are read when they are asked for.
DWORD InfFile::FindLines(UINT& errorLine) {
    Text field;
    UINT section = 0;
    LineReader reader(m_text);
    const auto fail = [&](DWORD error) {
        const TextView before = TextView(m_text).substr(0, m_text.size() - reader.Rest().size());
        errorLine = static_cast<UINT>(std::ranges::count(before, TEXT('\n')) + 1);
        return error;
    };
    for (; !reader.Rest().empty(); reader.SkipLine()) {
        reader.SkipBlanks();
        const TextView rest = reader.Rest();
        if (rest.starts_with(TEXT('['))) {
            const TextView name = rest.substr(1, rest.find_first_of(TEXT("]\n"), 1) - 1);
            if (!rest.substr(1 + name.size()).starts_with(TEXT(']')))
                return fail(ERROR_BAD_SECTION_NAME_LINE);
            if (name.size() > kLongestName) return fail(ERROR_SECTION_NAME_TOO_LONG);
            section = m_sectionNumbers.try_emplace(Text(name), m_sections.size()).first->second;
            m_sections.resize(m_sectionNumbers.size());
        } else if (!reader.AtEnd() && !rest.starts_with(TEXT(';'))) {
            if (m_sections.empty()) return fail(ERROR_EXPECTED_SECTION_NAME);
            m_sections[section].push_back(static_cast<UINT>(m_text.size() - rest.size()));
            while (reader.ReadField(field, false) != TEXT('\n'))
                continue;
        }
    }
    return ERROR_SUCCESS;
}

bool InfFile::IsOfCurrentStyle() const {
    const auto version = FindSection(TEXT("Version"));
    bool isCurrent = false;
    for (UINT line = 0; version && line < LineCount(*version); ++line) {
        VisitRawFields(*version, line, [&](DWORD field, const Text& text) {
            if (field == 0) return EqualNoCase(text, TEXT("Signature"));
            for (const WCHAR* known :
                 {TEXT("$Windows NT$"), TEXT("$Chicago$"), TEXT("$Windows 95$")})
                isCurrent = isCurrent || EqualNoCase(text, known);
            return false;
        });
    }
    return isCurrent;
}

void InfFile::ReadStrings() {
    const auto section = FindSection(TEXT("Strings"));
    for (UINT line = 0; section && line < LineCount(*section); ++line) {
        Text key;
        VisitRawFields(*section, line, [&](DWORD field, const Text& text) {
            if (field == 0) key = text;
            if (field == 1) m_strings.try_emplace(key, text);
            return field == 0;
        });
    }
}

std::optional<UINT> InfFile::FindSection(TextView name) const {
    const auto found = m_sectionNumbers.find(name);
    if (found == m_sectionNumbers.end()) return std::nullopt;
    return found->second;
}

UINT InfFile::LineCount(UINT section) const {
    return section < m_sections.size() ? static_cast<UINT>(m_sections[section].size()) : 0;
}

void InfFile::VisitRawFields(UINT section, UINT line, const Visitor& visit) const {
    if (line >= LineCount(section)) return;
    LineReader reader(TextView(m_text).substr(m_sections[section][line]));
    Text text;
    WCHAR separator = reader.ReadField(text, true);
    const bool hasKey = separator == TEXT('=');
    if ((hasKey || separator == TEXT('\n')) && !visit(0, text)) return;
    if (hasKey) separator = reader.ReadField(text, false);
    for (DWORD field = 1; visit(field, text) && separator != TEXT('\n'); ++field)
        separator = reader.ReadField(text, false);
}

void InfFile::VisitFields(UINT section, UINT line, const Visitor& visit) const {
    VisitRawFields(section, line,
                   [&](DWORD field, const Text& text) { return visit(field, Expand(text)); });
}

std::optional<InfText> InfFile::Field(UINT section, UINT line, DWORD field) const {
    std::optional<Text> found;
    VisitRawFields(section, line, [&](DWORD number, const Text& text) {
        if (number == field) found = Expand(text);
        return number < field;
    });
    return found;
}

std::optional<UINT> InfFile::FindLine(UINT section, TextView key) const {
    for (UINT line = 0; line < LineCount(section); ++line) {
        const auto found = Field(section, line, 0);
        if (found && EqualNoCase(*found, key)) return line;
    }
    return std::nullopt;
}

// An unknown name stays as it is, and two percent signs are one. What is put in isn't looked at
// again.
InfText InfFile::Expand(TextView text) const {
    Text result;
    std::size_t at = 0;
    while (at < text.size() && result.size() < kLongestResult) {
        const std::size_t start = std::min(text.find(TEXT('%'), at), text.size());
        const std::size_t end = text.find(TEXT('%'), start + 1);
        result += text.substr(at, start - at);
        at = end == text.npos ? text.size() : end + 1;
        const TextView reference = text.substr(start, at - start);
        const auto known = end == text.npos
                               ? m_strings.end()
                               : m_strings.find(text.substr(start + 1, end - start - 1));
        if (reference == TEXT("%%"))
            result += TEXT('%');
        else
            result += known == m_strings.end() ? reference : known->second;
    }
    result.resize(std::min(result.size(), kLongestResult));
    return result;
}

}  // namespace platform
