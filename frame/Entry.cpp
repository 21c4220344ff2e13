#include <windows.h>
#include <new>

#include "LibraryState.h"
#include "RegistryKey.h"
#include "RegistryPaths.h"
#include "WindowsVersion.h"

namespace {

bool VendorKeyOpens() {
    RegistryKey key;
    return key.Open(kVendorKey, KEY_QUERY_VALUE) == ERROR_SUCCESS;
}

void Attach(LibraryState& library) {
    library.isVistaOrLater = IsVistaOrLater();
    library.vendorKeyMissing = !VendorKeyOpens();
    library.helpDocument.reset(new (std::nothrow) HelpDocument);
    if (library.helpDocument) LoadHelpDocument(*library.helpDocument);
    library.richEditLibrary.Reset(LoadLibraryW(TEXT("Riched20.dll")));
}

void Detach(LibraryState& library) {
    library.helpDocument.reset();
    library.richEditLibrary.Reset();
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            MakeLibraryState(module);
            Attach(Library());
            break;
        case DLL_PROCESS_DETACH:
            // When the process ends, its threads are gone, wherever they were, and other libraries
            // may be too: then everything is left to the system.
            if (reserved) break;
            Detach(Library());
            DropLibraryState();
            break;
        default:
            break;
    }
    return TRUE;
}
