#include "Diagnostics.h"

#include <windows.h>
#include <cstdarg>

#include <strsafe.h>

namespace {

void PrintLine(DWORD stream, const char* format, va_list arguments) {
    // Cleared, since a wide text beyond the runtime's code page ends the formatting where it
    // stands.
    char line[1024] = {};
    StringCchVPrintfA(line, ARRAYSIZE(line), format, arguments);
    size_t length = 0;
    StringCchLengthA(line, ARRAYSIZE(line), &length);

    const HANDLE file = GetStdHandle(stream);
    if (file == nullptr || file == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(length), &written, nullptr);
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
