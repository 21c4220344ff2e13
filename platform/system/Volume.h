#pragma once
// What drive C: is kept in: memory, or a folder of the host. Names compare without regard to case;
// a new one keeps the spelling it is made with. Errors are the system's codes.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <minwindef.h>

namespace platform {

// The names from the root down, each valid in itself: no separator, `.` or `..` among them.
using VolumePath = std::vector<std::u16string>;

// An open file's bytes.
class FileContent {
  public:
    virtual ~FileContent() = default;
    virtual DWORD Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t& read) = 0;
    virtual DWORD Write(std::uint64_t offset, const void* data, std::size_t size) = 0;
    virtual DWORD Size(std::uint64_t& size) = 0;
};

class Volume {
  public:
    virtual ~Volume() = default;

    enum class Kind { File, Directory };
    // ERROR_PATH_NOT_FOUND when the parent is no directory, ERROR_FILE_NOT_FOUND when only the last
    // name is missing.
    virtual DWORD Look(const VolumePath& path, Kind& kind) = 0;
    // Makes one directory in an existing one.
    virtual DWORD MakeDirectory(const VolumePath& path) = 0;

    struct Request {
        bool write = false;     // else only read
        bool create = false;    // made, empty, when it isn't there
        bool truncate = false;  // emptied
    };
    virtual DWORD Open(const VolumePath& path, Request request,
                       std::unique_ptr<FileContent>& file) = 0;
    // Removes a file; a directory gives ERROR_ACCESS_DENIED.
    virtual DWORD Remove(const VolumePath& path) = 0;

    struct Entry {
        std::u16string name;
        Kind kind;
    };
    // The files and directories in a directory, sorted without regard to case.
    virtual DWORD List(const VolumePath& directory, std::vector<Entry>& entries) = 0;
};

std::unique_ptr<Volume> MakeMemoryVolume();
// The folder is made when missing. Null when it can't be reached. Symbolic links in it are never
// followed, and only regular files are opened.
std::unique_ptr<Volume> MakeFolderVolume(const std::filesystem::path& folder);

}  // namespace platform
