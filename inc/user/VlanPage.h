#pragma once
// What the sheet is given of the VLAN tab.

#include <windows.h>
#include <memory>

#include "SheetPage.h"

// The tab's page object for the adapter or team of that class key, a path below HKEY_LOCAL_MACHINE
// that is copied. Null when memory runs out.
std::unique_ptr<SheetPage> NewVlanPage(LPCWSTR classKeyPath);

inline constexpr PageProcedures kVlanProcedures =
    kPageProcedures<InPageTable<&LibraryState::vlanPages>>;
