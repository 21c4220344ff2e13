#pragma once
// Tabs on their way to the sheet. A tab's object belongs to its adder until the page is made, and
// from then on to the page, whose release callback frees it. The sheet's thread.

#include <windows.h>
#include <prsht.h>
#include <setupapi.h>
#include <memory>

#include "AdapterIdentity.h"
#include "SheetPage.h"

struct PropertyPageTraits {
    using Handle = HPROPSHEETPAGE;
    static constexpr Handle none = nullptr;
    static void Close(Handle page) {
        CheckClosed(DestroyPropertySheetPage(page) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
    }
};
// A page that no sheet has yet.
using ScopedPropertyPage = Scoped<PropertyPageTraits>;

// Where the pages of one provider call go.
struct PageSink {
    LPFNADDPROPSHEETPAGE addPage;
    LPARAM parameter;
};

// What the sheet is told of a page.
struct PageForm {
    WORD dialog;  // id of its template
    DWORD flags;  // PSP_...
    PageProcedures procedures;
};

// Makes a page of the object and hands it over. A null object is one that couldn't be allocated,
// which the user is told. False when a step fails, or when the sheet refuses the page: the object
// is gone then.
bool AddSheetPage(const PageSink& sink, const PageForm& form, std::unique_ptr<SheetPage> object);

// The adapter of one provider call, which the adders of its tabs share.
struct AdapterTabs {
    PageSink sink;
    AdapterIdentity identity;
    AdapterFlags flags;
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> interfaceDetail;  // for the Performance tab
};

// Each adder: true when its tab was handed over or doesn't apply to the adapter.
bool AddInformationPage(AdapterTabs& tabs);
bool AddPerformancePage(AdapterTabs& tabs);
bool AddVlanPage(AdapterTabs& tabs);
