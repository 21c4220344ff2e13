// The functions that put INF files into the system's store and take them out. They go over the file
// API, so that they also serve a real Windows.

#include <setupapi.h>

#include "Call.h"
#include "Facts.h"
#include "InfFile.h"

namespace platform {
namespace {

using StoreText = InfFile::Text;
using StoreView = InfFile::TextView;

BOOL FinishStore(DWORD error) {
    Call::SetLast(error);
    return error == ERROR_SUCCESS;
}

// The names that the store gives: oem and a number.
bool IsStoreName(StoreView name) {
    constexpr StoreView kStart = TEXT("oem");
    constexpr StoreView kEnd = TEXT(".inf");
    if (name.size() <= kStart.size() + kEnd.size()) return false;
    const StoreView number = name.substr(kStart.size(), name.size() - kStart.size() - kEnd.size());
    return EqualNoCase(name.substr(0, kStart.size()), kStart) &&
           EqualNoCase(name.substr(name.size() - kEnd.size()), kEnd) &&
           number.find_first_not_of(TEXT("0123456789")) == number.npos;
}

// The path of the stored file with that content; empty when there is none.
StoreText FindStored(const std::string& bytes) {
    for (const StoreText& name : StoredInfNames()) {
        std::string stored;
        StoreText path = InfStorePath() + name;
        if (IsStoreName(name) && ReadFileBytes(path, stored) == ERROR_SUCCESS && stored == bytes)
            return path;
    }
    return {};
}

// Stores the content under the lowest free number.
DWORD StoreAnew(const std::string& bytes, StoreText& path) {
    const QuietScope quiet;
    const StoreText store = InfStorePath();
    CreateDirectoryW(store.substr(0, store.size() - 1).c_str(), nullptr);
    HANDLE file = INVALID_HANDLE_VALUE;
    DWORD error = ERROR_FILE_EXISTS;
    for (unsigned number = 0; error == ERROR_FILE_EXISTS; ++number) {
        path = store + TEXT("oem") + NumberText(number) + TEXT(".inf");
        file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
        error = file == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    }
    if (error != ERROR_SUCCESS) return error;
    DWORD written = 0;
    if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        error = GetLastError();
    CloseHandle(file);
    if (error != ERROR_SUCCESS) DeleteFileW(path.c_str());
    return error;
}

// Finds the copy of an INF file or, when it may, makes one.
DWORD CopyToStore(const StoreText& source, bool mayCopy, StoreText& path) {
    UINT errorLine = 0;
    InfFile file;
    if (const DWORD error = file.Read(source, errorLine)) return error;
    std::string bytes;
    if (const DWORD error = ReadFileBytes(source, bytes)) return error;
    path = FindStored(bytes);
    if (!path.empty()) return ERROR_SUCCESS;
    return mayCopy ? StoreAnew(bytes, path) : DWORD{ERROR_FILE_NOT_FOUND};
}

}  // namespace
}  // namespace platform

using namespace platform;

// Of the styles only SP_COPY_REPLACEONLY is known.
BOOL WINAPI SetupCopyOEMInfW(PCWSTR source, PCWSTR, DWORD, DWORD copyStyle, PWSTR destination,
                             DWORD capacity, PDWORD required, PWSTR* component) {
    Call call("SetupCopyOEMInfW", source, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    if (!source || (copyStyle & ~DWORD{SP_COPY_REPLACEONLY}) != 0)
        return FinishStore(ERROR_INVALID_PARAMETER);
    StoreText path;
    if (const DWORD error = CopyToStore(source, copyStyle == 0, path)) return FinishStore(error);
    if (required) *required = static_cast<DWORD>(path.size() + 1);
    if (!destination) return FinishStore(ERROR_SUCCESS);
    if (capacity <= path.size()) return FinishStore(ERROR_INSUFFICIENT_BUFFER);
    path.copy(destination, path.size());
    destination[path.size()] = TEXT('\0');
    if (component) *component = destination + InfStorePath().size();
    return FinishStore(ERROR_SUCCESS);
}

// No device keeps its file from being deleted, whether it is forced or not.
BOOL WINAPI SetupUninstallOEMInfW(PCWSTR fileName, DWORD, PVOID reserved) {
    Call call("SetupUninstallOEMInfW", fileName, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(FALSE);
    if (!fileName || reserved) return FinishStore(ERROR_INVALID_PARAMETER);
    if (!IsStoreName(fileName)) return FinishStore(ERROR_NOT_AN_INSTALLED_OEM_INF);
    if (DeleteFileW((InfStorePath() + fileName).c_str())) return FinishStore(ERROR_SUCCESS);
    // A store that isn't there yet has no file, either.
    const DWORD error = GetLastError();
    return FinishStore(error == ERROR_PATH_NOT_FOUND ? DWORD{ERROR_FILE_NOT_FOUND} : error);
}
