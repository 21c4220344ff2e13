#include "PropertyPages.h"

#include <utility>

#include "../resources/resource.h"
#include "InformationPage.h"
#include "LibraryState.h"
#include "Messages.h"
#include "PerformancePage.h"
#include "TabRules.h"

ScopedPropertyPage MakePage(const PageForm& form, void* object) {
    PROPSHEETPAGEW page = {};
    page.dwSize = sizeof(page);
    page.dwFlags = form.flags;
    page.hInstance = Library().moduleHandle;
    page.pszTemplate = MAKEINTRESOURCEW(form.dialog);
    page.pfnDlgProc = form.dialogProc;
    page.lParam = reinterpret_cast<LPARAM>(object);
    page.pfnCallback = form.callback;
    return ScopedPropertyPage(CreatePropertySheetPageW(&page));
}

bool OfferPage(const PageSink& sink, ScopedPropertyPage page) {
    if (!sink.addPage(page.Get(), sink.parameter)) return false;
    (void)page.Release();
    return true;
}

bool AddSheetPage(const PageSink& sink, const PageForm& form, std::unique_ptr<SheetPage> object) {
    if (!object) {
        ShowSystemErrorMessage(IDS_COMMAND_FAILED, GetLastError());
        return false;
    }
    ScopedPropertyPage page = MakePage(form, object.get());
    if (!page) return false;
    (void)object.release();
    return OfferPage(sink, std::move(page));
}

bool AddInformationPage(AdapterTabs& tabs) {
    if (!InformationTabApplies(*tabs.flags)) return true;
    const PageForm form = {IDD_INFORMATION, PSP_USECALLBACK | PSP_USEICONID, InformationDialogProc,
                           InformationPageCallback};
    return AddSheetPage(tabs.sink, form, NewInformationPage(tabs.context->classKeyPath));
}

bool AddPerformancePage(AdapterTabs& tabs) {
    if (!PerformanceTabApplies(*tabs.flags)) return true;
    tabs.context->noRegistryChange = 1;
    tabs.context->interfaceDetail = std::move(tabs.interfaceDetail);
    const PageForm form = {
        static_cast<WORD>(tabs.flags->isIpoib ? IDD_PERFORMANCE_IPOIB : IDD_PERFORMANCE_ETH),
        PSP_USECALLBACK, PerformanceDialogProc, PerformancePageCallback};
    ScopedPropertyPage page = MakePage(form, tabs.context.get());
    if (!page) return false;
    (void)tabs.context.release();
    return OfferPage(tabs.sink, std::move(page));
}
