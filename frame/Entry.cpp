#include <windows.h>
#include <new>

#include "LibraryState.h"
#include "RegistryServices.h"
#include "WindowsVersion.h"

namespace {

// The record lies here, so that making it can't fail.
alignas(LibraryState) BYTE storage[sizeof(LibraryState)];
LibraryState* state = nullptr;

bool VendorKeyOpens() {
    ScopedRegKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, kVendorKey, 0, KEY_QUERY_VALUE, key.Receive()) ==
           ERROR_SUCCESS;
}

void Attach(LibraryState& library) {
    library.isVistaOrLater = IsVistaOrLater();
    library.vendorKeyMissing = !VendorKeyOpens();
    library.helpDocument.reset(new (std::nothrow) HelpDocument);
    if (library.helpDocument) LoadHelpDocument(*library.helpDocument);
    library.richEditLibrary.Reset(LoadLibraryW(TEXT("Riched20.dll")));
}

void Detach(LibraryState& library) {
    if (library.helpDocument) ReleaseHelpDocument(*library.helpDocument);
    library.helpDocument.reset();
    library.richEditLibrary.Reset();
}

}  // namespace

LibraryState& Library() {
    return *state;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) state = new (storage) LibraryState;
    if (!state) return TRUE;
    state->moduleHandle = module;
    if (reason == DLL_PROCESS_ATTACH) Attach(*state);
    if (reason == DLL_PROCESS_DETACH) {
        Detach(*state);
        state->~LibraryState();
        state = nullptr;
    }
    return TRUE;
}
