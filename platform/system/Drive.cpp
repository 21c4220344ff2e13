#include "Drive.h"

#include <array>
#include <utility>

#include <fileapi.h>
#include <winerror.h>

#include "Text.h"

namespace platform {
namespace {

bool IsSeparator(char16_t unit) {
    return unit == u'\\' || unit == u'/';
}

// CON, NUL, COM1.txt and the like name devices in whatever directory they stand.
bool IsDeviceName(std::u16string_view name) {
    std::u16string_view stem = name.substr(0, name.find(u'.'));
    while (!stem.empty() && stem.back() == u' ')
        stem.remove_suffix(1);
    constexpr std::array<std::u16string_view, 6> kNames = {u"CON", u"PRN",    u"AUX",
                                                           u"NUL", u"CONIN$", u"CONOUT$"};
    for (const std::u16string_view device : kNames)
        if (EqualNoCase(stem, device)) return true;
    constexpr std::u16string_view kDigits = u"123456789\u00B9\u00B2\u00B3";
    const std::u16string_view port = stem.substr(0, 3);
    return stem.size() == 4 && (EqualNoCase(port, u"COM") || EqualNoCase(port, u"LPT")) &&
           kDigits.find(stem[3]) != kDigits.npos;
}

bool IsValidName(std::u16string_view name) {
    constexpr std::u16string_view kForbidden = u"<>:\"|?*";
    for (const char16_t unit : name)
        if (unit < 0x20 || kForbidden.find(unit) != kForbidden.npos) return false;
    // A name that isn't text (an unpaired surrogate) has no spelling on the host.
    return FromUtf8(ToUtf8(name)) == name && !IsDeviceName(name);
}

// Resolves a path by its text alone, as the system does: `..` goes up at most to the root, and
// blanks and dots at the end of a name are dropped.
DWORD ParsePath(std::u16string_view text, VolumePath& names, bool& endsInSeparator) {
    names.clear();
    if (text.empty() || text.size() >= MAX_PATH) return ERROR_PATH_NOT_FOUND;
    if (text.size() >= 2 && IsSeparator(text[0]) && IsSeparator(text[1]))
        return ERROR_PATH_NOT_FOUND;  // another machine's share, or a name of the kernel's
    if (text.size() >= 2 && text[1] == u':') {
        if (UpCase(text[0]) != u'C') return ERROR_PATH_NOT_FOUND;
        text.remove_prefix(2);
    }
    endsInSeparator = !text.empty() && IsSeparator(text.back());
    while (!text.empty()) {
        std::size_t length = 0;
        while (length < text.size() && !IsSeparator(text[length]))
            ++length;
        std::u16string_view name = text.substr(0, length);
        text.remove_prefix(length == text.size() ? length : length + 1);
        if (name.empty() || name == u".") continue;
        if (name == u"..") {
            if (!names.empty()) names.pop_back();
            continue;
        }
        while (!name.empty() && (name.back() == u'.' || name.back() == u' '))
            name.remove_suffix(1);
        if (name.empty() || !IsValidName(name)) return ERROR_INVALID_NAME;
        names.emplace_back(name);
    }
    return ERROR_SUCCESS;
}

std::u16string Key(const VolumePath& names) {
    std::u16string key;
    for (const std::u16string& name : names) {
        key += u'\\';
        for (const char16_t unit : name)
            key += UpCase(unit);
    }
    return key;
}

bool Touches(const OpenFile& file) {
    return file.mayRead || file.mayWrite || file.mayDelete;
}

bool Tolerates(DWORD share, const OpenFile& file) {
    return (!file.mayRead || (share & FILE_SHARE_READ) != 0) &&
           (!file.mayWrite || (share & FILE_SHARE_WRITE) != 0) &&
           (!file.mayDelete || (share & FILE_SHARE_DELETE) != 0);
}

void SetAccess(OpenFile& file, DWORD access) {
    const auto any = [access](DWORD rights) { return (access & rights) != 0; };
    file.mayRead = any(GENERIC_ALL | GENERIC_READ | FILE_READ_DATA);
    const bool overwrites = any(GENERIC_ALL | GENERIC_WRITE | FILE_WRITE_DATA);
    file.appends = !overwrites && any(FILE_APPEND_DATA);
    file.mayWrite = overwrites || file.appends;
    file.mayDelete = any(GENERIC_ALL | DELETE);
}

const std::array<VolumePath, 2>& SystemDirectories() {
    static const std::array<VolumePath, 2> directories = {VolumePath{u"Windows"},
                                                          VolumePath{u"Windows", u"System32"}};
    return directories;
}

}  // namespace

Drive::Drive() : m_volume(MakeMemoryVolume()) {}

bool Drive::Mount(const std::filesystem::path& folder) {
    std::unique_ptr<Volume> volume = MakeFolderVolume(folder);
    if (!volume) return false;
    m_volume = std::move(volume);
    m_open.clear();
    KeepSystemDirectories(SystemDirectories().back());
    return true;
}

// Makes the directories that always exist, should the path lie in one and somebody have removed it.
DWORD Drive::KeepSystemDirectories(const VolumePath& path) {
    if (path.empty() || !EqualNoCase(path[0], SystemDirectories()[0][0])) return ERROR_SUCCESS;
    for (const VolumePath& directory : SystemDirectories()) {
        const DWORD error = m_volume->MakeDirectory(directory);
        if (error != ERROR_SUCCESS && error != ERROR_ALREADY_EXISTS) return error;
    }
    return ERROR_SUCCESS;
}

DWORD Drive::Look(std::u16string_view path, Volume::Kind& kind) {
    VolumePath names;
    bool endsInSeparator = false;
    if (const DWORD error = ParsePath(path, names, endsInSeparator)) return error;
    if (KeepSystemDirectories(names) != ERROR_SUCCESS) {
        // In a folder that can't be written they exist all the same.
        for (const VolumePath& directory : SystemDirectories()) {
            if (Key(names) != Key(directory)) continue;
            kind = Volume::Kind::Directory;
            return ERROR_SUCCESS;
        }
    }
    const DWORD error = m_volume->Look(names, kind);
    if (error == ERROR_SUCCESS && endsInSeparator && kind == Volume::Kind::File)
        return ERROR_INVALID_NAME;
    return error;
}

DWORD Drive::MakeDirectory(std::u16string_view path) {
    VolumePath names;
    bool endsInSeparator = false;
    if (const DWORD error = ParsePath(path, names, endsInSeparator)) return error;
    Volume::Kind kind{};
    if (!names.empty() && Look(path, kind) == ERROR_SUCCESS) return ERROR_ALREADY_EXISTS;
    if (const DWORD error = KeepSystemDirectories(names)) return error;
    return m_volume->MakeDirectory(names);
}

DWORD Drive::DeleteFile(std::u16string_view path) {
    VolumePath names;
    bool endsInSeparator = false;
    if (const DWORD error = ParsePath(path, names, endsInSeparator)) return error;
    if (endsInSeparator) return ERROR_INVALID_NAME;
    OpenFile deleting;
    deleting.mayDelete = true;
    deleting.share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    if (const DWORD error = CheckSharing(Key(names), deleting)) return error;
    return m_volume->Remove(names);
}

DWORD Drive::List(std::u16string_view directory, std::vector<Volume::Entry>& entries) {
    VolumePath names;
    bool endsInSeparator = false;
    if (const DWORD error = ParsePath(directory, names, endsInSeparator)) return error;
    (void)KeepSystemDirectories(names);
    if (!names.empty())
        entries = {{u".", Volume::Kind::Directory}, {u"..", Volume::Kind::Directory}};
    return m_volume->List(names, entries);
}

DWORD Drive::CheckSharing(const std::u16string& key, const OpenFile& file) {
    auto [entry, end] = m_open.equal_range(key);
    while (entry != end) {
        const std::shared_ptr<OpenFile> other = entry->second.lock();
        if (!other) {
            entry = m_open.erase(entry);
            continue;
        }
        if (Touches(file) && Touches(*other) &&
            (!Tolerates(other->share, file) || !Tolerates(file.share, *other)))
            return ERROR_SHARING_VIOLATION;
        ++entry;
    }
    return ERROR_SUCCESS;
}

DWORD Drive::Open(std::u16string_view path, DWORD access, DWORD share, DWORD disposition,
                  std::shared_ptr<OpenFile>& file, bool& existed) {
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING) return ERROR_INVALID_PARAMETER;
    const bool mayCreate = disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING;
    const bool empties = disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    if (disposition == TRUNCATE_EXISTING && (access & (GENERIC_WRITE | GENERIC_ALL)) == 0)
        return ERROR_INVALID_PARAMETER;

    VolumePath names;
    bool endsInSeparator = false;
    if (const DWORD error = ParsePath(path, names, endsInSeparator)) return error;
    if (mayCreate)
        if (const DWORD error = KeepSystemDirectories(names)) return error;

    Volume::Kind kind{};
    const DWORD missing = Look(path, kind);
    existed = missing == ERROR_SUCCESS;
    if (!existed && (missing != ERROR_FILE_NOT_FOUND || !mayCreate)) return missing;
    if (!existed && endsInSeparator) return ERROR_INVALID_NAME;
    if (existed && disposition == CREATE_NEW) return ERROR_FILE_EXISTS;
    if (existed && kind == Volume::Kind::Directory) return ERROR_ACCESS_DENIED;

    auto opening = std::make_shared<OpenFile>();
    opening->path = path;
    opening->share = share;
    SetAccess(*opening, access);
    const std::u16string key = Key(names);
    // Whoever empties a file writes to it, as far as the others are concerned.
    const bool mayWrite = std::exchange(opening->mayWrite, opening->mayWrite || empties);
    if (const DWORD error = CheckSharing(key, *opening)) return error;
    opening->mayWrite = mayWrite;

    const Volume::Request request = {mayWrite, mayCreate, empties};
    if (const DWORD error = m_volume->Open(names, request, opening->content)) return error;
    m_open.emplace(key, opening);
    file = std::move(opening);
    return ERROR_SUCCESS;
}

std::optional<std::string> Drive::ReadWholeFile(std::u16string_view path) {
    VolumePath names;
    bool endsInSeparator = false;
    std::unique_ptr<FileContent> content;
    std::uint64_t size = 0;
    if (ParsePath(path, names, endsInSeparator) != ERROR_SUCCESS ||
        m_volume->Open(names, {}, content) != ERROR_SUCCESS || content->Size(size) != ERROR_SUCCESS)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::size_t read = 0;
    if (content->Read(0, bytes.data(), bytes.size(), read) != ERROR_SUCCESS) return std::nullopt;
    bytes.resize(read);
    return bytes;
}

bool Drive::WriteWholeFile(std::u16string_view path, std::string_view bytes) {
    VolumePath names;
    bool endsInSeparator = false;
    if (ParsePath(path, names, endsInSeparator) != ERROR_SUCCESS || names.empty()) return false;
    VolumePath directory;
    for (std::size_t i = 0; i + 1 < names.size(); ++i) {
        directory.push_back(names[i]);
        const DWORD error = m_volume->MakeDirectory(directory);
        if (error != ERROR_SUCCESS && error != ERROR_ALREADY_EXISTS) return false;
    }
    std::unique_ptr<FileContent> content;
    return m_volume->Open(names, {true, true, true}, content) == ERROR_SUCCESS &&
           content->Write(0, bytes.data(), bytes.size()) == ERROR_SUCCESS;
}

// Addresses, so that no number of Handles is the same.
HANDLE Streams::OutputHandle() {
    static char handle;
    return &handle;
}
HANDLE Streams::ErrorHandle() {
    static char handle;
    return &handle;
}

std::string* Streams::Find(HANDLE handle) {
    if (handle == OutputHandle()) return &output;
    return handle == ErrorHandle() ? &error : nullptr;
}

}  // namespace platform
