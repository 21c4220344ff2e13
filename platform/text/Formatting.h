#pragma once
// Formatted text with the meaning that the Windows C runtime gives to a format: %s takes text of
// the format's own width, %S of the other; %hs is always narrow, %ls and %ws are always wide; a
// null text is "(null)"; %p is sixteen capital digits. Text of the other width is converted as in
// that runtime's "C" locale: the first 256 characters stand for themselves.

#include <cstdarg>
#include <cstdint>
#include <string>

namespace platform {

// Where the arguments of a format come from, in order.
class FormatArguments {
  public:
    virtual ~FormatArguments() = default;
    virtual int NextInt() = 0;
    virtual std::int64_t NextInt64() = 0;
    virtual const void* NextPointer() = 0;
    virtual double NextDouble() = 0;
};

// The arguments of a variadic function. Borrows the list's place in it, not the list.
class VariadicArguments : public FormatArguments {
  public:
    explicit VariadicArguments(va_list list) { va_copy(m_list, list); }
    ~VariadicArguments() override { va_end(m_list); }
    VariadicArguments(const VariadicArguments&) = delete;
    VariadicArguments& operator=(const VariadicArguments&) = delete;

    int NextInt() override { return va_arg(m_list, int); }
    std::int64_t NextInt64() override { return va_arg(m_list, long long); }
    const void* NextPointer() override { return va_arg(m_list, const void*); }
    double NextDouble() override { return va_arg(m_list, double); }

  private:
    va_list m_list;
};

// failed: told whether a character that the locale lacks has ended the text early; may be null.
std::u16string FormatText(const char16_t* format, FormatArguments& arguments,
                          bool* failed = nullptr);
std::string FormatText(const char* format, FormatArguments& arguments, bool* failed = nullptr);

}  // namespace platform
