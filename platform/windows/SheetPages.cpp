#include "SheetPages.h"

#include <winerror.h>
#include <cstddef>
#include <cstring>

#include "Call.h"
#include "Resources.h"

namespace platform {
namespace {

// Descriptions of the first version end here, and longer ones are the caller's own.
constexpr DWORD kLeastSize = offsetof(PROPSHEETPAGEW, pszHeaderTitle);
constexpr DWORD kMostSize = 4096;

// Keeps a text that isn't a number, and points to what is kept.
const char16_t* Keep(const char16_t* given, std::u16string& kept) {
    if (IS_INTRESOURCE(given)) return given;
    kept = given;
    return kept.c_str();
}

}  // namespace

std::u16string TextOrResource(HINSTANCE instance, const char16_t* given) {
    if (given == nullptr) return {};
    if (!IS_INTRESOURCE(given)) return given;
    const auto id = static_cast<UINT>(reinterpret_cast<ULONG_PTR>(given));
    return std::u16string(FindString(instance, id).value_or(u""));
}

bool SheetPage::IsDescription(const PROPSHEETPAGEW* given) {
    return given && given->dwSize >= kLeastSize && given->dwSize <= kMostSize;
}

SheetPage::SheetPage(const PROPSHEETPAGEW& given) {
    const std::size_t size = std::max<std::size_t>(given.dwSize, sizeof(PROPSHEETPAGEW));
    m_copy.resize((size + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t));
    std::memcpy(m_copy.data(), &given, given.dwSize);
    PROPSHEETPAGEW& page = Data();
    page.pszTemplate = Keep(page.pszTemplate, m_templateName);
    if ((page.dwFlags & PSP_USETITLE) != 0) page.pszTitle = Keep(page.pszTitle, m_title);
}

std::optional<DialogTemplate> SheetPage::Template() const {
    std::optional<DialogTemplate> dialog = LoadDialogTemplate(Data().hInstance, Data().pszTemplate);
    if (dialog) {
        dialog->style &= ~static_cast<DWORD>(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME |
                                             WS_DISABLED | DS_MODALFRAME);
        dialog->style |= WS_CHILD | WS_TABSTOP | DS_CONTROL;
    }
    return dialog;
}

std::u16string SheetPage::Title() const {
    if ((Data().dwFlags & PSP_USETITLE) != 0)
        return TextOrResource(Data().hInstance, Data().pszTitle);
    const std::optional<DialogTemplate> dialog = Template();
    return dialog ? dialog->title : std::u16string();
}

UINT SheetPage::Call(HWND window, UINT code) {
    if ((Data().dwFlags & PSP_USECALLBACK) == 0 || !Data().pfnCallback) return 1;
    const CallbackScope inCallback;
    return Data().pfnCallback(window, code, &Data());
}

HPROPSHEETPAGE SheetPages::Add(const PROPSHEETPAGEW& given) {
    const auto page = std::make_shared<SheetPage>(given);
    const auto handle = reinterpret_cast<HPROPSHEETPAGE>(page.get());
    m_pages.emplace(handle, page);
    page->Call(nullptr, PSPCB_ADDREF);
    return handle;
}

std::shared_ptr<SheetPage> SheetPages::Find(HPROPSHEETPAGE page) const {
    const auto found = m_pages.find(page);
    return found == m_pages.end() ? nullptr : found->second;
}

bool SheetPages::Release(HPROPSHEETPAGE handle) {
    const std::shared_ptr<SheetPage> page = Find(handle);
    if (!page) return false;
    m_pages.erase(handle);
    page->Call(nullptr, PSPCB_RELEASE);
    return true;
}

}  // namespace platform

using platform::Call;
using platform::SheetPages;

HPROPSHEETPAGE WINAPI CreatePropertySheetPageW(LPCPROPSHEETPAGEW page) {
    Call call("CreatePropertySheetPageW", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<HPROPSHEETPAGE>(nullptr);
    if (!platform::SheetPage::IsDescription(page)) return nullptr;
    const HPROPSHEETPAGE handle = call.machine.Get<SheetPages>().Add(*page);
    call.machine.ledger.Enter(SheetPages::kind, handle, call.Name());
    return handle;
}

BOOL WINAPI DestroyPropertySheetPage(HPROPSHEETPAGE page) {
    Call call("DestroyPropertySheetPage");
    call.machine.ledger.Strike(SheetPages::kind, page);
    return call.machine.Get<SheetPages>().Release(page);
}
