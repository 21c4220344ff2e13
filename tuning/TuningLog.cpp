#include "TuningLog.h"

#include <algorithm>
#include <cstdarg>
#include <iterator>
#include <strsafe.h>

namespace {

constexpr WCHAR kByteOrderMark = 0xFEFF;
constexpr BYTE kUtf8Mark[] = {0xEF, 0xBB, 0xBF};
constexpr size_t kPieceCapacity = 2 * kLogTextCapacity + 128;  // characters
constexpr size_t kMostBytes = 3;                               // of one of them in UTF-8

bool WriteBytes(HANDLE file, const void* bytes, size_t count) {
    DWORD written = 0;
    return WriteFile(file, bytes, static_cast<DWORD>(count), &written, nullptr) != FALSE;
}

// Finds out how the file is to be continued. A new one is given its mark, without which it would be
// taken for narrow text for good.
bool TakeEncoding(HANDLE file, LogEncoding& encoding) {
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(file, &size)) return false;
    if (size.QuadPart == 0) return WriteBytes(file, &kByteOrderMark, sizeof(kByteOrderMark));
    BYTE start[sizeof(kUtf8Mark)] = {};
    DWORD read = 0;
    if (!ReadFile(file, start, sizeof(start), &read, nullptr)) return false;
    if (std::equal(std::begin(start), std::end(start), kUtf8Mark)) encoding = LogEncoding::Utf8;
    return true;
}

}  // namespace

void LogStream::WritePiece(const WCHAR* characters, size_t count) {
    if (m_encoding == LogEncoding::Utf16) {
        (void)WriteBytes(m_file.Get(), characters, count * sizeof(WCHAR));
        return;
    }
    char bytes[kMostBytes * kPieceCapacity];
    const int length = WideCharToMultiByte(CP_UTF8, 0, characters, static_cast<int>(count), bytes,
                                           static_cast<int>(sizeof(bytes)), nullptr, nullptr);
    (void)WriteBytes(m_file.Get(), bytes, static_cast<size_t>(length));
}

void LogStream::Write(LPCWSTR text) {
    // A line goes out in one piece, so that two sheets that append don't mix within it.
    WCHAR piece[kPieceCapacity];
    size_t used = 0;
    for (; *text; ++text) {
        if (used + 2 > ARRAYSIZE(piece)) {
            WritePiece(piece, used);
            used = 0;
        }
        if (*text == TEXT('\n')) piece[used++] = TEXT('\r');
        piece[used++] = *text;
    }
    WritePiece(piece, used);
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
    ScopedFile file(CreateFileW(buffer, FILE_APPEND_DATA | FILE_READ_DATA,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    LogEncoding encoding = LogEncoding::Utf16;
    if (!file || !TakeEncoding(file.Get(), encoding)) return LogStream();
    return LogStream(std::move(file), encoding);
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
