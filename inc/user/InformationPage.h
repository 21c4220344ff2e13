#pragma once
// What the sheet is given of the Information tab.

#include <windows.h>
#include <prsht.h>
#include <memory>

#include "SheetPage.h"

// The tab's page object for the adapter of that class key, a path below HKEY_LOCAL_MACHINE that is
// copied. Null when memory runs out.
std::unique_ptr<SheetPage> NewInformationPage(LPCWSTR classKeyPath);

// The page's lParam is a SheetPage*.
INT_PTR CALLBACK InformationDialogProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
// Frees the page object when the sheet releases the page.
UINT CALLBACK InformationPageCallback(HWND page, UINT message, PROPSHEETPAGEW* sheetPage);
