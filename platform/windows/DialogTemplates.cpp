#include <winerror.h>

#include "Call.h"
#include "Dialogs.h"

namespace platform {
namespace {

constexpr WORD kExtendedSignature = 0xFFFF;
constexpr WORD kFirstClassAtom = 0x80;
constexpr const char16_t* kClassAtoms[] = {u"Button",  u"Edit",      u"Static",
                                           u"ListBox", u"ScrollBar", u"ComboBox"};

std::u16string ClassName(const ResourceName& name) {
    if (const auto* text = std::get_if<std::u16string>(&name)) return *text;
    const auto atom = static_cast<std::size_t>(std::get<WORD>(name) - kFirstClassAtom);
    return atom < std::size(kClassAtoms) ? kClassAtoms[atom] : u"?";
}

std::u16string TextOr(const ResourceName& name, const char16_t* otherwise) {
    const auto* text = std::get_if<std::u16string>(&name);
    return text ? *text : otherwise;
}

RECT ReadRect(ResourceReader& reader) {
    const short x = reader.Short();
    const short y = reader.Short();
    const short width = reader.Short();
    const short height = reader.Short();
    return {x, y, x + width, y + height};
}

DialogTemplate::Control ReadControl(ResourceReader& reader, bool extended) {
    DialogTemplate::Control control;
    reader.Align(4);
    if (extended) {
        reader.Dword();  // help id
        control.exStyle = reader.Dword();
        control.style = reader.Dword();
    } else {
        control.style = reader.Dword();
        control.exStyle = reader.Dword();
    }
    control.rect = ReadRect(reader);
    control.id = extended ? reader.Dword() : reader.Word();
    control.className = ClassName(reader.Name());
    control.text = reader.Name();
    reader.Bytes(reader.Word());  // creation data
    return control;
}

// a * b / c, rounded as the dialog manager does: half away from zero.
int Scale(int a, int b, int c) {
    const int product = a * b;
    return (product + (product < 0 ? -c : c) / 2) / c;
}

}  // namespace

std::optional<DialogTemplate> ParseDialogTemplate(std::span<const BYTE> data) {
    ResourceReader reader(data);
    DialogTemplate dialog;
    ResourceReader ahead = reader;
    const bool extended = ahead.Word() == 1 && ahead.Word() == kExtendedSignature;
    if (extended) {
        reader = ahead;
        reader.Dword();  // help id
        dialog.exStyle = reader.Dword();
        dialog.style = reader.Dword();
    } else {
        dialog.style = reader.Dword();
        dialog.exStyle = reader.Dword();
    }
    const WORD count = reader.Word();
    dialog.rect = ReadRect(reader);
    reader.Name();  // menu
    dialog.className = TextOr(reader.Name(), u"");
    dialog.title = TextOr(reader.Name(), u"");
    if ((dialog.style & DS_SETFONT) != 0) {
        dialog.fontSize = reader.Word();
        if (extended) reader.Dword();  // weight, italic, character set
        reader.Text();                 // face
    }
    for (WORD i = 0; i < count && reader.Good(); ++i)
        dialog.controls.push_back(ReadControl(reader, extended));
    if (!reader.Good()) return std::nullopt;
    return dialog;
}

std::optional<DialogTemplate> LoadDialogTemplate(HINSTANCE instance, const char16_t* name) {
    const Resource* resource = FindResourceOf(instance, RT_DIALOG, name);
    if (!resource) return std::nullopt;
    std::optional<DialogTemplate> dialog = ParseDialogTemplate(resource->data);
    if (!dialog) Call::SetLast(ERROR_INVALID_DATA);
    return dialog;
}

// As the dialog manager makes windows: places and sizes are rounded each for itself.
RECT DialogUnits::ToPixels(const RECT& given) const {
    RECT pixels;
    pixels.left = Scale(given.left, x, 4);
    pixels.top = Scale(given.top, y, 8);
    pixels.right = pixels.left + Scale(given.right - given.left, x, 4);
    pixels.bottom = pixels.top + Scale(given.bottom - given.top, y, 8);
    return pixels;
}

// The measures of "MS Shell Dlg" in 8 points, which all dialogs with a font use here, and else
// those of the system's font.
DialogUnits UnitsOf(const DialogTemplate& given) {
    return given.fontSize ? DialogUnits{6, 13} : DialogUnits{8, 16};
}

}  // namespace platform
