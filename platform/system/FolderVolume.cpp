#include "Volume.h"

#include <cerrno>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <winerror.h>

#include "Text.h"

namespace platform {
namespace {

class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Descriptor() {
        if (m_fd >= 0) close(m_fd);
    }
    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }

  private:
    int m_fd;
};

DWORD FromErrno(int code) {
    switch (code) {
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EEXIST:
            return ERROR_ALREADY_EXISTS;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return ERROR_DISK_FULL;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EACCES:
        case EPERM:
        case EROFS:
        case ELOOP:  // a symbolic link
        case ENXIO:
        case EISDIR:
            return ERROR_ACCESS_DENIED;
        default:
            return ERROR_GEN_FAILURE;
    }
}

// The folder's owner may be root, whom the host stops at nothing; a folder or file that is closed
// to everybody is closed to the machine, too.
constexpr mode_t kAnyRead = S_IRUSR | S_IRGRP | S_IROTH;
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

bool Writable(int fd) {
    struct stat status;
    return fstat(fd, &status) == 0 && (status.st_mode & kAnyWrite) != 0;
}

class FolderContent : public FileContent {
  public:
    explicit FolderContent(Descriptor file) : m_file(std::move(file)) {}

    DWORD Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t& read) override {
        read = 0;
        const ssize_t got = pread(m_file.Get(), buffer, size, static_cast<off_t>(offset));
        if (got < 0) return FromErrno(errno);
        read = static_cast<std::size_t>(got);
        return ERROR_SUCCESS;
    }
    DWORD Write(std::uint64_t offset, const void* data, std::size_t size) override {
        const char* next = static_cast<const char*>(data);
        while (size > 0) {
            const ssize_t put = pwrite(m_file.Get(), next, size, static_cast<off_t>(offset));
            if (put < 0) return FromErrno(errno);
            next += put;
            size -= static_cast<std::size_t>(put);
            offset += static_cast<std::uint64_t>(put);
        }
        return ERROR_SUCCESS;
    }
    DWORD Size(std::uint64_t& size) override {
        struct stat status;
        if (fstat(m_file.Get(), &status) != 0) return FromErrno(errno);
        size = static_cast<std::uint64_t>(status.st_size);
        return ERROR_SUCCESS;
    }

  private:
    Descriptor m_file;
};

// What is in a directory, in no order.
class Listing {
  public:
    explicit Listing(int directory) {
        const int copy = openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (copy >= 0) m_stream = fdopendir(copy);
        if (copy >= 0 && !m_stream) close(copy);
    }
    ~Listing() {
        if (m_stream) closedir(m_stream);
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;
    explicit operator bool() const { return m_stream != nullptr; }
    // Null at the end.
    const dirent* Next() const { return readdir(m_stream); }

  private:
    DIR* m_stream = nullptr;
};

// The spelling of a name in a directory: itself where it exists, else one that differs in case
// only (the first in order, so that it is always the same), else nothing.
std::optional<std::string> Spelling(int directory, const std::u16string& name) {
    const std::string wanted = ToUtf8(name);
    struct stat status;
    if (fstatat(directory, wanted.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return wanted;
    const Listing listing(directory);
    if (!listing) return std::nullopt;
    std::optional<std::string> best;
    while (const dirent* entry = listing.Next()) {
        const std::string_view candidate = entry->d_name;
        if (EqualNoCase(FromUtf8(candidate), name) && (!best || candidate < *best))
            best = candidate;
    }
    return best;
}

class FolderVolume : public Volume {
  public:
    explicit FolderVolume(Descriptor root) : m_root(std::move(root)) {}

    DWORD Look(const VolumePath& path, Kind& kind) override {
        kind = Kind::Directory;
        if (path.empty()) return ERROR_SUCCESS;
        Descriptor parent;
        if (const DWORD error = OpenParent(path, parent)) return error;
        const std::optional<std::string> name = Spelling(parent.Get(), path.back());
        if (!name) return ERROR_FILE_NOT_FOUND;
        struct stat status;
        if (fstatat(parent.Get(), name->c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return FromErrno(errno);
        if (S_ISLNK(status.st_mode)) return ERROR_ACCESS_DENIED;
        kind = S_ISDIR(status.st_mode) ? Kind::Directory : Kind::File;
        return ERROR_SUCCESS;
    }

    DWORD MakeDirectory(const VolumePath& path) override {
        if (path.empty()) return ERROR_ACCESS_DENIED;
        Descriptor parent;
        if (const DWORD error = OpenParent(path, parent)) return error;
        if (Spelling(parent.Get(), path.back())) return ERROR_ALREADY_EXISTS;
        if (!Writable(parent.Get())) return ERROR_ACCESS_DENIED;
        return mkdirat(parent.Get(), ToUtf8(path.back()).c_str(), 0777) == 0 ? ERROR_SUCCESS
                                                                             : FromErrno(errno);
    }

    DWORD Open(const VolumePath& path, Request request,
               std::unique_ptr<FileContent>& file) override {
        if (path.empty()) return ERROR_ACCESS_DENIED;
        Descriptor parent;
        if (const DWORD error = OpenParent(path, parent)) return error;
        std::optional<std::string> name = Spelling(parent.Get(), path.back());
        // O_NONBLOCK: a pipe in the folder must not hold the machine up.
        int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
        flags |= request.write || request.truncate ? O_RDWR : O_RDONLY;
        if (!name) {
            if (!request.create) return ERROR_FILE_NOT_FOUND;
            if (!Writable(parent.Get())) return ERROR_ACCESS_DENIED;
            name = ToUtf8(path.back());
            flags |= O_CREAT | O_EXCL;
        }
        Descriptor opened(openat(parent.Get(), name->c_str(), flags, 0666));
        if (!opened) return FromErrno(errno);
        struct stat status;
        if (fstat(opened.Get(), &status) != 0) return FromErrno(errno);
        const mode_t needed = (flags & O_RDWR) != 0 ? kAnyWrite : kAnyRead;
        if (!S_ISREG(status.st_mode) || (status.st_mode & needed) == 0) return ERROR_ACCESS_DENIED;
        if (request.truncate && ftruncate(opened.Get(), 0) != 0) return FromErrno(errno);
        file = std::make_unique<FolderContent>(std::move(opened));
        return ERROR_SUCCESS;
    }

    DWORD Remove(const VolumePath& path) override {
        if (path.empty()) return ERROR_ACCESS_DENIED;
        Descriptor parent;
        if (const DWORD error = OpenParent(path, parent)) return error;
        const std::optional<std::string> name = Spelling(parent.Get(), path.back());
        if (!name) return ERROR_FILE_NOT_FOUND;
        struct stat status;
        if (fstatat(parent.Get(), name->c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return FromErrno(errno);
        if (!S_ISREG(status.st_mode) || !Writable(parent.Get())) return ERROR_ACCESS_DENIED;
        return unlinkat(parent.Get(), name->c_str(), 0) == 0 ? ERROR_SUCCESS : FromErrno(errno);
    }

    DWORD List(const VolumePath& directory, std::vector<Entry>& entries) override {
        VolumePath below = directory;
        below.emplace_back();
        Descriptor opened;
        if (const DWORD error = OpenParent(below, opened)) return error;
        const Listing listing(opened.Get());
        if (!listing) return FromErrno(errno);
        std::map<std::u16string, Kind, LessNoCase> sorted;
        while (const dirent* entry = listing.Next()) {
            struct stat status;
            const std::u16string name = FromUtf8(entry->d_name);
            if (name == u"." || name == u".." || ToUtf8(name) != entry->d_name ||
                fstatat(opened.Get(), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            if (S_ISREG(status.st_mode)) sorted.try_emplace(name, Kind::File);
            if (S_ISDIR(status.st_mode)) sorted.try_emplace(name, Kind::Directory);
        }
        for (const auto& [name, kind] : sorted)
            entries.push_back({name, kind});
        return ERROR_SUCCESS;
    }

  private:
    DWORD OpenParent(const VolumePath& path, Descriptor& parent) const {
        constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        parent = Descriptor(openat(m_root.Get(), ".", kFlags));
        for (std::size_t i = 0; parent && i + 1 < path.size(); ++i) {
            const std::optional<std::string> name = Spelling(parent.Get(), path[i]);
            if (!name) return ERROR_PATH_NOT_FOUND;
            struct stat status;
            if (fstatat(parent.Get(), name->c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                S_ISLNK(status.st_mode))
                return ERROR_ACCESS_DENIED;
            parent = Descriptor(openat(parent.Get(), name->c_str(), kFlags));
        }
        if (parent) return ERROR_SUCCESS;
        return errno == ENOENT ? DWORD{ERROR_PATH_NOT_FOUND} : FromErrno(errno);
    }

    Descriptor m_root;
};

}  // namespace

std::unique_ptr<Volume> MakeFolderVolume(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    Descriptor root(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!root) return nullptr;
    return std::make_unique<FolderVolume>(std::move(root));
}

}  // namespace platform
