#include "LogView.h"

#include <string_view>

#include <windows.h>

#include "SheetText.h"
#include "Transcript.h"

namespace sheet {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Without the mark. What has no mark is taken for UTF-16, lowest byte first, as the log is made.
Text Decode(std::string_view bytes) {
    if (bytes.starts_with(kUtf8Mark)) return FromUtf8(bytes.substr(kUtf8Mark.size()));
    Text text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit =
            static_cast<WCHAR>(static_cast<BYTE>(bytes[i]) | static_cast<BYTE>(bytes[i + 1]) << 8);
        if (i != 0 || unit != 0xFEFF) text += unit;
    }
    return text;
}

}  // namespace

std::string ReadTuningLog() {
    WCHAR windows[MAX_PATH] = {};
    if (GetWindowsDirectoryW(windows, MAX_PATH) == 0) return std::string();
    const Text path = Text(windows) + TEXT("\\System32\\LogFiles\\PerformanceTuning.log");
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return std::string();
        throw Refusal{"the tuning log can't be read: error " + std::to_string(error)};
    }
    std::string bytes;
    char piece[4096];
    DWORD read = 0;
    while (ReadFile(file, piece, sizeof(piece), &read, nullptr) && read != 0)
        bytes.append(piece, read);
    CloseHandle(file);

    return ToUtf8(Decode(bytes));
}

}  // namespace sheet
