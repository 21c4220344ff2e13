#include "Diagnostics.h"

#include <windows.h>
#include <algorithm>
#include <cstdarg>
#include <string_view>

#include <strsafe.h>

namespace {

constexpr size_t kLineCapacity = 1024;  // characters, with terminator
constexpr size_t kMostBytes = 3;        // of a character, in any code page of the system

bool IsOneOf(char character, std::string_view characters) {
    return characters.find(character) != std::string_view::npos;
}

// The wide format that takes the same arguments: a text or character without a size has the width
// of its format, and one in capitals has the other.
void WidenFormat(const char* format, WCHAR (&wide)[kLineCapacity]) {
    size_t used = 0;
    bool isConversion = false;
    bool isSized = false;
    for (; *format && used + 2 < ARRAYSIZE(wide); ++format) {
        if (!isConversion) {
            isConversion = *format == '%';
            isSized = false;
        } else if (IsOneOf(*format, "hlwI")) {
            isSized = true;
        } else if (!IsOneOf(*format, "-+ #.*0123456789")) {
            if (!isSized && IsOneOf(*format, "sc")) wide[used++] = TEXT('h');
            if (!isSized && IsOneOf(*format, "SC")) wide[used++] = TEXT('l');
            isConversion = false;
        }
        wide[used++] = static_cast<BYTE>(*format);
    }
    wide[used] = TEXT('\0');
}

// Converts the line and gives the number of bytes. Every code page of the system has the ASCII
// characters at their places; of what it lacks, each character is replaced.
int ToCodePage(std::basic_string_view<WCHAR> line, char (&bytes)[kMostBytes * kLineCapacity]) {
    const int length = static_cast<int>(line.size());
    if (std::all_of(line.begin(), line.end(), [](WCHAR unit) { return unit < 0x80; })) {
        std::transform(line.begin(), line.end(), bytes,
                       [](WCHAR unit) { return static_cast<char>(unit); });
        return length;
    }
    const auto convert = [&](DWORD flags) {
        return WideCharToMultiByte(CP_ACP, flags, line.data(), length, bytes,
                                   static_cast<int>(sizeof(bytes)), nullptr, nullptr);
    };
    const int count = convert(WC_NO_BEST_FIT_CHARS);
    return count != 0 ? count : convert(0);  // UTF-8 as the system's code page takes no flags
}

// A narrow format would lose a line with a character that the code page lacks.
void PrintLine(DWORD stream, const char* format, va_list arguments) {
    WCHAR wideFormat[kLineCapacity];
    WCHAR line[kLineCapacity] = {};
    WidenFormat(format, wideFormat);
    (void)StringCchVPrintfW(line, ARRAYSIZE(line), wideFormat, arguments);

    char bytes[kMostBytes * kLineCapacity];
    const int count = ToCodePage(line, bytes);

    const HANDLE file = GetStdHandle(stream);
    if (file == nullptr || file == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    (void)WriteFile(file, bytes, static_cast<DWORD>(count), &written, nullptr);
}

}  // namespace

void PrintDiagnostic(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    PrintLine(STD_OUTPUT_HANDLE, format, arguments);
    va_end(arguments);
}

void PrintError(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    PrintLine(STD_ERROR_HANDLE, format, arguments);
    va_end(arguments);
}
