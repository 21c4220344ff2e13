// The common file dialog, answered by the machine's user.

#include <commdlg.h>
#include <fileapi.h>
#include <winerror.h>

#include "Call.h"
#include "Desktop.h"

namespace platform {
namespace {

// A filter is a row of texts, each with its terminator, up to an empty one.
std::u16string WholeFilter(const char16_t* filter) {
    std::u16string whole;
    while (filter && *filter) {
        const std::u16string_view part = filter;
        whole.append(part).push_back(u'\0');
        filter += part.size() + 1;
    }
    return whole;
}

std::size_t NameOffset(std::u16string_view path) {
    return path.find_last_of(u"\\/:") + 1;
}

// Where the extension begins, after its dot; 0 when there is none.
std::size_t ExtensionOffset(std::u16string_view path) {
    const std::size_t dot = path.rfind(u'.');
    return dot == std::u16string_view::npos || dot < NameOffset(path) ? 0 : dot + 1;
}

// Whether the dialog takes the name: not one that no file can have, and with a folder's it goes
// there instead.
bool IsFileName(std::u16string_view path) {
    if (path.empty() || path.find_first_of(u"<>|*?\"") != path.npos) return false;
    if (path.ends_with(u'\\') || path.ends_with(u'/')) return false;
    const DWORD attributes = GetFileAttributesW(std::u16string(path).c_str());
    return attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// The name that the user ends with; nothing for Cancel. The dialog stays until then.
std::optional<std::u16string> AskForName(User& user, const FileDialogRequest& request) {
    constexpr int kMostTries = 100;
    for (int tries = 0; tries < kMostTries; ++tries) {
        std::optional<std::u16string> name = user.OnFileDialog(request);
        if (!name || IsFileName(*name)) return name;
    }
    return std::nullopt;
}

BOOL AskForFile(Machine& machine, OPENFILENAMEW& dialog) {
    if (!machine.user) {
        machine.End("a file dialog without a user");
        throw MachineEnded{0, "a file dialog without a user"};
    }
    FileDialogRequest request;
    request.owner = dialog.hwndOwner;
    if (dialog.lpstrTitle) request.title = dialog.lpstrTitle;
    request.filter = WholeFilter(dialog.lpstrFilter);
    if (dialog.lpstrDefExt) request.defaultExtension = dialog.lpstrDefExt;
    request.flags = dialog.Flags;

    ModalScope modal(dialog.hwndOwner);
    std::optional<std::u16string> path = AskForName(*machine.user, request);
    modal.End();
    if (!path) return FALSE;
    if (dialog.lpstrDefExt && ExtensionOffset(*path) == 0)
        path->append(u".").append(request.defaultExtension);
    if (path->size() >= dialog.nMaxFile) return FALSE;
    CopyText(*path, dialog.lpstrFile, static_cast<int>(dialog.nMaxFile));
    dialog.nFileOffset = static_cast<WORD>(NameOffset(*path));
    dialog.nFileExtension = static_cast<WORD>(ExtensionOffset(*path));
    return TRUE;
}

}  // namespace
}  // namespace platform

BOOL WINAPI GetSaveFileNameW(LPOPENFILENAMEW dialog) {
    platform::Call call("GetSaveFileNameW");
    if (call.Failed() || call.machine.Ended()) return call.With(FALSE);
    if (dialog->lStructSize != sizeof(OPENFILENAMEW)) return FALSE;
    return platform::AskForFile(call.machine, *dialog);
}
