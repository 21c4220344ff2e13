#include "ScratchFile.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "../Transcript.h"

namespace sheet {

namespace {

[[noreturn]] void Refuse(const char* what) {
    throw Refusal{std::string(what) + ": error " + std::to_string(GetLastError())};
}

Text NewFile() {
    WCHAR folder[MAX_PATH + 1] = {};
    WCHAR path[MAX_PATH] = {};
    if (GetTempPathW(ARRAYSIZE(folder), folder) == 0 ||
        GetTempFileNameW(folder, TEXT("sht"), 0, path) == 0)
        Refuse("a scratch file can't be made");
    return path;
}

}  // namespace

ScratchFile::ScratchFile() : m_path(NewFile()) {
    m_handle = CreateFileW(m_path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                           CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr);
    if (m_handle != INVALID_HANDLE_VALUE) return;
    DeleteFileW(m_path.c_str());
    Refuse("a scratch file can't be opened");
}

ScratchFile::ScratchFile(const std::string& bytes) : ScratchFile() {
    DWORD written = 0;
    const BOOL isWritten =
        WriteFile(m_handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    if (!isWritten || written != bytes.size()) Refuse("a scratch file can't be written");
    Close();
}

ScratchFile::~ScratchFile() {
    Close();
    DeleteFileW(m_path.c_str());
}

void ScratchFile::Close() {
    if (m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
    m_handle = INVALID_HANDLE_VALUE;
}

std::string ScratchFile::Contents() const {
    std::ifstream file(std::filesystem::path(m_path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace sheet
