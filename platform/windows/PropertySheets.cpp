// The functions for property sheets.

#include <commctrl.h>
#include <prsht.h>
#include <winerror.h>
#include <cstddef>

#include "Call.h"
#include "SheetFrame.h"

namespace platform {
namespace {

constexpr DWORD kLeastHeader = offsetof(PROPSHEETHEADERW, hbmWatermark);

SheetPages& AllPages() {
    return Machine::Current().Get<SheetPages>();
}

// The pages that a header names; those of which it gives a description are made.
std::vector<HPROPSHEETPAGE> PagesOf(const PROPSHEETHEADERW& header) {
    std::vector<HPROPSHEETPAGE> pages;
    const auto* next = reinterpret_cast<const std::byte*>(header.ppsp);
    for (UINT i = 0; i < header.nPages; ++i) {
        if ((header.dwFlags & PSH_PROPSHEETPAGE) != 0) {
            const auto* given = reinterpret_cast<const PROPSHEETPAGEW*>(next);
            if (!SheetPage::IsDescription(given)) break;
            pages.push_back(AllPages().Add(*given));
            next += given->dwSize;
        } else if (AllPages().Find(header.phpage[i])) {
            pages.push_back(header.phpage[i]);
            Machine::Current().ledger.Strike(SheetPages::kind, header.phpage[i]);
        }
    }
    return pages;
}

int StartOf(const PROPSHEETHEADERW& header, const std::vector<HPROPSHEETPAGE>& pages) {
    if ((header.dwFlags & PSH_USEPSTARTPAGE) == 0) return static_cast<int>(header.nStartPage);
    const std::u16string title = TextOrResource(header.hInstance, header.pStartPage);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (AllPages().Find(pages[i])->Title() == title) return static_cast<int>(i);
    }
    return 0;
}

std::u16string CaptionOf(const PROPSHEETHEADERW& header) {
    std::u16string caption = TextOrResource(header.hInstance, header.pszCaption);
    if ((header.dwFlags & PSH_PROPTITLE) != 0) caption += u" Properties";
    return caption;
}

INT_PTR RunSheet(const Call& call, const PROPSHEETHEADERW& header,
                 const std::vector<HPROPSHEETPAGE>& pages) {
    const bool modeless = (header.dwFlags & PSH_MODELESS) != 0;
    Desktop& desktop = TheDesktop();
    const int start = StartOf(header, pages);
    const auto frame = std::make_shared<SheetFrame>(header, pages);
    Creation creation;
    creation.className = u"#32770";
    creation.text = CaptionOf(header);
    creation.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
    creation.exStyle = WS_EX_CONTROLPARENT;
    creation.rect = {0, 0, frame->FrameSize().cx, frame->FrameSize().cy};
    creation.parent = header.hwndParent;
    const HWND handle = desktop.Create(frame, creation);
    frame->AddControls();
    if ((header.dwFlags & PSH_USECALLBACK) != 0 && header.pfnCallback) {
        const CallbackScope inCallback;
        header.pfnCallback(handle, PSCB_INITIALIZED, 0);
    }

    ModalScope modal(modeless ? nullptr : header.hwndParent);
    const bool entered = frame->Enter(start);
    if (entered) desktop.Show(handle, true);
    // A page can have closed the sheet already.
    const bool failed = !entered && !frame->Closed();
    if (!failed && modeless) {
        call.machine.ledger.Enter("window", handle, call.Name());
        return reinterpret_cast<INT_PTR>(handle);
    }
    if (!failed) desktop.RunLoop(call.Name(), [&] { return frame->Closed(); });
    modal.End();
    desktop.Destroy(handle);
    return failed ? -1 : frame->Result();
}

}  // namespace
}  // namespace platform

INT_PTR WINAPI PropertySheetW(LPCPROPSHEETHEADERW header) {
    platform::Call call("PropertySheetW", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (!header || header->dwSize < platform::kLeastHeader) return -1;
    const std::vector<HPROPSHEETPAGE> pages = platform::PagesOf(*header);
    const bool noOwner = header->hwndParent && !platform::TheDesktop().Find(header->hwndParent);
    if (!call.Failed() && !noOwner && !pages.empty())
        return platform::RunSheet(call, *header, pages);
    // A sheet that can't be shown lets go of its pages all the same.
    for (const HPROPSHEETPAGE page : pages)
        platform::AllPages().Release(page);
    return call.With<INT_PTR>(-1);
}
