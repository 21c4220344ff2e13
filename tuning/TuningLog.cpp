#include "TuningLog.h"

#include <cstdarg>
#include <strsafe.h>

namespace {

constexpr WCHAR kByteOrderMark = 0xFEFF;

bool WriteCharacters(HANDLE file, const WCHAR* characters, size_t count) {
    DWORD written = 0;
    return WriteFile(file, characters, static_cast<DWORD>(count * sizeof(WCHAR)), &written,
                     nullptr) != FALSE;
}

// Without its mark a log would be taken for narrow text for good.
bool BeginsWithMark(HANDLE file) {
    LARGE_INTEGER size = {};
    return GetFileSizeEx(file, &size) &&
           (size.QuadPart != 0 || WriteCharacters(file, &kByteOrderMark, 1));
}

}  // namespace

void LogStream::Write(LPCWSTR text) {
    // A line goes out in one piece, so that two sheets that append don't mix within it.
    WCHAR piece[2 * kLogTextCapacity + 128];
    size_t used = 0;
    for (; *text; ++text) {
        if (used + 2 > ARRAYSIZE(piece)) {
            (void)WriteCharacters(m_file.Get(), piece, used);
            used = 0;
        }
        if (*text == TEXT('\n')) piece[used++] = TEXT('\r');
        piece[used++] = *text;
    }
    (void)WriteCharacters(m_file.Get(), piece, used);
}

bool GetLogFileName(LPWSTR buffer, size_t capacity) {
    const UINT length = GetWindowsDirectoryW(buffer, static_cast<UINT>(capacity));
    if (length == 0 || length >= capacity) return false;
    if (FAILED(StringCchCatW(buffer, capacity, TEXT("\\System32\\LogFiles")))) return false;
    if (!CreateDirectoryW(buffer, nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) return false;
    return SUCCEEDED(StringCchCatW(buffer, capacity, TEXT("\\PerformanceTuning.log")));
}

LogStream OpenTuningLog(LPWSTR buffer, size_t capacity) {
    if (!GetLogFileName(buffer, capacity)) return LogStream();
    ScopedFile file(CreateFileW(buffer, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file || !BeginsWithMark(file.Get())) return LogStream();
    return LogStream(std::move(file));
}

bool LogLine(LogStream* log, LPCWSTR text) {
    if (!log || !*log) return false;
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    WCHAR line[kLogTextCapacity + 64];
    (void)StringCchPrintfW(line, ARRAYSIZE(line), TEXT("%d-%d-%d %d:%02d : %s\n"), now.wDay,
                           now.wMonth, now.wYear, now.wHour, now.wMinute, text);
    log->Write(line);
    return true;
}

void LogFormatted(LogStream* log, LPCWSTR format, ...) {
    if (!log) return;
    WCHAR text[kLogTextCapacity];
    va_list arguments;
    va_start(arguments, format);
    (void)StringCchVPrintfW(text, ARRAYSIZE(text), format, arguments);
    va_end(arguments);
    LogLine(log, text);
}
