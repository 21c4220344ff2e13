#include "PropertyPages.h"

#include <utility>

#include "../resources/resource.h"
#include "InformationPage.h"
#include "Messages.h"
#include "PerformancePage.h"
#include "TabRules.h"
#include "VlanPage.h"

namespace {

// Makes a page that owns `object`. Null when that fails: the object stays with the caller.
ScopedPropertyPage MakePage(const PageForm& form, SheetPage* object) {
    PROPSHEETPAGEW page = {};
    page.dwSize = sizeof(page);
    page.dwFlags = form.flags;
    page.hInstance = Library().moduleHandle;
    page.pszTemplate = MAKEINTRESOURCEW(form.dialog);
    page.pfnDlgProc = form.procedures.dialog;
    page.lParam = reinterpret_cast<LPARAM>(object);
    page.pfnCallback = form.procedures.release;
    return ScopedPropertyPage(CreatePropertySheetPageW(&page));
}

}  // namespace

bool AddSheetPage(const PageSink& sink, const PageForm& form, std::unique_ptr<SheetPage> object) {
    if (!object) {
        ShowSystemErrorMessage(IDS_COMMAND_FAILED, GetLastError());
        return false;
    }
    ScopedPropertyPage page = MakePage(form, object.get());
    if (!page) return false;
    (void)object.release();
    if (!sink.addPage(page.Get(), sink.parameter)) return false;
    (void)page.Release();
    return true;
}

bool AddInformationPage(AdapterTabs& tabs) {
    if (!InformationTabApplies(tabs.flags)) return true;
    return AddSheetPage(tabs.sink,
                        {IDD_INFORMATION, PSP_USECALLBACK | PSP_USEICONID, kInformationProcedures},
                        NewInformationPage(tabs.identity.classKeyPath));
}

bool AddPerformancePage(AdapterTabs& tabs) {
    if (!PerformanceTabApplies(tabs.flags)) return true;
    const WORD dialog = tabs.flags.isIpoib ? IDD_PERFORMANCE_IPOIB : IDD_PERFORMANCE_ETH;
    return AddSheetPage(tabs.sink, {dialog, PSP_USECALLBACK, kPerformanceProcedures},
                        NewPerformancePage(tabs.identity, std::move(tabs.interfaceDetail)));
}

bool AddVlanPage(AdapterTabs& tabs) {
    if (!VlanTabApplies(tabs.flags, GetMachineFacts())) return true;
    return AddSheetPage(tabs.sink, {IDD_VLAN, PSP_USECALLBACK | PSP_USEICONID, kVlanProcedures},
                        NewVlanPage(tabs.identity.classKeyPath));
}
