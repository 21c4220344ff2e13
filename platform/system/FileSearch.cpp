// Searches for the files of a directory.

#include "Drive.h"

#include <algorithm>
#include <deque>

#include <fileapi.h>
#include <winerror.h>

#include "Call.h"
#include "Text.h"

using namespace platform;

namespace {

struct FileSearch : KernelObject {
    std::deque<Volume::Entry> found;
};

// `?` is one character, `*` any number of them. Each `*` takes as little as lets the rest match, so
// that only the last one is ever tried again.
bool Matches(std::u16string_view name, std::u16string_view pattern) {
    std::size_t at = 0;
    std::size_t next = 0;
    std::size_t star = pattern.npos;
    std::size_t taken = 0;
    while (at < name.size()) {
        if (next < pattern.size() && pattern[next] == u'*') {
            star = next++;
            taken = at;
        } else if (next < pattern.size() &&
                   (pattern[next] == u'?' || UpCase(pattern[next]) == UpCase(name[at]))) {
            ++at;
            ++next;
        } else if (star != pattern.npos) {
            next = star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', next) == pattern.npos;
}

// False, with the last error, when nothing is left. Neither times nor sizes are given.
bool TakeNext(FileSearch& search, LPWIN32_FIND_DATAW found) {
    if (search.found.empty()) {
        Call::SetLast(ERROR_NO_MORE_FILES);
        return false;
    }
    const Volume::Entry entry = std::move(search.found.front());
    search.found.pop_front();
    *found = {};
    found->dwFileAttributes =
        entry.kind == Volume::Kind::Directory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    entry.name.copy(found->cFileName, MAX_PATH - 1);
    return true;
}

}  // namespace

HANDLE WINAPI FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW found) {
    Call call("FindFirstFileW", pattern, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    const std::u16string_view whole = pattern ? pattern : u"";
    const std::size_t start = whole.find_last_of(u"\\/:") + 1;
    const std::u16string_view wanted = whole.substr(start) == u"*.*" ? u"*" : whole.substr(start);
    const auto directory = start == 0 ? std::u16string(u".") : std::u16string(whole, 0, start);
    auto search = std::make_shared<FileSearch>();
    std::vector<Volume::Entry> entries;
    DWORD error = found ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    if (error == ERROR_SUCCESS) error = call.machine.Get<Drive>().List(directory, entries);
    std::ranges::copy_if(entries, std::back_inserter(search->found),
                         [&](const Volume::Entry& entry) { return Matches(entry.name, wanted); });
    if (error == ERROR_SUCCESS && search->found.empty()) error = ERROR_FILE_NOT_FOUND;
    if (error != ERROR_SUCCESS) {
        Call::SetLast(error);
        return INVALID_HANDLE_VALUE;
    }
    TakeNext(*search, found);
    return call.machine.Get<Handles>().Open(std::move(search), call.Name());
}

BOOL WINAPI FindNextFileW(HANDLE handle, LPWIN32_FIND_DATAW found) {
    Call call("FindNextFileW");
    if (call.Failed()) return call.With(FALSE);
    const auto search = call.machine.Get<Handles>().Find<FileSearch>(handle);
    if (search && found) return TakeNext(*search, found);
    Call::SetLast(search ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    return FALSE;
}

BOOL WINAPI FindClose(HANDLE handle) {
    const Call call("FindClose");
    Handles& handles = call.machine.Get<Handles>();
    if (handles.Find<FileSearch>(handle)) return handles.Close(handle);
    Call::SetLast(ERROR_INVALID_HANDLE);
    return FALSE;
}
