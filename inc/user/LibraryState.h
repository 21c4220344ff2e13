#pragma once
// What the library knows as long as it is loaded, shared by every sheet of the process. Built at
// process attach, gone at process detach. But for the counters it is used on the sheet's thread
// only.

#include <windows.h>
#include <atomic>
#include <memory>

#include "AutoClasses.h"
#include "HelpDocument.h"
#include "PageWindowTable.h"

struct LibraryState {
    HINSTANCE moduleHandle = nullptr;
    bool isVistaOrLater = false;                 // major version 6 or more at load
    bool vendorKeyMissing = false;               // SOFTWARE\Corvanta didn't open at load
    std::unique_ptr<HelpDocument> helpDocument;  // may be null
    ScopedModule richEditLibrary;                // holds the rich edit window classes
    PageWindowTable informationPages;
    PageWindowTable portProtocolPages;
    PageWindowTable teamingPages;
    PageWindowTable vlanPages;
    PageWindowTable advancedPages;
    PageWindowTable diagnosticsPages;
    // How many Teaming or VLAN tabs of this process hold the right to configure.
    std::atomic<LONG> activeConfigTabCount{0};
    // Numbers the MAC addresses made up for port GUIDs that no rule covers.
    std::atomic<ULONG> fallbackMacCount{0};
};

// The record. Only while the library is attached.
LibraryState& Library();
// For the entry point alone: makes the record at process attach, and takes it away at detach.
void MakeLibraryState(HINSTANCE module);
void DropLibraryState();
