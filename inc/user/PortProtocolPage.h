#pragma once
// What the sheet is given of the Port Protocol tab of the device that carries a card's ports.

#include <windows.h>
#include <setupapi.h>
#include <memory>

#include "SheetPage.h"

// The page object for the device. classKeyPath: of its class key, below HKEY_LOCAL_MACHINE; all
// three are copied. Null when memory runs out.
std::unique_ptr<SheetPage> NewPortProtocolPage(LPCWSTR classKeyPath, LPCWSTR deviceInstanceId,
                                               const SP_DEVINFO_DATA& device);
inline constexpr PageProcedures kPortProtocolProcedures =
    kPageProcedures<InPageTable<&LibraryState::portProtocolPages>>;
