#pragma once
// The lines of a text file in one of the encodings of a registry export, decoded one at a time, so
// that a large file costs no second copy.

#include <string>
#include <string_view>

namespace platform {

class MachineFileLines {
  public:
    // Borrows the bytes. The encoding is that of the byte-order mark, without one UTF-8.
    explicit MachineFileLines(std::string_view bytes);

    // Goes to the next line. False at the end, or when the line can't be decoded: see Error.
    bool Next();
    // The line without its end, good until the next one. It holds no NUL.
    std::u16string_view Text() const { return m_text; }
    // What ended it: CR LF, LF or, on the last line, nothing.
    std::u16string_view End() const { return m_end; }
    std::size_t Number() const { return m_number; }
    // What is wrong with the line, or null.
    const char* Error() const { return m_error; }

  private:
    enum class Encoding { Utf8, Utf16Little, Utf16Big };

    bool TakeUtf8();
    bool TakeUtf16();

    std::string_view m_rest;
    Encoding m_encoding = Encoding::Utf8;
    std::u16string m_buffer;
    std::u16string_view m_text;
    std::u16string_view m_end;
    std::size_t m_number = 0;
    const char* m_error = nullptr;
};

}  // namespace platform
