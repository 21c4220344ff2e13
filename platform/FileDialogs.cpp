// The common file dialog, answered by the machine's user.

#include <commdlg.h>
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
    std::optional<std::u16string> path = machine.user->OnFileDialog(request);
    modal.End();
    if (!path || path->empty()) return FALSE;
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
