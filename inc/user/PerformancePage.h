#pragma once
// What the sheet is given of the Performance tab.

#include <windows.h>
#include <setupapi.h>
#include <memory>

#include "AdapterIdentity.h"
#include "SheetPage.h"

// The tab's page object for the adapter; copies its identity and takes over the interface's detail.
// Null when memory runs out.
std::unique_ptr<SheetPage> NewPerformancePage(
    const AdapterIdentity& identity,
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> interfaceDetail);

inline constexpr PageProcedures kPerformanceProcedures = kPageProcedures<InWindow>;
