#pragma once
// The Performance tab's two entry points for the sheet. Its page object is the AdapterContext.

#include <windows.h>
#include <prsht.h>

INT_PTR CALLBACK PerformanceDialogProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
// Frees the context when the sheet releases the page.
UINT CALLBACK PerformancePageCallback(HWND page, UINT message, PROPSHEETPAGEW* sheetPage);
