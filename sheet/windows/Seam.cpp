#include "../Seam.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <windows.h>

#include "../SheetText.h"
#include "../Transcript.h"
#include "Imports.h"
#include "Lending.h"
#include "MachineClock.h"
#include "RegistrySnapshot.h"
#include "ScratchFile.h"
#include "WindowsUser.h"

namespace sheet {

namespace {

// What the library writes to a standard stream, kept apart from the transcript.
class CapturedStream {
  public:
    explicit CapturedStream(DWORD stream) { SetStdHandle(stream, m_file.Handle()); }
    std::string Contents() { return m_file.Contents(); }

  private:
    ScratchFile m_file;
};

struct Streams {
    CapturedStream output{STD_OUTPUT_HANDLE};
    CapturedStream error{STD_ERROR_HANDLE};
};

Streams& LibraryStreams() {
    static Streams streams;
    return streams;
}

// Runs a command line to its end; true when it succeeded.
bool RunCommand(Text commandLine) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                        nullptr, nullptr, &startup, &process))
        return false;
    CloseHandle(process.hThread);
    // Not a wait of the library, for which the clock would move.
    WaitForSingleObjectEx(process.hProcess, INFINITE, FALSE);
    DWORD exitCode = 1;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hProcess);
    return exitCode == 0;
}

// Where the program was started. A file dialog changes the current directory.
const std::filesystem::path& StartDirectory() {
    static const auto directory = std::filesystem::current_path();
    return directory;
}

const std::map<Text, KeySnapshot, NameLess>& RegistryBefore() {
    static const auto before = TakeRegistrySnapshot();
    return before;
}

}  // namespace

LibraryCall::LibraryCall() : m_scope(nullptr) {}

LibraryCall::~LibraryCall() = default;

void LibraryLoaded(HMODULE library) {
    Lend(library);
    PointImport(library, "MessageBoxW", reinterpret_cast<void (*)()>(User::ShowMessageBox));
}

void SheetShown() {}

std::uint64_t MachineTime() {
    return MachineClockTime();
}

void LetTimePass(std::uint64_t milliseconds) {
    AddWakingTime(MachineClockTime() + milliseconds);
}

void WakeAt(std::uint64_t time) {
    AddWakingTime(time);
}

// A look every hundredth of a second: half a minute.
bool MayBoxComeYet(int looks) {
    return looks < 3000;
}

void MergeFile(const std::string& path) {
    std::ifstream file(StartDirectory() / FromUtf8(path), std::ios::binary);
    if (!file) throw Refusal{path + ": can't be read"};
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // The system's import takes UTF-16, lowest byte first, behind a byte-order mark.
    if (!bytes.starts_with("\xFF\xFE")) {
        if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
        const Text text = TEXT('\xFEFF') + FromUtf8(bytes);
        bytes.assign(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR));
    }
    const ScratchFile import(bytes);
    if (!RunCommand(TEXT("regedit.exe /S \"") + import.Path() + TEXT("\"")))
        throw Refusal{path + ": can't be imported"};
}

void RememberRegistry() {
    LibraryStreams();
    StartDirectory();
    RegistryBefore();
}

std::string RegistryChanges(Changes changes) {
    const auto now = TakeRegistrySnapshot();
    return changes == Changes::Made ? FormatChanges(RegistryBefore(), now)
                                    : FormatChanges(now, RegistryBefore());
}

std::string LibraryOutput() {
    std::string text = LibraryStreams().output.Contents() + LibraryStreams().error.Contents();
    if (!text.empty() && text.back() != '\n') text += '\n';
    return text;
}

}  // namespace sheet
