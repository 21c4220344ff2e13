#include "Rtf.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "CodePages.h"
#include "Text.h"

namespace platform {
namespace {

constexpr std::size_t deepest = 4096;  // groups; those within are read as a part of the deepest
constexpr int utf8CodePage = 65001;

struct Symbol {
    std::string_view word;
    char16_t unit;
};

// Words that stand for a character. A row ends as a line does, in reading.
constexpr Symbol symbols[] = {
    {"par", u'\n'},     {"line", u'\n'},       {"sect", u'\n'},       {"page", u'\n'},
    {"row", u'\n'},     {"tab", u'\t'},        {"cell", u'\t'},       {"emdash", 0x2014},
    {"endash", 0x2013}, {"emspace", 0x2003},   {"enspace", 0x2002},   {"lquote", 0x2018},
    {"rquote", 0x2019}, {"ldblquote", 0x201C}, {"rdblquote", 0x201D}, {"bullet", 0x2022},
};

// Destinations whose content isn't part of the text.
constexpr std::string_view hiddenDestinations[] = {
    "fonttbl", "colortbl", "stylesheet", "info",       "pict",    "header",    "headerl",
    "headerr", "headerf",  "footer",     "footerl",    "footerr", "footerf",   "footnote",
    "object",  "fldinst",  "annotation", "xe",         "tc",      "listtable", "revtbl",
    "filetbl", "rxe",      "txe",        "nonshppict",
};

template <class Table>
bool Lists(const Table& table, std::string_view word) {
    return std::find(std::begin(table), std::end(table), word) != std::end(table);
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::optional<unsigned> HexDigit(char c) {
    if (IsDigit(c)) return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
    return std::nullopt;
}

// What a group hands down to the groups within, and gets back at its end.
struct Group {
    bool isText = true;   // false within a hidden destination
    bool visible = true;  // \v
    int fallback = 1;     // \ucN: characters that stand after a \u for readers that don't know it
};

class RtfReader {
  public:
    explicit RtfReader(std::string_view rtf) : m_rtf(rtf) {}

    std::u16string Run() {
        if (!m_rtf.starts_with("{\\rtf")) return FromAnsi(m_rtf);
        bool more = true;
        while (more && m_at < m_rtf.size())
            more = Step();
        EndBytes();
        return std::move(m_text);
    }

  private:
    // False at the end of the outermost group.
    bool Step() {
        const char c = m_rtf[m_at++];
        switch (c) {
            case '{':
                Open();
                return true;
            case '}':
                return Close();
            case '\\':
                TakeControl();
                return true;
            case '\r':
            case '\n':
            case '\0':
                return true;
            default:
                TakeByte(c);
                return true;
        }
    }

    void Open() {
        m_toSkip = 0;
        m_ignorable = false;
        if (m_groups.size() < deepest)
            m_groups.push_back(m_group);
        else
            ++m_tooDeep;
    }

    bool Close() {
        m_toSkip = 0;
        m_ignorable = false;
        if (m_tooDeep != 0) {
            --m_tooDeep;
            return true;
        }
        m_group = m_groups.back();
        m_groups.pop_back();
        return !m_groups.empty();
    }

    void TakeControl() {
        if (m_at == m_rtf.size()) return;
        if (IsLetter(m_rtf[m_at])) return TakeWord();
        const char c = m_rtf[m_at++];
        switch (c) {
            case '\'':
                return TakeHexByte();
            case '*':
                m_ignorable = true;
                return;
            case '~':
                return TakeUnit(0x00A0);
            case '_':
                return TakeUnit(0x2011);
            case '-':  // an optional hyphen, unseen inside a line
                return;
            case '\r':
                if (m_at < m_rtf.size() && m_rtf[m_at] == '\n') ++m_at;
                return TakeUnit(u'\n');
            case '\n':
                return TakeUnit(u'\n');
            case '\t':
                return TakeUnit(u'\t');
            case '{':
            case '}':
            case '\\':
                return TakeByte(c);
            default:
                return;
        }
    }

    void TakeHexByte() {
        unsigned value = 0;
        for (int digit = 0; digit < 2; ++digit) {
            if (m_at == m_rtf.size()) return;
            const std::optional<unsigned> hex = HexDigit(m_rtf[m_at]);
            if (!hex) return;
            ++m_at;
            value = value * 16 + *hex;
        }
        TakeByte(static_cast<char>(value));
    }

    // A word, its number and the one blank that may follow it.
    void TakeWord() {
        const std::size_t start = m_at;
        while (m_at < m_rtf.size() && IsLetter(m_rtf[m_at]))
            ++m_at;
        const std::string_view word = m_rtf.substr(start, m_at - start);
        const std::optional<int> number = TakeNumber();
        if (m_at < m_rtf.size() && m_rtf[m_at] == ' ') ++m_at;
        Obey(word, number);
    }

    std::optional<int> TakeNumber() {
        std::size_t at = m_at;
        const bool negative = at < m_rtf.size() && m_rtf[at] == '-';
        if (negative) ++at;
        if (at == m_rtf.size() || !IsDigit(m_rtf[at])) return std::nullopt;
        int number = 0;
        for (; at < m_rtf.size() && IsDigit(m_rtf[at]); ++at)
            number = std::min(number, 0x7FFFFFF) * 10 + (m_rtf[at] - '0');
        m_at = at;
        return negative ? -number : number;
    }

    void Obey(std::string_view word, std::optional<int> number) {
        // After \* only what is known to hold text is read, and nothing here is.
        const bool ignorable = std::exchange(m_ignorable, false);
        if (word == "bin") {
            const auto size = static_cast<std::size_t>(std::max(number.value_or(0), 0));
            m_at += std::min(size, m_rtf.size() - m_at);
        } else if (ignorable || Lists(hiddenDestinations, word)) {
            EndBytes();
            m_group.isText = false;
        } else if (word == "u") {
            Write(static_cast<char16_t>(number.value_or(u'?')));
            m_toSkip = m_group.fallback;
        } else if (word == "uc") {
            m_group.fallback = std::max(number.value_or(1), 0);
        } else if (word == "ansicpg") {
            m_codePage = number.value_or(0);
        } else if (word == "v" || word == "plain") {
            m_group.visible = word == "plain" || number == 0;
        } else {
            const auto* symbol = std::find_if(std::begin(symbols), std::end(symbols),
                                              [word](const Symbol& s) { return s.word == word; });
            if (symbol != std::end(symbols)) TakeUnit(symbol->unit);
        }
    }

    // True when the character that has been read is the fallback of a \u.
    bool Skip() {
        if (m_toSkip == 0) return false;
        --m_toSkip;
        return true;
    }

    // A break or a tab is nobody's fallback.
    void TakeUnit(char16_t unit) {
        if (unit < u' ')
            m_toSkip = 0;
        else if (Skip())
            return;
        Write(unit);
    }

    void TakeByte(char byte) {
        if (!Skip() && IsShown()) m_bytes.push_back(byte);
    }

    bool IsShown() const { return m_group.isText && m_group.visible; }

    void Write(char16_t unit) {
        if (!IsShown()) return;
        EndBytes();
        m_text.push_back(unit);
    }

    // A character of several bytes can be spelt by several \'hh, so bytes are kept until it ends.
    void EndBytes() {
        m_text += m_codePage == utf8CodePage ? FromUtf8(m_bytes) : FromAnsi(m_bytes);
        m_bytes.clear();
    }

    std::string_view m_rtf;
    std::size_t m_at = 0;
    std::vector<Group> m_groups;
    std::size_t m_tooDeep = 0;
    Group m_group;
    int m_codePage = 0;
    bool m_ignorable = false;
    int m_toSkip = 0;
    std::string m_bytes;
    std::u16string m_text;
};

}  // namespace

std::u16string RtfToPlainText(std::string_view rtf) {
    return RtfReader(rtf).Run();
}

}  // namespace platform
