// Drive C: in memory and in a folder: what names reach, how files open, and who shares them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

#include <windows.h>
#include <shlwapi.h>

#include "Call.h"
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
        for (const auto& entry : fs::recursive_directory_iterator(root, ignored))
            if (entry.is_directory() && !entry.is_symlink())
                fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        fs::remove_all(root, ignored);
    }
    fs::path root;
};

DWORD LastOf(BOOL result) {
    return result ? DWORD{ERROR_SUCCESS} : Call::GetLast();
}

// The error of opening, after which the file is closed; 0 when it opened.
DWORD TryOpen(const std::u16string& path, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileW(path.c_str(), access, 0, nullptr, disposition, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Call::GetLast();
    CloseHandle(file);
    return ERROR_SUCCESS;
}

HANDLE Open(const std::u16string& path, DWORD access, DWORD share, DWORD disposition) {
    return CreateFileW(path.c_str(), access, share, nullptr, disposition, 0, nullptr);
}

bool Put(HANDLE file, const std::string& text) {
    DWORD written = 0;
    return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
           written == text.size();
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
        DWORD opened;  // error of OPEN_ALWAYS
    } kCases[] = {
        {u"C:\\Dir\\File.txt", 0},
        {u"c:/DIR//fILE.TXT", 0},
        {u"\\Dir\\.\\File.txt", 0},
        {u"Dir\\File.txt", 0},
        {u"C:\\Dir\\File.txt. .", 0},
        {u"C:\\..\\..\\Dir\\x\\..\\File.txt", 0},
        {u"C:\\Windows\\System32\\new", 0},
        {u"C:\\Dir\\\u00C4\u4E2D", 0},
        {u"", ERROR_PATH_NOT_FOUND},
        {u"D:\\Dir\\File.txt", ERROR_PATH_NOT_FOUND},
        {u"C:\\None\\File.txt", ERROR_PATH_NOT_FOUND},
        {u"C:\\Dir\\File.txt\\below", ERROR_PATH_NOT_FOUND},
        {u"\\\\server\\share\\File.txt", ERROR_PATH_NOT_FOUND},
        {u"\\\\?\\C:\\Dir\\File.txt", ERROR_PATH_NOT_FOUND},
        {u"C:\\" + std::u16string(300, u'x'), ERROR_PATH_NOT_FOUND},
        {u"\\\\.\\{11111111-2222-3333-4444-555555555555}", ERROR_FILE_NOT_FOUND},
        {u"C:\\Dir", ERROR_ACCESS_DENIED},
        {u"C:\\", ERROR_ACCESS_DENIED},
        {u"C:\\Dir\\", ERROR_ACCESS_DENIED},
        {u"C:\\Dir\\File.txt\\", ERROR_INVALID_NAME},
        {u"C:\\Dir\\None\\", ERROR_INVALID_NAME},
        {u"C:\\Dir\\File.txt:stream", ERROR_INVALID_NAME},
        {u"C:\\Dir\\a?b", ERROR_INVALID_NAME},
        {u"C:\\Dir\\a\tb", ERROR_INVALID_NAME},
        {u"C:\\Dir\\...", ERROR_INVALID_NAME},
        {u"C:\\Dir\\NUL", ERROR_INVALID_NAME},
        {u"C:\\Dir\\com1 .log", ERROR_INVALID_NAME},
        {u"C:\\Dir\\" + std::u16string(1, char16_t{0xD800}), ERROR_INVALID_NAME},
    };
    for (const auto& test : kCases)
        EXPECT_EQ(TryOpen(test.path, GENERIC_READ, OPEN_ALWAYS), test.opened) << ToUtf8(test.path);
    EXPECT_EQ(LastOf(PathFileExistsW(u"c:\\windows\\SYSTEM32")), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(LastOf(PathFileExistsW(u"C:\\Dir\\none")), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(GetFileAttributesW(u"C:\\Dir\\"), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_EQ(GetFileAttributesW(u"C:\\Dir\\file.TXT"), DWORD{FILE_ATTRIBUTE_NORMAL});
}

TEST_P(DriveForms, DirectoriesAreMadeOneByOne) {
    const struct {
        const char16_t* path;
        DWORD error;
    } kCases[] = {
        {u"C:\\Windows\\System32\\LogFiles", 0},
        {u"C:\\windows\\system32\\LOGFILES\\", ERROR_ALREADY_EXISTS},
        {u"C:\\Windows\\System32", ERROR_ALREADY_EXISTS},
        {u"C:\\One\\Two", ERROR_PATH_NOT_FOUND},
        {u"C:\\a*", ERROR_INVALID_NAME},
        {u"E:\\One", ERROR_PATH_NOT_FOUND},
        {u"C:\\", ERROR_ACCESS_DENIED},
    };
    for (const auto& test : kCases)
        EXPECT_EQ(LastOf(CreateDirectoryW(test.path, nullptr)), test.error) << ToUtf8(test.path);
}

TEST_P(DriveForms, DispositionsDoWhatTheySay) {
    constexpr DWORD kUntouched = 4711;
    constexpr const char* kNone = nullptr;
    const struct {
        DWORD disposition;
        bool exists;
        DWORD last;
        const char* content;  // afterwards
    } kCases[] = {
        {CREATE_NEW, false, kUntouched, ""},
        {CREATE_NEW, true, ERROR_FILE_EXISTS, "old"},
        {CREATE_ALWAYS, false, ERROR_SUCCESS, ""},
        {CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, ""},
        {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, kNone},
        {OPEN_EXISTING, true, kUntouched, "old"},
        {OPEN_ALWAYS, false, ERROR_SUCCESS, ""},
        {OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, "old"},
        {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, kNone},
        {TRUNCATE_EXISTING, true, kUntouched, ""},
        {6, true, ERROR_INVALID_PARAMETER, "old"},
    };
    for (std::size_t i = 0; i < std::size(kCases); ++i) {
        SCOPED_TRACE(i);
        const std::u16string path = u"C:\\file" + FromUtf8(std::to_string(i));
        ASSERT_TRUE(!kCases[i].exists || Drive().WriteWholeFile(path, "old"));
        Call::SetLast(kUntouched);
        const HANDLE file = Open(path, GENERIC_WRITE, 0, kCases[i].disposition);
        EXPECT_EQ(Call::GetLast(), kCases[i].last);
        if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
        const auto content = Drive().ReadWholeFile(path);
        ASSERT_EQ(content.has_value(), kCases[i].content != kNone);
        EXPECT_EQ(content.value_or(""), kCases[i].content ? kCases[i].content : "");
    }
    EXPECT_EQ(TryOpen(u"C:\\file1", GENERIC_READ, TRUNCATE_EXISTING),
              DWORD{ERROR_INVALID_PARAMETER});
}

TEST_P(DriveForms, OpenFilesShareOnlyWhatBothAllow) {
    constexpr DWORD kReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const struct {
        DWORD firstAccess, firstShare, access, share, disposition, error;
    } kCases[] = {
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, 0},
        {GENERIC_READ, 0, GENERIC_READ, kReadWrite, OPEN_EXISTING, ERROR_SHARING_VIOLATION},
        {GENERIC_READ, kReadWrite, GENERIC_READ, 0, OPEN_EXISTING, ERROR_SHARING_VIOLATION},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, kReadWrite, OPEN_EXISTING,
         ERROR_SHARING_VIOLATION},
        {FILE_APPEND_DATA, kReadWrite, FILE_APPEND_DATA, kReadWrite, OPEN_ALWAYS, 0},
        {FILE_APPEND_DATA, kReadWrite, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING,
         ERROR_SHARING_VIOLATION},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, kReadWrite, CREATE_ALWAYS,
         ERROR_SHARING_VIOLATION},
        {0, 0, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING, 0},
        {GENERIC_ALL, kReadWrite, GENERIC_READ, kReadWrite, OPEN_EXISTING, ERROR_SHARING_VIOLATION},
    };
    for (std::size_t i = 0; i < std::size(kCases); ++i) {
        SCOPED_TRACE(i);
        const auto& test = kCases[i];
        ASSERT_TRUE(Drive().WriteWholeFile(u"C:\\shared", "kept"));
        const HANDLE first = Open(u"C:\\shared", test.firstAccess, test.firstShare, OPEN_EXISTING);
        ASSERT_NE(first, INVALID_HANDLE_VALUE);
        const HANDLE second = Open(u"c:\\SHARED", test.access, test.share, test.disposition);
        EXPECT_EQ(second == INVALID_HANDLE_VALUE ? Call::GetLast() : 0, test.error);
        if (second != INVALID_HANDLE_VALUE) CloseHandle(second);
        CloseHandle(first);
        EXPECT_EQ(TryOpen(u"C:\\shared", GENERIC_ALL, OPEN_EXISTING), 0u) << "all are closed";
        EXPECT_EQ(Drive().ReadWholeFile(u"C:\\shared"), "kept");
    }
}

TEST_P(DriveForms, BytesGoWhereTheHandleStands) {
    const HANDLE file = Open(u"C:\\bytes", GENERIC_READ | GENERIC_WRITE, 3, CREATE_NEW);
    EXPECT_TRUE(Put(file, "0123456789"));
    LARGE_INTEGER position = {};
    LARGE_INTEGER distance = {};
    distance.QuadPart = -4;
    EXPECT_TRUE(SetFilePointerEx(file, distance, &position, FILE_END));
    EXPECT_EQ(position.QuadPart, 6);
    EXPECT_TRUE(Put(file, "x"));
    char buffer[16] = {};
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ(std::string(buffer, read), "789");
    EXPECT_TRUE(ReadFile(file, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ(read, 0u) << "the end of the file is no failure";

    const HANDLE log = Open(u"C:\\bytes", FILE_APPEND_DATA, 3, OPEN_ALWAYS);
    EXPECT_TRUE(Put(log, "+1"));
    EXPECT_TRUE(Put(file, "+2"));  // stands where the file ended before
    EXPECT_TRUE(Put(log, "+3"));
    EXPECT_EQ(Drive().ReadWholeFile(u"C:\\bytes"), "012345x789+2+3");
    LARGE_INTEGER size = {};
    EXPECT_TRUE(GetFileSizeEx(log, &size));
    EXPECT_EQ(size.QuadPart, 14);
    EXPECT_FALSE(ReadFile(log, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_ACCESS_DENIED});

    distance.QuadPart = -1;
    EXPECT_FALSE(SetFilePointerEx(file, distance, nullptr, FILE_BEGIN));
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_NEGATIVE_SEEK});
    distance.QuadPart = 0x7FFFFFFFFFFFFFFF;
    EXPECT_FALSE(SetFilePointerEx(file, distance, nullptr, FILE_END));
    CloseHandle(log);
    CloseHandle(file);
    EXPECT_FALSE(Put(file, "closed"));
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_INVALID_HANDLE});
}

TEST(Folder, KeepsSpellingsAndReachesNothingOutside) {
    Sandbox sandbox;
    const fs::path drive = sandbox.root / "drive";
    fs::create_directories(drive / "LOGS");
    std::ofstream(sandbox.root / "outside.txt") << "secret";
    fs::create_symlink(sandbox.root, drive / "way-out");
    fs::create_symlink(sandbox.root / "outside.txt", drive / "link.txt");
    fs::create_symlink(drive / "LOGS", drive / "inside");
    ASSERT_EQ(mkfifo((drive / "pipe").c_str(), 0666), 0);
    FactsMachine machine;
    ASSERT_TRUE(machine.machine.Get<Drive>().Mount(drive));

    EXPECT_TRUE(machine.machine.Get<Drive>().WriteWholeFile(u"c:\\logs\\New.LOG", "x"));
    EXPECT_TRUE(fs::exists(drive / "LOGS" / "New.LOG"));
    EXPECT_TRUE(fs::is_directory(drive / "Windows" / "System32"));
    for (const char16_t* path : {u"C:\\link.txt", u"C:\\LINK.TXT", u"C:\\way-out\\outside.txt",
                                 u"C:\\way-out\\new.txt", u"C:\\inside\\New.LOG", u"C:\\pipe"}) {
        EXPECT_EQ(TryOpen(path, GENERIC_READ, OPEN_ALWAYS), DWORD{ERROR_ACCESS_DENIED})
            << ToUtf8(path);
        EXPECT_EQ(TryOpen(path, GENERIC_WRITE, CREATE_ALWAYS), DWORD{ERROR_ACCESS_DENIED})
            << ToUtf8(path);
    }
    EXPECT_FALSE(CreateDirectoryW(u"C:\\way-out\\dir", nullptr));
    EXPECT_FALSE(fs::exists(sandbox.root / "new.txt"));
    EXPECT_FALSE(fs::exists(sandbox.root / "dir"));
    EXPECT_EQ(fs::file_size(sandbox.root / "outside.txt"), 6u);
}

TEST(Folder, ThatCannotBeWrittenDeniesAccess) {
    Sandbox sandbox;
    const fs::path drive = sandbox.root / "drive";
    fs::create_directories(drive);
    std::ofstream(drive / "old.txt") << "old";
    const auto seal = [](const fs::path& path) {
        constexpr fs::perms kWrite =
            fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
        fs::permissions(path, kWrite, fs::perm_options::remove);
    };
    seal(drive / "old.txt");
    seal(drive);
    FactsMachine machine;
    ASSERT_TRUE(machine.machine.Get<Drive>().Mount(drive));
    EXPECT_TRUE(PathFileExistsW(u"C:\\Windows\\System32")) << "it always exists";
    EXPECT_EQ(LastOf(CreateDirectoryW(u"C:\\Windows\\System32\\LogFiles", nullptr)),
              DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(TryOpen(u"C:\\new.txt", GENERIC_WRITE, CREATE_ALWAYS), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(TryOpen(u"C:\\old.txt", GENERIC_WRITE, OPEN_ALWAYS), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(TryOpen(u"C:\\old.txt", GENERIC_READ, OPEN_EXISTING), DWORD{ERROR_SUCCESS});
}

TEST(Folder, ThatIsAFileCannotBeMounted) {
    Sandbox sandbox;
    std::ofstream(sandbox.root / "file") << "x";
    FactsMachine machine;
    EXPECT_FALSE(machine.machine.Get<Drive>().Mount(sandbox.root / "file"));
    EXPECT_TRUE(PathFileExistsW(u"C:\\Windows\\System32")) << "the drive stays as it was";
}

TEST(Folder, NoPathLeavesIt) {
    constexpr const char16_t* kPieces[] = {
        u"\\",  u"/", u"..", u".", u"C:",  u"outside", u"D:",     u"\\\\",  u"way-out",
        u"dir", u" ", u"?",  u":", u"...", u"\\..",    u"\u0130", u"\\.\\", u"etc"};
    for (const std::uint64_t seed : Seeds(8)) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random(seed);
        Sandbox sandbox;
        const fs::path drive = sandbox.root / "drive";
        fs::create_directories(drive / "dir");
        fs::create_symlink(sandbox.root, drive / "way-out");
        std::ofstream(sandbox.root / "outside") << "kept";
        FactsMachine machine;
        ASSERT_TRUE(machine.machine.Get<Drive>().Mount(drive));
        for (int i = 0; i < 500; ++i) {
            std::u16string path;
            for (std::uint64_t left = 1 + random() % 8; left != 0; --left)
                path += kPieces[random() % std::size(kPieces)];
            CreateDirectoryW(path.c_str(), nullptr);
            const HANDLE file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
            if (file == INVALID_HANDLE_VALUE) continue;
            EXPECT_TRUE(Put(file, "written"));
            CloseHandle(file);
        }
        const auto entries = std::distance(fs::directory_iterator(sandbox.root), {});
        EXPECT_EQ(entries, 2);
        EXPECT_EQ(fs::file_size(sandbox.root / "outside"), 4u);
    }
}

TEST(Streams, CollectWhatTheProcessWrites) {
    FactsMachine machine;
    EXPECT_TRUE(Put(GetStdHandle(STD_OUTPUT_HANDLE), "out"));
    EXPECT_TRUE(Put(GetStdHandle(STD_ERROR_HANDLE), "err"));
    EXPECT_TRUE(Put(GetStdHandle(STD_OUTPUT_HANDLE), "put"));
    EXPECT_EQ(machine.machine.Get<Streams>().output, "output");
    EXPECT_EQ(machine.machine.Get<Streams>().error, "err");
    EXPECT_EQ(GetStdHandle(7), INVALID_HANDLE_VALUE);
}

TEST(Files, AFaultFailsTheCallsOfOneFileOnly) {
    FactsMachine machine;
    machine.machine.faults.FailCalls("WriteFile", u"C:\\a", ERROR_DISK_FULL, 2);
    const HANDLE a = Open(u"C:\\a", GENERIC_WRITE, 0, CREATE_NEW);
    const HANDLE b = Open(u"C:\\b", GENERIC_WRITE, 0, CREATE_NEW);
    EXPECT_TRUE(Put(a, "first"));
    EXPECT_TRUE(Put(b, "first"));
    EXPECT_FALSE(Put(a, "second"));
    EXPECT_EQ(Call::GetLast(), DWORD{ERROR_DISK_FULL});
    EXPECT_TRUE(Put(b, "second"));
    CloseHandle(a);
    CloseHandle(b);
    EXPECT_EQ(machine.machine.Get<Drive>().ReadWholeFile(u"C:\\a"), "first");
}

}  // namespace
