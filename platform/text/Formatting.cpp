#include "Formatting.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace platform {
namespace {

enum class Size { Int, Short, Int64, WideText };

struct Conversion {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternative = false;
    bool zeros = false;
    std::size_t width = 0;
    int precision = -1;  // none
    Size size = Size::Int;
};

// A width or precision beyond this is cut, so that a wild format can't exhaust memory.
constexpr int longestField = 0x10000;

template <class C>
bool IsDigit(C c) {
    return c >= C('0') && c <= C('9');
}

// The number with that many decimal places. As in that runtime, the number is first taken to 17
// significant digits, and of two nearest results the greater one is chosen: 1.25 becomes "1.3".
std::string FixedPoint(double magnitude, std::size_t places) {
    if (!std::isfinite(magnitude)) return std::isnan(magnitude) ? "nan" : "inf";
    char scientific[32];
    std::snprintf(scientific, sizeof(scientific), "%.16e", magnitude);
    const int exponent = std::atoi(std::strchr(scientific, 'e') + 1);
    // All digits from the ones or, of a larger number, from its first one on.
    std::string digits(static_cast<std::size_t>(std::max(-exponent, 0)), '0');
    digits.push_back(scientific[0]);
    digits.append(scientific + 2, 16);
    const std::size_t whole = static_cast<std::size_t>(std::max(exponent, 0)) + 1;
    digits.resize(std::max(digits.size(), whole + places + 1), '0');

    const bool up = digits[whole + places] >= '5';
    digits.resize(whole + places);
    if (up) {
        std::size_t at = digits.size();
        while (at != 0 && digits[at - 1] == '9')
            digits[--at] = '0';
        if (at != 0)
            ++digits[at - 1];
        else
            digits.insert(0, 1, '1');
    }
    if (places != 0) digits.insert(digits.size() - places, 1, '.');
    return digits;
}

template <class C>
class Formatter {
  public:
    Formatter(const C* format, FormatArguments& arguments) : m_at(format), m_arguments(arguments) {}

    std::basic_string<C> Run() {
        while (*m_at != 0 && !m_failed) {
            if (*m_at != C('%'))
                m_text.push_back(*m_at++);
            else
                Convert();
        }
        return std::move(m_text);
    }
    bool Failed() const { return m_failed; }

  private:
    void Convert() {
        ++m_at;
        Conversion conversion;
        while (TakeFlag(conversion))
            ++m_at;
        TakeWidth(conversion);
        TakePrecision(conversion);
        while (TakeSize(conversion)) {
        }
        if (*m_at != 0) Emit(*m_at++, conversion);
    }

    bool TakeFlag(Conversion& conversion) const {
        switch (*m_at) {
            case C('-'):
                return conversion.left = true;
            case C('+'):
                return conversion.plus = true;
            case C(' '):
                return conversion.blank = true;
            case C('#'):
                return conversion.alternative = true;
            case C('0'):
                return conversion.zeros = true;
            default:
                return false;
        }
    }

    int TakeNumber() {
        int number = 0;
        for (; IsDigit(*m_at); ++m_at)
            number = std::min(number * 10 + static_cast<int>(*m_at - C('0')), longestField);
        return number;
    }

    void TakeWidth(Conversion& conversion) {
        int width = 0;
        if (*m_at == C('*')) {
            ++m_at;
            width = std::clamp(m_arguments.NextInt(), -longestField, longestField);
            if (width < 0) {
                conversion.left = true;
                width = -width;
            }
        } else {
            width = TakeNumber();
        }
        conversion.width = static_cast<std::size_t>(width);
    }

    void TakePrecision(Conversion& conversion) {
        if (*m_at != C('.')) return;
        ++m_at;
        if (*m_at == C('*')) {
            ++m_at;
            conversion.precision = std::clamp(m_arguments.NextInt(), -1, longestField);
        } else {
            conversion.precision = TakeNumber();
        }
    }

    bool TakeSize(Conversion& conversion) {
        switch (*m_at) {
            case C('h'):
                conversion.size = Size::Short;
                break;
            case C('l'):
                // long has 32 bits; what it changes is the width of a text.
                if (m_at[1] == C('l')) {
                    ++m_at;
                    conversion.size = Size::Int64;
                } else {
                    conversion.size = Size::WideText;
                }
                break;
            case C('w'):
                conversion.size = Size::WideText;
                break;
            case C('I'):
                if (m_at[1] == C('3') && m_at[2] == C('2')) {
                    m_at += 2;
                    conversion.size = Size::Int;
                } else {
                    if (m_at[1] == C('6') && m_at[2] == C('4')) m_at += 2;
                    conversion.size = Size::Int64;
                }
                break;
            default:
                return false;
        }
        ++m_at;
        return true;
    }

    void Emit(C kind, Conversion& conversion) {
        switch (kind) {
            case C('d'):
            case C('i'):
                EmitSigned(conversion);
                break;
            case C('u'):
                EmitUnsigned(conversion, 10, false);
                break;
            case C('o'):
                EmitUnsigned(conversion, 8, false);
                break;
            case C('x'):
            case C('X'):
                EmitUnsigned(conversion, 16, kind == C('X'));
                break;
            case C('p'):
                conversion.size = Size::Int64;
                conversion.precision = 2 * sizeof(void*);
                EmitUnsigned(conversion, 16, true);
                break;
            case C('f'):
                EmitDouble(conversion);
                break;
            case C('s'):
            case C('S'):
                EmitText(conversion, TakesWide(conversion, kind == C('S')));
                break;
            case C('c'):
            case C('C'):
                EmitCharacter(conversion, TakesWide(conversion, kind == C('C')));
                break;
            default:  // "%%", and whatever isn't a conversion
                m_text.push_back(kind);
        }
    }

    static bool TakesWide(const Conversion& conversion, bool other) {
        if (conversion.size == Size::Short) return false;
        if (conversion.size == Size::WideText) return true;
        return (sizeof(C) > 1) != other;
    }

    void EmitSigned(const Conversion& conversion) {
        std::int64_t value =
            conversion.size == Size::Int64 ? m_arguments.NextInt64() : m_arguments.NextInt();
        if (conversion.size == Size::Short) value = static_cast<std::int16_t>(value);
        const auto bits = static_cast<std::uint64_t>(value);
        const char* sign =
            value < 0 ? "-" : (conversion.plus ? "+" : (conversion.blank ? " " : ""));
        EmitDigits(conversion, sign, value < 0 ? 0 - bits : bits, 10, false);
    }

    void EmitUnsigned(const Conversion& conversion, unsigned base, bool capitals) {
        std::uint64_t value = conversion.size == Size::Int64
                                  ? static_cast<std::uint64_t>(m_arguments.NextInt64())
                                  : static_cast<std::uint32_t>(m_arguments.NextInt());
        if (conversion.size == Size::Short) value = static_cast<std::uint16_t>(value);
        const bool marked = conversion.alternative && base == 16 && value != 0;
        EmitDigits(conversion, marked ? (capitals ? "0X" : "0x") : "", value, base, capitals);
    }

    void EmitDigits(Conversion conversion, std::string_view prefix, std::uint64_t value,
                    unsigned base, bool capitals) {
        const char* alphabet = capitals ? "0123456789ABCDEF" : "0123456789abcdef";
        std::string digits;
        for (; value != 0; value /= base)
            digits.push_back(alphabet[value % base]);
        const auto least =
            static_cast<std::size_t>(conversion.precision < 0 ? 1 : conversion.precision);
        digits.append(least - std::min(least, digits.size()), '0');
        if (conversion.alternative && base == 8 && (digits.empty() || digits.back() != '0'))
            digits.push_back('0');
        if (conversion.precision >= 0) conversion.zeros = false;
        std::reverse(digits.begin(), digits.end());
        Pad(conversion, prefix, std::basic_string<C>(digits.begin(), digits.end()));
    }

    void EmitDouble(const Conversion& conversion) {
        const double value = m_arguments.NextDouble();
        const auto places =
            static_cast<std::size_t>(conversion.precision < 0 ? 6 : conversion.precision);
        std::string digits = FixedPoint(std::fabs(value), places);
        if (conversion.alternative && places == 0) digits.push_back('.');
        const char* sign =
            std::signbit(value) ? "-" : (conversion.plus ? "+" : (conversion.blank ? " " : ""));
        Pad(conversion, sign, std::basic_string<C>(digits.begin(), digits.end()));
    }

    void EmitText(const Conversion& conversion, bool wide) {
        const void* text = m_arguments.NextPointer();
        if (text == nullptr)
            Pad(conversion, "", Adapt(Bounded<char>(conversion, "(null)")));
        else if (wide)
            Pad(conversion, "", Adapt(Bounded(conversion, static_cast<const char16_t*>(text))));
        else
            Pad(conversion, "", Adapt(Bounded(conversion, static_cast<const char*>(text))));
    }

    void EmitCharacter(const Conversion& conversion, bool wide) {
        const int value = m_arguments.NextInt();
        if (wide) {
            const auto unit = static_cast<char16_t>(value);
            Pad(conversion, "", Adapt(std::u16string_view(&unit, 1)));
        } else {
            const auto byte = static_cast<char>(value);
            Pad(conversion, "", Adapt(std::string_view(&byte, 1)));
        }
    }

    // The precision bounds a text that then needs no terminator.
    template <class T>
    static std::basic_string_view<T> Bounded(const Conversion& conversion, const T* text) {
        const std::size_t most = conversion.precision < 0
                                     ? std::basic_string_view<T>::npos
                                     : static_cast<std::size_t>(conversion.precision);
        std::size_t length = 0;
        while (length < most && text[length] != 0)
            ++length;
        return {text, length};
    }

    // The runtime's locale is "C": the other width has the first 256 characters and no others.
    template <class Unit>
    std::basic_string<C> Adapt(std::basic_string_view<Unit> text) {
        std::basic_string<C> adapted;
        for (const Unit unit : text) {
            const auto character = static_cast<std::make_unsigned_t<Unit>>(unit);
            if (sizeof(C) < sizeof(Unit) && character > 0xFF) {
                m_failed = true;
                break;
            }
            adapted.push_back(static_cast<C>(character));
        }
        return adapted;
    }

    // Zeros stand between prefix and body, whatever the body is.
    void Pad(const Conversion& conversion, std::string_view prefix,
             const std::basic_string<C>& body) {
        const std::size_t length = prefix.size() + body.size();
        const std::size_t padding = conversion.width - std::min(conversion.width, length);
        if (!conversion.left && !conversion.zeros) m_text.append(padding, C(' '));
        m_text.append(prefix.begin(), prefix.end());
        if (!conversion.left && conversion.zeros) m_text.append(padding, C('0'));
        m_text.append(body);
        if (conversion.left) m_text.append(padding, C(' '));
    }

    const C* m_at;
    FormatArguments& m_arguments;
    std::basic_string<C> m_text;
    bool m_failed = false;
};

template <class C>
std::basic_string<C> Format(const C* format, FormatArguments& arguments, bool* failed) {
    Formatter<C> formatter(format, arguments);
    std::basic_string<C> text = formatter.Run();
    if (failed != nullptr) *failed = formatter.Failed();
    return text;
}

}  // namespace

std::u16string FormatText(const char16_t* format, FormatArguments& arguments, bool* failed) {
    return Format(format, arguments, failed);
}

std::string FormatText(const char* format, FormatArguments& arguments, bool* failed) {
    return Format(format, arguments, failed);
}

}  // namespace platform
