#pragma once
// Ids of the dialogs of Conformance.rc and of their controls.

#define IDD_BUTTONS 102
#define IDD_RICH 104
#define IDD_PAGE 105

// 11 to 14 are a group of radio buttons, 15 and 16 the next one.
#define IDC_FIRST_RADIO 11
#define IDC_LAST_RADIO 16
#define IDC_PUSH 21
#define IDC_AUTO_CHECK 23
#define IDC_RICH 44
