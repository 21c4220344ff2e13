#include "FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "../Transcript.h"

namespace sheet {

namespace {

namespace fs = std::filesystem;

void Check(bool succeeded) {
    if (!succeeded) throw std::system_error(errno, std::generic_category());
}

class OpenFile {
  public:
    OpenFile() = default;
    OpenFile(const fs::path& path, int flags) { Open(path, flags); }
    ~OpenFile() {
        if (m_file >= 0) close(m_file);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    // Only while none is open.
    bool Open(const fs::path& path, int flags) {
        constexpr mode_t kUsualMode = 0666;  // the process's mask takes from it
        m_file = open(path.c_str(), flags | O_CLOEXEC, kUsualMode);
        return m_file >= 0;
    }
    bool IsOpen() const { return m_file >= 0; }
    int Get() const { return m_file; }

    void Write(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = write(m_file, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            Check(count > 0);
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

  private:
    int m_file = -1;
};

// A file on its way to its place. It goes away unless it gets there. Where the system allows that,
// it has no name before, so that a kill leaves nothing behind.
class NewFile {
  public:
    explicit NewFile(const fs::path& folder) : m_folder(folder) {
        const bool canNameLater = access("/proc/self/fd", X_OK) == 0;
        if (canNameLater && m_file.Open(folder, O_TMPFILE | O_WRONLY)) return;
        MakeName([&] { return m_file.Open(m_name, O_CREAT | O_EXCL | O_WRONLY); });
    }
    ~NewFile() {
        if (m_hasName) unlink(m_name.c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void TakeOwnerAndMode(const struct stat& other) const {
        // Only some may give a file away; the mode counts.
        (void)!fchown(m_file.Get(), other.st_uid, other.st_gid);
        constexpr mode_t kModeBits = 07777;
        Check(fchmod(m_file.Get(), other.st_mode & kModeBits) == 0);
    }
    void Write(std::string_view bytes) const {
        m_file.Write(bytes);
        Check(fsync(m_file.Get()) == 0);
    }
    void MoveTo(const fs::path& target) {
        const std::string self = "/proc/self/fd/" + std::to_string(m_file.Get());
        if (!m_hasName) {
            MakeName([&] {
                return linkat(AT_FDCWD, self.c_str(), AT_FDCWD, m_name.c_str(),
                              AT_SYMLINK_FOLLOW) == 0;
            });
        }
        Check(rename(m_name.c_str(), target.c_str()) == 0);
        m_hasName = false;
        // The rename itself has succeeded, whatever becomes of this.
        const OpenFile folder(m_folder, O_RDONLY | O_DIRECTORY);
        fsync(folder.Get());
    }

  private:
    // Tries names until one is free.
    template <class Make>
    void MakeName(const Make& make) {
        for (int i = 0; !m_hasName; ++i) {
            m_name = m_folder / (".sheet-" + std::to_string(getpid()) + "-" + std::to_string(i));
            m_hasName = make();
            Check(m_hasName || errno == EEXIST);
        }
    }

    fs::path m_folder;
    OpenFile m_file;
    fs::path m_name;
    bool m_hasName = false;
};

// Where a path leads that may be a symbolic link, perhaps to a file that isn't there yet.
fs::path FollowLinks(fs::path path) {
    constexpr int kMostLinks = 40;  // the system's limit, too
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(path)); ++i)
        path = path.parent_path() / fs::read_symlink(path);
    return path;
}

void Replace(const fs::path& path, std::string_view bytes) {
    struct stat old = {};
    const bool exists = stat(path.c_str(), &old) == 0;
    Check(exists || errno == ENOENT);
    if (exists && !S_ISREG(old.st_mode)) {
        const OpenFile file(path, O_WRONLY);
        Check(file.IsOpen());
        return file.Write(bytes);
    }
    // A rename would also replace a file that is protected.
    Check(!exists || faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0);
    const fs::path target = FollowLinks(path);
    NewFile file(target.has_parent_path() ? target.parent_path() : fs::path("."));
    if (exists) file.TakeOwnerAndMode(old);
    file.Write(bytes);
    file.MoveTo(target);
}

}  // namespace

void ReplaceFileContent(const std::string& path, std::string_view bytes) {
    // A limit on the size of files is to fail the write instead of ending the process.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        Replace(path, bytes);
    } catch (const std::system_error& error) {
        throw Refusal{path + ": can't be written: " + error.code().message()};
    }
}

}  // namespace sheet
