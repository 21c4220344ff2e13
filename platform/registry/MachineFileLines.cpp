#include "MachineFileLines.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace platform {
namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16LittleMark = "\xFF\xFE";
constexpr std::string_view utf16BigMark = "\xFE\xFF";

// Replaces `out` by the text. False: ill-formed.
bool DecodeUtf8(std::string_view bytes, std::u16string& out) {
    out.resize(bytes.size());  // never fewer bytes than units
    char16_t* to = out.data();
    const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* const end = at + bytes.size();
    while (at != end) {
        const unsigned lead = *at++;
        if (lead < 0x80) {
            *to++ = static_cast<char16_t>(lead);
            continue;
        }
        const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
        if (lead < 0xC2 || lead > 0xF4 || end - at < more) return false;
        std::uint32_t point = lead & (0x3FU >> more);
        for (int i = 0; i < more; ++i) {
            const unsigned next = *at++;
            if ((next & 0xC0) != 0x80) return false;
            point = point << 6 | (next & 0x3F);
        }
        const bool surrogate = point >= 0xD800 && point < 0xE000;
        const bool overlong = more == 2 ? point < 0x800 : more == 3 && point < 0x10000;
        if (surrogate || overlong || point > 0x10FFFF) return false;
        if (point >= 0x10000) {
            *to++ = static_cast<char16_t>(0xD7C0 + (point >> 10));
            *to++ = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
        } else {
            *to++ = static_cast<char16_t>(point);
        }
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
    return true;
}

}  // namespace

MachineFileLines::MachineFileLines(std::string_view bytes) : m_rest(bytes) {
    if (bytes.starts_with(utf8Mark)) {
        m_rest.remove_prefix(utf8Mark.size());
    } else if (bytes.starts_with(utf16LittleMark)) {
        m_encoding = Encoding::Utf16Little;
        m_rest.remove_prefix(utf16LittleMark.size());
    } else if (bytes.starts_with(utf16BigMark)) {
        m_encoding = Encoding::Utf16Big;
        m_rest.remove_prefix(utf16BigMark.size());
    }
}

bool MachineFileLines::TakeUtf8() {
    const std::size_t length = m_rest.find('\n');
    const std::string_view line = m_rest.substr(0, length);
    m_rest.remove_prefix(length == std::string_view::npos ? m_rest.size() : length + 1);
    m_end = length == std::string_view::npos ? std::u16string_view() : u"\n";
    if (DecodeUtf8(line, m_buffer)) return true;
    m_error = "the text is not valid UTF-8";
    return false;
}

bool MachineFileLines::TakeUtf16() {
    const bool swap =
        (m_encoding == Encoding::Utf16Big) == (std::endian::native == std::endian::little);
    constexpr std::size_t block = 256;  // units decoded at a time
    m_buffer.clear();
    m_end = {};
    while (m_rest.size() >= sizeof(char16_t)) {
        char16_t units[block];
        const std::size_t count = std::min(block, m_rest.size() / sizeof(char16_t));
        std::memcpy(units, m_rest.data(), count * sizeof(char16_t));
        if (swap) {
            for (std::size_t i = 0; i < count; ++i)
                units[i] = static_cast<char16_t>(units[i] << 8 | units[i] >> 8);
        }
        const std::size_t length = std::u16string_view(units, count).find(u'\n');
        if (length != std::u16string_view::npos) {
            m_buffer.append(units, length);
            m_rest.remove_prefix((length + 1) * sizeof(char16_t));
            m_end = u"\n";
            return true;
        }
        m_buffer.append(units, count);
        m_rest.remove_prefix(count * sizeof(char16_t));
    }
    if (m_rest.empty()) return true;
    m_error = "the UTF-16 text ends within a character";
    return false;
}

bool MachineFileLines::Next() {
    if (m_error != nullptr || m_rest.empty()) return false;
    ++m_number;
    if (!(m_encoding == Encoding::Utf8 ? TakeUtf8() : TakeUtf16())) return false;
    m_text = m_buffer;
    if (!m_end.empty() && m_text.ends_with(u'\r')) {
        m_text.remove_suffix(1);
        m_end = u"\r\n";
    }
    if (m_text.find(u'\0') != std::u16string_view::npos) m_error = "the text holds a NUL";
    return m_error == nullptr;
}

}  // namespace platform
