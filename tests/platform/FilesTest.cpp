// Drive C, in memory and in a folder: what names reach.

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

#include <windows.h>
#include <shlwapi.h>

#include "Drive.h"
#include "FactsMachine.h"
#include "Seeds.h"
#include "Text.h"

using namespace platform;
namespace fs = std::filesystem;

namespace {

// A folder that goes with the test.
struct Sandbox {
    Sandbox() {
        std::string name = (fs::temp_directory_path() / "drive-XXXXXX").string();
        root = mkdtemp(name.data());
    }
    ~Sandbox() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    fs::path root;
};

// The error of opening; 0 when it opened. A file opened for writing is written to.
long TryOpen(const std::u16string& path, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileW(path.c_str(), access, 0, nullptr, disposition, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    DWORD written = 0;
    EXPECT_EQ(WriteFile(file, "written", 7, &written, nullptr), access == GENERIC_WRITE);
    CloseHandle(file);
    return 0;
}

// The drive in both of its forms.
class DriveForms : public testing::TestWithParam<bool> {
  protected:
    DriveForms() { EXPECT_TRUE(!GetParam() || Drive().Mount(sandbox.root / "a" / "drive")); }
    platform::Drive& Drive() { return machine.machine.Get<platform::Drive>(); }

    Sandbox sandbox;
    FactsMachine machine;
};

INSTANTIATE_TEST_SUITE_P(, DriveForms, testing::Bool(),
                         [](const auto& form) { return form.param ? "Folder" : "Memory"; });

TEST_P(DriveForms, NamesReachWhatTheyMean) {
    ASSERT_TRUE(Drive().WriteWholeFile(u"C:\\Dir\\File.txt", "x"));
    const struct {
        std::u16string path;
        long opened;  // error of OPEN_ALWAYS
    } kCases[] = {
        {u"c:/DIR//fILE.TXT", 0},
        {u"C:\\Dir\\File.txt. .", 0},
        {u"C:\\..\\..\\Dir\\x\\..\\File.txt", 0},
        {u"", ERROR_PATH_NOT_FOUND},
        {u"D:\\Dir\\File.txt", ERROR_PATH_NOT_FOUND},
        {u"C:\\None\\File.txt", ERROR_PATH_NOT_FOUND},
        {u"\\\\.\\{11111111-2222-3333-4444-555555555555}", ERROR_FILE_NOT_FOUND},
        {u"C:\\Dir", ERROR_ACCESS_DENIED},
        {u"C:\\Dir\\File.txt:stream", ERROR_INVALID_NAME},
        {u"C:\\Dir\\com1 .log", ERROR_INVALID_NAME},
    };
    for (const auto& test : kCases)
        EXPECT_EQ(TryOpen(test.path, GENERIC_READ, OPEN_ALWAYS), test.opened) << ToUtf8(test.path);
    EXPECT_TRUE(PathFileExistsW(u"c:\\windows\\SYSTEM32"));
    EXPECT_FALSE(PathFileExistsW(u"C:\\Dir\\none"));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_TRUE(CreateDirectoryW(u"C:\\New\\", nullptr));
    EXPECT_FALSE(CreateDirectoryW(u"C:\\NEW", nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
}

TEST_P(DriveForms, DirectoriesAreSearchedAndFilesDeleted) {
    for (const char16_t* name : {u"b.inf", u"A.INF", u"ab.inf.txt", u"sub.inf\\x", u"C"})
        ASSERT_TRUE(Drive().WriteWholeFile(u"C:\\Dir\\" + std::u16string(name), "x"));
    const struct {
        std::u16string pattern;
        std::string found;  // "name " each, a directory in brackets; else the error
    } kCases[] = {
        {u"C:\\DIR\\*.inf", "A.INF b.inf [sub.inf] "},
        {u"C:\\Dir\\*.*", "[.] [..] A.INF ab.inf.txt b.inf C [sub.inf] "},
        {u"C:\\Dir\\?b*n*t", "ab.inf.txt "},
        {u"Dir\\b.inf", "b.inf "},
        {u"C:\\D*", "[Dir] "},
        {u"C:\\Dir\\b", "2"},
        {u"C:\\None\\*", "3"},
        {u"", "2"},
    };
    for (const auto& test : kCases) {
        WIN32_FIND_DATAW data;
        std::string found;
        const HANDLE search = FindFirstFileW(test.pattern.c_str(), &data);
        for (BOOL more = search != INVALID_HANDLE_VALUE; more;
             more = FindNextFileW(search, &data)) {
            const std::string name = ToUtf8(data.cFileName);
            const bool isFile = data.dwFileAttributes == FILE_ATTRIBUTE_NORMAL;
            found += isFile ? name + " " : "[" + name + "] ";
        }
        if (found.empty()) found = std::to_string(GetLastError());
        EXPECT_EQ(search != INVALID_HANDLE_VALUE, FindClose(search));
        EXPECT_EQ(found, test.found) << ToUtf8(test.pattern);
    }
    const HANDLE file = CreateFileW(u"C:\\Dir\\b.inf", GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    for (const DWORD error :
         {DWORD{ERROR_SHARING_VIOLATION}, DWORD{0}, DWORD{ERROR_FILE_NOT_FOUND}}) {
        EXPECT_EQ(DeleteFileW(u"C:\\Dir\\B.inf") ? 0 : GetLastError(), error);
        CloseHandle(file);
    }
    EXPECT_FALSE(DeleteFileW(u"C:\\Dir\\sub.inf"));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
}

// A folder to be drive C:, beside a file and links that lead there.
struct MountedFolder : Sandbox {
    MountedFolder() {
        fs::create_directories(drive / "dir");
        std::ofstream(root / "outside") << "secret";
        fs::create_symlink(root, drive / "way-out");
        EXPECT_TRUE(machine.machine.Get<Drive>().Mount(drive));
    }
    void ExpectNothingOutside() const {
        EXPECT_EQ(std::distance(fs::directory_iterator(root), {}), 2);
        EXPECT_EQ(fs::file_size(root / "outside"), 6u);
    }
    const fs::path drive = root / "drive";
    FactsMachine machine;
};

TEST(Folder, KeepsSpellingsAndReachesNothingOutside) {
    MountedFolder folder;
    fs::create_symlink(folder.root / "outside", folder.drive / "link.txt");
    fs::create_symlink(folder.drive / "dir", folder.drive / "inside");
    ASSERT_EQ(mkfifo((folder.drive / "pipe").c_str(), 0666), 0);
    EXPECT_EQ(TryOpen(u"c:\\DIR\\New.LOG", GENERIC_WRITE, CREATE_NEW), 0);
    EXPECT_TRUE(fs::exists(folder.drive / "dir" / "New.LOG"));
    EXPECT_TRUE(fs::is_directory(folder.drive / "Windows" / "System32"));
    for (const char16_t* path : {u"C:\\LINK.TXT", u"C:\\way-out\\outside", u"C:\\way-out\\new.txt",
                                 u"C:\\inside\\New.LOG", u"C:\\pipe"}) {
        SCOPED_TRACE(ToUtf8(path));
        EXPECT_EQ(TryOpen(path, GENERIC_READ, OPEN_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_EQ(TryOpen(path, GENERIC_WRITE, CREATE_ALWAYS), ERROR_ACCESS_DENIED);
        EXPECT_FALSE(DeleteFileW(path));
    }
    EXPECT_FALSE(CreateDirectoryW(u"C:\\way-out\\dir", nullptr));
    folder.ExpectNothingOutside();
}

TEST(Folder, NoPathLeavesIt) {
    constexpr const char16_t* kPieces[] = {
        u"\\",  u"/", u"..", u".", u"C:",  u"outside", u"D:",     u"\\\\",  u"way-out",
        u"dir", u" ", u"?",  u":", u"...", u"\\..",    u"\u0130", u"\\.\\", u"etc"};
    for (const std::uint64_t seed : Seeds(8)) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random(seed);
        MountedFolder folder;
        for (int i = 0; i < 500; ++i) {
            std::u16string path;
            for (std::uint64_t left = 1 + random() % 8; left != 0; --left)
                path += kPieces[random() % std::size(kPieces)];
            CreateDirectoryW(path.c_str(), nullptr);
            TryOpen(path, GENERIC_WRITE, CREATE_ALWAYS);
            DeleteFileW(path.c_str());
        }
        folder.ExpectNothingOutside();
    }
}

}  // namespace
