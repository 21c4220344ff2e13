#include "Transcript.h"

#include <cstdio>

namespace sheet {

std::string Field(TextView text) {
    Text escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const WCHAR unit = text[i];
        const bool breaks = unit == TEXT('\r') && i + 1 < text.size() && text[i + 1] == TEXT('\n');
        if (breaks) continue;
        if (unit == TEXT('\n') || unit == TEXT('\r')) {
            escaped += TEXT("\\n");
            continue;
        }
        if (unit == TEXT('\\') || unit == TEXT('|')) escaped += TEXT('\\');
        escaped += unit;
    }
    return ToUtf8(escaped);
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
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void PrintRefusal(std::string_view reason) {
    std::string line = "sheet: " + std::string(reason);
    for (char& c : line) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    line += '\n';
    std::fflush(stdout);
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

}  // namespace sheet
