#pragma once
// The Port Protocol tab of the device that carries a card's ports, as the frame hands it to the
// sheet. The sheet's thread.

#include <windows.h>
#include <prsht.h>
#include <setupapi.h>
#include <memory>

#include "SheetPage.h"

// The page object for the device. classKeyPath: of its class key, below HKEY_LOCAL_MACHINE; all
// three are copied. Null when memory runs out.
std::unique_ptr<SheetPage> NewPortProtocolPage(LPCWSTR classKeyPath, LPCWSTR deviceInstanceId,
                                               const SP_DEVINFO_DATA& device);
INT_PTR CALLBACK PortProtocolDialogProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
// Frees the page object when the sheet releases the page.
UINT CALLBACK PortProtocolPageCallback(HWND page, UINT message, PROPSHEETPAGEW* sheetPage);
