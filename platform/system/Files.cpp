#include "Drive.h"

#include <limits>
#include <utility>

#include <fileapi.h>
#include <processenv.h>
#include <shlwapi.h>
#include <winerror.h>

#include "Call.h"
#include "Miniports.h"

using namespace platform;

namespace {

// `\\.\`, which the name of a device follows.
constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";

bool IsDevicePath(std::u16string_view path) {
    return path.starts_with(kDevicePrefix);
}

// The devices of this machine are its network adapters.
HANDLE OpenDevice(const Call& call, std::u16string_view path) {
    auto device = OpenMiniport(path);
    if (device) return call.machine.Get<Handles>().Open(std::move(device), call.Name());
    Call::SetLast(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
}

// The text that tells a file's calls from those of other files.
std::u16string PathOf(HANDLE file) {
    const auto open = Machine::Current().Get<Handles>().Find<OpenFile>(file);
    return open ? open->path : std::u16string();
}

// Sets the last error and gives back whether it is none.
BOOL Finish(DWORD error) {
    if (error != ERROR_SUCCESS) Call::SetLast(error);
    return error == ERROR_SUCCESS;
}

}  // namespace

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES,
                          DWORD disposition, DWORD, HANDLE) {
    Call call("CreateFileW", path, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    if (path && IsDevicePath(path)) return OpenDevice(call, path);
    std::shared_ptr<OpenFile> file;
    bool existed = false;
    if (!Finish(call.machine.Get<Drive>().Open(path ? path : u"", access, shareMode, disposition,
                                               file, existed)))
        return INVALID_HANDLE_VALUE;
    if (disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS)
        Call::SetLast(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return call.machine.Get<Handles>().Open(std::move(file), call.Name());
}

BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read,
                     LPOVERLAPPED overlapped) {
    Call call("ReadFile", PathOf(file).c_str());
    if (read) *read = 0;
    if (call.Failed()) return call.With(FALSE);
    if (!read || overlapped || (!buffer && size != 0)) return Finish(ERROR_INVALID_PARAMETER);
    const auto open = call.machine.Get<Handles>().Find<OpenFile>(file);
    if (!open) return Finish(ERROR_INVALID_HANDLE);
    if (!open->mayRead) return Finish(ERROR_ACCESS_DENIED);
    std::size_t got = 0;
    const DWORD error = open->content->Read(open->position, buffer, size, got);
    open->position += got;
    *read = static_cast<DWORD>(got);
    return Finish(error);
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD written,
                      LPOVERLAPPED overlapped) {
    Call call("WriteFile", PathOf(file).c_str(), ERROR_DISK_FULL);
    if (written) *written = 0;
    if (call.Failed()) return call.With(FALSE);
    if (!written || overlapped || (!data && size != 0)) return Finish(ERROR_INVALID_PARAMETER);
    if (std::string* const stream = call.machine.Get<Streams>().Find(file)) {
        stream->append(static_cast<const char*>(data), size);
        *written = size;
        return TRUE;
    }
    const auto open = call.machine.Get<Handles>().Find<OpenFile>(file);
    if (!open) return Finish(ERROR_INVALID_HANDLE);
    if (!open->mayWrite) return Finish(ERROR_ACCESS_DENIED);
    DWORD error = ERROR_SUCCESS;
    if (open->appends) error = open->content->Size(open->position);
    if (error == ERROR_SUCCESS) error = open->content->Write(open->position, data, size);
    if (error != ERROR_SUCCESS) return Finish(error);
    open->position += size;
    *written = size;
    return TRUE;
}

BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position,
                             DWORD method) {
    Call call("SetFilePointerEx", PathOf(file).c_str());
    if (call.Failed()) return call.With(FALSE);
    const auto open = call.machine.Get<Handles>().Find<OpenFile>(file);
    if (!open) return Finish(ERROR_INVALID_HANDLE);
    std::uint64_t start = 0;
    if (method == FILE_CURRENT) start = open->position;
    if (method == FILE_END)
        if (const DWORD error = open->content->Size(start)) return Finish(error);
    if (method > FILE_END) return Finish(ERROR_INVALID_PARAMETER);
    // Neither before the start of the file nor beyond what a LARGE_INTEGER holds.
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const auto from = static_cast<std::int64_t>(start);
    if (distance.QuadPart > kMost - from) return Finish(ERROR_INVALID_PARAMETER);
    if (from + distance.QuadPart < 0) return Finish(ERROR_NEGATIVE_SEEK);
    open->position = static_cast<std::uint64_t>(from + distance.QuadPart);
    if (position) position->QuadPart = from + distance.QuadPart;
    return TRUE;
}

BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size) {
    Call call("GetFileSizeEx", PathOf(file).c_str());
    if (call.Failed()) return call.With(FALSE);
    const auto open = call.machine.Get<Handles>().Find<OpenFile>(file);
    if (!open) return Finish(ERROR_INVALID_HANDLE);
    if (!size) return Finish(ERROR_INVALID_PARAMETER);
    std::uint64_t bytes = 0;
    if (!Finish(open->content->Size(bytes))) return FALSE;
    size->QuadPart = static_cast<LONGLONG>(bytes);
    return TRUE;
}

BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES) {
    Call call("CreateDirectoryW", path, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    return Finish(call.machine.Get<Drive>().MakeDirectory(path ? path : u""));
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) {
    Call call("GetFileAttributesW", path, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(INVALID_FILE_ATTRIBUTES);
    Volume::Kind kind{};
    if (!Finish(call.machine.Get<Drive>().Look(path ? path : u"", kind)))
        return INVALID_FILE_ATTRIBUTES;
    return kind == Volume::Kind::Directory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

BOOL WINAPI DeleteFileW(LPCWSTR path) {
    Call call("DeleteFileW", path, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    return Finish(call.machine.Get<Drive>().DeleteFile(path ? path : u""));
}

BOOL WINAPI PathFileExistsW(LPCWSTR path) {
    Call call("PathFileExistsW", path, ERROR_FILE_NOT_FOUND);
    if (call.Failed()) return call.With(FALSE);
    Volume::Kind kind{};
    return Finish(call.machine.Get<Drive>().Look(path ? path : u"", kind));
}

HANDLE WINAPI GetStdHandle(DWORD stream) {
    Call call("GetStdHandle", nullptr, ERROR_INVALID_HANDLE);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    switch (stream) {
        case STD_INPUT_HANDLE:
            return nullptr;  // the process has none
        case STD_OUTPUT_HANDLE:
            return Streams::OutputHandle();
        case STD_ERROR_HANDLE:
            return Streams::ErrorHandle();
        default:
            Call::SetLast(ERROR_INVALID_HANDLE);
            return INVALID_HANDLE_VALUE;
    }
}
