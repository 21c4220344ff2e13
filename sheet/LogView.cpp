#include "LogView.h"

#include <windows.h>

#include "SheetText.h"
#include "Transcript.h"

namespace sheet {

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

    // UTF-16, lowest byte first, behind a byte-order mark.
    Text text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit =
            static_cast<WCHAR>(static_cast<BYTE>(bytes[i]) | static_cast<BYTE>(bytes[i + 1]) << 8);
        if (unit != TEXT('\r') && !(i == 0 && unit == 0xFEFF)) text += unit;
    }
    return ToUtf8(text);
}

}  // namespace sheet
