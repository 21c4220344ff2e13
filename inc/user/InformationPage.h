#pragma once
// What the sheet is given of the Information tab.

#include <windows.h>
#include <memory>

#include "SheetPage.h"

// The tab's page object for the adapter of that class key, a path below HKEY_LOCAL_MACHINE that is
// copied. Null when memory runs out.
std::unique_ptr<SheetPage> NewInformationPage(LPCWSTR classKeyPath);

inline constexpr PageProcedures kInformationProcedures =
    kPageProcedures<InPageTable<&LibraryState::informationPages>>;
