#include "InformationFile.h"

#include <algorithm>
#include <iterator>

#include "../resources/resource.h"
#include "AutoClasses.h"

#include <strsafe.h>

namespace {

// Characters of a row: both texts, the separator and the line end.
constexpr size_t kLineCapacity = 2 * sizeof(InformationText) / sizeof(WCHAR) + 8;
constexpr int kBytesPerCharacter = 3;  // at most, in UTF-8

constexpr WCHAR kByteOrderMark[] = TEXT("\xFEFF");

// A text that breaks its line would make more lines of it.
void JoinLines(LPWSTR text) {
    for (; *text != 0; ++text) {
        if (*text == TEXT('\r') || *text == TEXT('\n')) *text = TEXT(' ');
    }
}

// 0 or the system's error.
DWORD WriteText(HANDLE file, LPCWSTR text) {
    char bytes[kBytesPerCharacter * kLineCapacity];
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, lstrlenW(text), bytes,
                                         static_cast<int>(sizeof(bytes)), nullptr, nullptr);
    if (size <= 0) return GetLastError();
    DWORD written = 0;
    if (!WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr)) return GetLastError();
    return written == static_cast<DWORD>(size) ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

}  // namespace

UserFailure SaveRows(LPCWSTR path, const InformationRows& rows) {
    const ScopedFile file(CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return {IDS_FILE_OPEN_FAILED, GetLastError()};
    LPCWSTR before = kByteOrderMark;
    for (const InformationRow& row : rows) {
        WCHAR line[kLineCapacity];
        (void)StringCchPrintfW(line, ARRAYSIZE(line), TEXT("%s%s : %s"), before, row.label,
                               row.value);
        JoinLines(line);
        (void)StringCchCatW(line, ARRAYSIZE(line), TEXT("\r\n"));
        const DWORD error = WriteText(file.Get(), line);
        if (error != ERROR_SUCCESS) return {IDS_FILE_WRITE_FAILED, error};
        before = TEXT("");
    }
    return {};
}
