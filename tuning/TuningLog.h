#pragma once
// The tuning log, %windir%\System32\LogFiles\PerformanceTuning.log: UTF-16LE with a byte-order
// mark, lines ended by CR LF, only ever appended to. A log that begins with the mark of UTF-8 is
// continued in UTF-8, one without a mark in UTF-16LE. It is open for one step at a time. The
// sheet's thread. A failed write is noticed only where the mark of a new log is at stake.

#include <windows.h>
#include <utility>

#include "AutoClasses.h"

inline constexpr size_t kLogTextCapacity = 260;  // characters of a line's text, with terminator

enum class LogEncoding { Utf16, Utf8 };

class LogStream {
  public:
    LogStream() = default;
    LogStream(ScopedFile file, LogEncoding encoding)
        : m_file(std::move(file)), m_encoding(encoding) {}

    explicit operator bool() const { return static_cast<bool>(m_file); }
    void Close() { m_file.Reset(); }
    // Writes the text as it stands, without a time stamp, each "\n" as CR LF.
    void Write(LPCWSTR text);

  private:
    void WritePiece(const WCHAR* characters, size_t count);

    ScopedFile m_file;
    LogEncoding m_encoding = LogEncoding::Utf16;
};

// The log's full path. Makes its directory when it is missing. False when the Windows directory
// isn't known, the path is longer than `capacity` characters or the directory can't be made.
bool GetLogFileName(LPWSTR buffer, size_t capacity);
// Opens the log for appending, or makes it; the path stays in the buffer. The stream is false when
// the name or the file isn't to be had, a new file can't be given its mark, or an existing one
// can't be read for its own.
LogStream OpenTuningLog(LPWSTR buffer, size_t capacity);

// Writes the local time, the text and a line end. A text that ends in "\n" leaves a blank line
// behind it. `log` may be null: then nothing is written, and the result is false.
bool LogLine(LogStream* log, LPCWSTR text);
// LogLine of the formatted text, cut at kLogTextCapacity.
void LogFormatted(LogStream* log, LPCWSTR format, ...);
