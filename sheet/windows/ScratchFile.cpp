#include "ScratchFile.h"

#include "../Transcript.h"

namespace sheet {

namespace {

[[noreturn]] void Refuse(const char* what) {
    throw Refusal{std::string(what) + ": error " + std::to_string(GetLastError())};
}

}  // namespace

ScratchFile::ScratchFile() {
    WCHAR folder[MAX_PATH + 1] = {};
    WCHAR path[MAX_PATH] = {};
    if (GetTempPathW(ARRAYSIZE(folder), folder) == 0 ||
        GetTempFileNameW(folder, TEXT("sht"), 0, path) == 0)
        Refuse("a scratch file can't be made");
    m_path = path;
    m_handle = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                           nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr);
    if (m_handle == INVALID_HANDLE_VALUE) Refuse("a scratch file can't be opened");
}

ScratchFile::~ScratchFile() {
    CloseHandle(m_handle);
    DeleteFileW(m_path.c_str());
}

void ScratchFile::Write(const std::string& bytes) {
    DWORD written = 0;
    if (!WriteFile(m_handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size())
        Refuse("a scratch file can't be written");
}

std::string ScratchFile::Contents() const {
    std::string bytes(GetFileSize(m_handle, nullptr), '\0');
    DWORD read = 0;
    SetFilePointer(m_handle, 0, nullptr, FILE_BEGIN);
    const BOOL isRead =
        ReadFile(m_handle, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    SetFilePointer(m_handle, 0, nullptr, FILE_END);
    bytes.resize(isRead ? read : 0);
    return bytes;
}

}  // namespace sheet
