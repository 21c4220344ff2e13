#pragma once
// Ids of the dialogs of Conformance.rc and of their controls.

#define IDD_BUTTONS 102
#define IDD_LISTS 103
#define IDD_RICH 104
#define IDD_PAGE 105
#define IDD_MODAL 106
#define IDD_MODAL_DEFAULT 107

// 11 to 14 are a group of radio buttons, 15 and 16 the next one.
#define IDC_FIRST_RADIO 11
#define IDC_LAST_RADIO 16
#define IDC_PUSH 21
#define IDC_AUTO_CHECK 23
#define IDC_RICH 44
#define IDC_COMBO 51
#define IDC_LIST_BOX 52
#define IDC_LIST_VIEW 53
#define IDC_NUMBER 54
#define IDC_TEXT 55
// The buttons of a dialog that has neither IDOK nor IDCANCEL.
#define IDC_ACCEPT 61
#define IDC_REJECT 62
