#pragma once
// Drive C:, and the two streams that the process writes to.
//
// The drive is empty and in memory until a folder is mounted in its place. C:\Windows\System32
// always exists. Nothing outside the drive can be named: paths are resolved as the system does, by
// their text alone, and names of devices, alternate streams and other drives are refused.

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Handles.h"
#include "Machine.h"
#include "Volume.h"

namespace platform {

// A file as one handle sees it.
struct OpenFile : KernelObject {
    std::u16string path;
    std::unique_ptr<FileContent> content;
    bool mayRead = false;
    bool mayWrite = false;
    bool appends = false;    // each write goes to the end
    bool mayDelete = false;  // counts for sharing only
    DWORD share = 0;         // FILE_SHARE_...
    std::uint64_t position = 0;
};

class Drive : public Part {
  public:
    Drive();

    // The folder becomes drive C:, in the place of what was there. It is made when missing. False,
    // and nothing changes, when it can't be made or reached.
    bool Mount(const std::filesystem::path& folder);

    // A whole file as bytes; nothing when it isn't there.
    std::optional<std::string> ReadWholeFile(std::u16string_view path);
    // Makes the file or replaces its content, with the directories above it.
    bool WriteWholeFile(std::u16string_view path, std::string_view bytes);

    // The work of the file functions. Paths are relative to C:\ where they name no drive.
    // existed: the file was there before.
    DWORD Open(std::u16string_view path, DWORD access, DWORD share, DWORD disposition,
               std::shared_ptr<OpenFile>& file, bool& existed);
    DWORD MakeDirectory(std::u16string_view path);
    DWORD Look(std::u16string_view path, Volume::Kind& kind);
    DWORD DeleteFile(std::u16string_view path);
    // What is in a directory, sorted without regard to case; `.` and `..` come first, but not in
    // the root.
    DWORD List(std::u16string_view directory, std::vector<Volume::Entry>& entries);

  private:
    DWORD CheckSharing(const std::u16string& key, const OpenFile& file);
    DWORD KeepSystemDirectories(const VolumePath& path);

    std::unique_ptr<Volume> m_volume;
    // By the path in capitals. A closed file's entry has expired.
    std::multimap<std::u16string, std::weak_ptr<OpenFile>> m_open;
};

// What the process has written to its standard handles. They aren't entered in the ledger, since
// nobody closes them.
struct Streams : Part {
    std::string output;
    std::string error;
    // The stream that a handle of GetStdHandle stands for, or null.
    std::string* Find(HANDLE handle);
    static HANDLE OutputHandle();
    static HANDLE ErrorHandle();
};

}  // namespace platform
