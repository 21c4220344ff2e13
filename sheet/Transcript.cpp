#include "Transcript.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace sheet {

namespace {

bool g_hasFailed = false;

bool IsPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); });
}

std::string PrintableLines(std::string_view text) {
    std::string lines;
    for (;;) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (end != std::string_view::npos && line.ends_with('\r')) line.remove_suffix(1);
        lines += ToUtf8(Printable(FromUtf8(line)));
        if (end == std::string_view::npos) return lines;
        lines += '\n';
        text.remove_prefix(end + 1);
    }
}

void Write(std::FILE* stream, const char* name, std::string_view text) {
    const std::string printable = IsPlain(text) ? std::string(text) : PrintableLines(text);
    const bool isWritten =
        std::fwrite(printable.data(), 1, printable.size(), stream) == printable.size() &&
        std::fflush(stream) == 0;
    if (isWritten || std::exchange(g_hasFailed, true)) return;
    std::fprintf(stderr, "sheet: %s can't be written: %s\n", name, std::strerror(errno));
    std::fflush(stderr);
}

}  // namespace

std::string Field(TextView text) {
    std::u32string escaped;
    for (const char32_t point : CodePoints(text)) {
        if (point == U'\\' || point == U'|') escaped += U'\\';
        escaped += point;
    }
    return ToUtf8(Printable(escaped));
}

void AddField(std::string& line, std::string_view field) {
    line += " | ";
    line += field;
}

std::string Line(std::initializer_list<std::string_view> fields) {
    std::string line;
    for (const std::string_view field : fields) {
        if (line.empty()) {
            line = field;
        } else {
            AddField(line, field);
        }
    }
    return line + "\n";
}

void Print(std::string_view text) {
    Write(stdout, "standard output", text);
}

void PrintError(std::string_view text) {
    Write(stderr, "standard error", text);
}

void PrintRefusal(std::string_view reason) {
    PrintError("sheet: " + ToUtf8(Printable(FromUtf8(reason))) + "\n");
}

bool HasPrintingFailed() {
    return g_hasFailed;
}

}  // namespace sheet
