#pragma once
// What no well-meaning program would have written: registry data and files, made from a seed.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

class Hostile {
  public:
    explicit Hostile(std::uint64_t seed) : m_random(seed) {}

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    template <class Items>
    const auto& OneOf(const Items& items) {
        return items[Below(std::size(items))];
    }

    // All types of the registry, and some that it doesn't have.
    DWORD Type() {
        return Below(8) ? static_cast<DWORD>(Below(13)) : ~static_cast<DWORD>(Below(3));
    }

    // Up to 4096 bytes: noise, text without end, numbers at their limits, or what was there,
    // damaged. Terminated or not, odd sizes.
    std::vector<BYTE> Data(std::span<const BYTE> was);
    // A text as bytes, with a few damages. token: pieces that mean something in its format.
    std::string Damaged(std::string text, std::span<const std::string_view> tokens);
    // Nothing but tokens.
    std::string Noise(std::span<const std::string_view> tokens) {
        std::string text;
        for (std::size_t count = Below(300); count > 0; --count)
            text += OneOf(tokens);
        return text;
    }

  private:
    std::mt19937_64 m_random;
};

inline std::vector<BYTE> Hostile::Data(std::span<const BYTE> was) {
    static constexpr std::u16string_view kTexts[] = {u"",
                                                     u"-1",
                                                     u"63",
                                                     u"4294967296",
                                                     u"-99999999999999999999",
                                                     u"%s%n",
                                                     u"..\\..\\",
                                                     u"{",
                                                     u"eth,ib",
                                                     u"auto,auto,auto",
                                                     u"\xD800",
                                                     std::u16string_view(u"a\0b\0\0c", 6)};
    // About the limits of what is read, in bytes.
    static constexpr std::size_t kLimits[] = {0, 4, 8, 40, 80, 200, 500, 520, 1024, 4092};
    const std::size_t size = OneOf(kLimits) + Below(5);
    static constexpr std::uint64_t kNumbers[] = {0, 1, 7, 64, 255, 0x7FFFFFFF, 0x80000000, ~0ULL};
    std::vector<BYTE> data(was.begin(), was.end());
    const auto take = [&](const auto* units, std::size_t count) {
        const auto* bytes = reinterpret_cast<const BYTE*>(units);
        data.assign(bytes, bytes + count * sizeof(*units));
    };
    switch (Below(6)) {
        case 0:
            data.resize(size);
            for (BYTE& byte : data)
                byte = static_cast<BYTE>(m_random());
            break;
        case 1: {
            const std::u16string text(size / 2, OneOf(std::u16string_view(u"a7\\,\xDC00{\xFFFF")));
            take(text.data(), text.size());
            break;
        }
        case 2:
            take(&OneOf(kNumbers), 1);
            data.resize(4 + 4 * Below(2));
            break;
        case 3: {
            const std::u16string text(OneOf(kTexts));
            take(text.data(), text.size() + Below(2));
            break;
        }
        case 4:  // cut off, or with more behind it
            data.resize(Below(2) ? Below(data.size() + 1) : data.size() + Below(600), BYTE{0x41});
            break;
        default:
            for (std::size_t i = 0; i < 3 && !data.empty(); ++i)
                data[Below(data.size())] = static_cast<BYTE>(Below(2) ? m_random() : 0);
            break;
    }
    return data;
}

inline std::string Hostile::Damaged(std::string text, std::span<const std::string_view> tokens) {
    for (std::size_t damages = 1 + Below(3); damages > 0 && !text.empty(); --damages) {
        const std::size_t at = Below(text.size());
        const std::size_t line = text.rfind('\n', at) + 1;
        const std::size_t next = std::min(text.find('\n', at), text.size() - 1) + 1;
        switch (Below(7)) {
            case 0:
                text[at] = static_cast<char>(text[at] ^ (1 << Below(8)));
                break;
            case 1:
                text.erase(at, 1 + Below(Below(2) ? 4 : 400));
                break;
            case 2:
                text.insert(at, OneOf(tokens));
                break;
            case 3:
                text.erase(next - 1, 1);
                break;  // two lines become one
            case 4:
                text.insert(Below(text.size()), text.substr(line, next - line));
                break;
            case 5:
                text.insert(at, std::string(Below(70000), text[at]));
                break;
            default:
                if (Below(4) == 0) text.resize(at);
                break;
        }
    }
    return text;
}
