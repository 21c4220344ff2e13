// Messages: the system's or the caller's text with its inserts and escapes filled in.

#include <algorithm>
#include <bit>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <winbase.h>
#include <winerror.h>

#include "Call.h"
#include "Formatting.h"
#include "Memory.h"
#include "SystemMessages.h"
#include "Text.h"

namespace platform {
namespace {

// The inserts, each of pointer size, numbered from 0. An array is read where it stands; a variadic
// list can only be walked, so what it gave is kept.
class Inserts {
  public:
    explicit Inserts(const ULONG_PTR* array) : m_array(array) {}
    explicit Inserts(va_list* list) : m_list(list) {}

    ULONG_PTR At(std::size_t index) {
        if (m_array != nullptr) return m_array[index];
        while (m_taken.size() <= index)
            // The caller has started the list.
            m_taken.push_back(va_arg(*m_list, ULONG_PTR));  // NOLINT(clang-analyzer-valist*)
        return m_taken[index];
    }

  private:
    const ULONG_PTR* m_array = nullptr;
    va_list* m_list = nullptr;
    std::vector<ULONG_PTR> m_taken;
};

// What one insert's format takes: its own argument and those that follow it, for each '*'.
class InsertArguments : public FormatArguments {
  public:
    InsertArguments(Inserts& inserts, std::size_t first) : m_inserts(inserts), m_next(first) {}

    int NextInt() override { return static_cast<int>(Next()); }
    std::int64_t NextInt64() override { return static_cast<std::int64_t>(Next()); }
    const void* NextPointer() override { return std::bit_cast<const void*>(Next()); }
    // A floating-point number can't be an insert.
    double NextDouble() override { return static_cast<double>(static_cast<INT_PTR>(Next())); }

  private:
    ULONG_PTR Next() { return m_inserts.At(m_next++); }

    Inserts& m_inserts;
    std::size_t m_next;
};

class MessageWriter {
  public:
    // inserts: null when there are none to fill in.
    MessageWriter(std::u16string_view source, DWORD flags, Inserts* inserts)
        : m_source(source),
          m_ignoreInserts((flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0),
          m_joinLines((flags & FORMAT_MESSAGE_MAX_WIDTH_MASK) != 0),
          m_inserts(inserts) {}

    // Nothing for a malformed message, or one that needs inserts which aren't there.
    std::optional<std::u16string> Run() {
        while (m_at < m_source.size() && m_valid && !m_ended) {
            const char16_t unit = m_source[m_at++];
            if (unit == u'%')
                WriteEscape();
            else if (unit == u'\r' || unit == u'\n')
                WriteLineBreak(unit);
            else
                m_text.push_back(unit);
        }
        if (!m_valid) return std::nullopt;
        return std::move(m_text);
    }

  private:
    char16_t Peek() const { return m_at < m_source.size() ? m_source[m_at] : u'\0'; }

    // The source's own line break, in either order, counts as one.
    void WriteLineBreak(char16_t unit) {
        if (Peek() == (unit == u'\r' ? u'\n' : u'\r')) ++m_at;
        m_text += m_joinLines ? u" " : u"\r\n";
    }

    void WriteEscape() {
        const char16_t unit = Peek();
        if (unit >= u'1' && unit <= u'9') return WriteInsert();
        if (unit == 0) {
            m_valid = false;
            return;
        }
        ++m_at;
        switch (unit) {
            case u'0':
                m_ended = true;
                break;
            case u'n':
                m_text += u"\r\n";
                break;
            case u'r':
                m_text += u"\r";
                break;
            case u't':
                m_text += u"\t";
                break;
            case u'b':
                m_text += u" ";
                break;
            default:  // "%%", "%.", "%!", "% ": the character itself
                if (m_ignoreInserts) m_text.push_back(u'%');
                m_text.push_back(unit);
        }
    }

    // "%n" or "%n!format!" with n of one or two digits.
    void WriteInsert() {
        const std::size_t start = m_at - 1;
        std::size_t number = 0;
        for (int digits = 0; digits < 2 && Peek() >= u'0' && Peek() <= u'9'; ++digits)
            number = number * 10 + (m_source[m_at++] - u'0');
        std::u16string format = u"%s";
        if (Peek() == u'!') {
            const std::size_t end = m_source.find(u'!', m_at + 1);
            if (end == std::u16string_view::npos) {
                m_valid = false;
                return;
            }
            format = u"%" + std::u16string(m_source.substr(m_at + 1, end - m_at - 1));
            m_at = end + 1;
        }
        if (m_ignoreInserts) {
            m_text += m_source.substr(start, m_at - start);
        } else if (m_inserts != nullptr) {
            InsertArguments arguments(*m_inserts, number - 1);
            m_text += FormatText(format.c_str(), arguments);
        } else {
            m_valid = false;
        }
    }

    std::u16string_view m_source;
    std::size_t m_at = 0;
    bool m_ignoreInserts;
    bool m_joinLines;
    Inserts* m_inserts;
    std::u16string m_text;
    bool m_valid = true;
    bool m_ended = false;
};

DWORD FailWith(DWORD error) {
    Call::SetLast(error);
    return 0;
}

bool IsKnownLanguage(DWORD language) {
    const bool neutral = (language & 0x3FF) == LANG_NEUTRAL;
    return neutral || language == 0x409;
}

// Stores the text as the flags ask, and gives its length without the terminator.
DWORD Deliver(const Call& call, const std::u16string& text, DWORD flags, LPWSTR buffer,
              DWORD size) {
    if (text.empty()) return FailWith(ERROR_NO_WORK_DONE);
    const std::size_t needed = text.size() + 1;
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0) {
        const std::size_t characters = std::max<std::size_t>(needed, size);
        auto* block = static_cast<LPWSTR>(NewLocalBlock(characters * sizeof(WCHAR), call.Name()));
        if (block == nullptr) return FailWith(ERROR_NOT_ENOUGH_MEMORY);
        *reinterpret_cast<LPWSTR*>(buffer) = block;
        buffer = block;
    } else if (needed > size) {
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    }
    text.copy(buffer, text.size());
    buffer[text.size()] = 0;
    return static_cast<DWORD>(text.size());
}

}  // namespace
}  // namespace platform

// Of the maximum widths, only 0 and FORMAT_MESSAGE_MAX_WIDTH_MASK are served. Texts of the system
// are there in English.
DWORD WINAPI FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId,
                            LPWSTR buffer, DWORD size, va_list* arguments) {
    using platform::FailWith;
    platform::Call call("FormatMessageW", nullptr, ERROR_MR_MID_NOT_FOUND);
    const bool allocates = (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0;
    if (allocates && buffer != nullptr) *reinterpret_cast<LPWSTR*>(buffer) = nullptr;
    if (call.Failed()) return call.With(DWORD{0});
    const DWORD width = flags & FORMAT_MESSAGE_MAX_WIDTH_MASK;
    if (buffer == nullptr || (width != 0 && width != FORMAT_MESSAGE_MAX_WIDTH_MASK))
        return FailWith(ERROR_INVALID_PARAMETER);

    std::u16string text;
    if ((flags & FORMAT_MESSAGE_FROM_STRING) != 0) {
        if (source == nullptr) return FailWith(ERROR_INVALID_PARAMETER);
        text = static_cast<LPCWSTR>(source);
    } else if ((flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0) {
        if (!platform::IsKnownLanguage(languageId)) return FailWith(ERROR_RESOURCE_LANG_NOT_FOUND);
        const char* message = platform::SystemMessage(messageId);
        if (message == nullptr) return FailWith(ERROR_MR_MID_NOT_FOUND);
        text = platform::FromUtf8(message) + u"\r\n";
    } else {
        return FailWith(ERROR_INVALID_PARAMETER);
    }

    platform::Inserts inserts = (flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) != 0
                                    ? platform::Inserts(reinterpret_cast<ULONG_PTR*>(arguments))
                                    : platform::Inserts(arguments);
    platform::MessageWriter writer(text, flags, arguments != nullptr ? &inserts : nullptr);
    const std::optional<std::u16string> message = writer.Run();
    if (!message) return FailWith(ERROR_INVALID_PARAMETER);
    return platform::Deliver(call, *message, flags, buffer, size);
}
