#include "LibraryImage.h"

#include <windows.h>
#include <prsht.h>
#include <setupapi.h>

// The resources stand in the program as the compiler of the script has written them.
asm(".pushsection .rodata\n"
    ".balign 8\n"
    ".local library_resources_begin\n"
    ".local library_resources_end\n"
    "library_resources_begin:\n"
    ".incbin \"" LIBRARY_RES_FILE
    "\"\n"
    "library_resources_end:\n"
    ".popsection\n");

extern "C" {
extern const BYTE library_resources_begin[];
extern const BYTE library_resources_end[];

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
BOOL CALLBACK WinTsrTunePropPageProvider(PSP_PROPSHEETPAGE_REQUEST request,
                                         LPFNADDPROPSHEETPAGE addPage, LPARAM addPageParameter);
BOOL CALLBACK CvtPropPageProvider(PSP_PROPSHEETPAGE_REQUEST request, LPFNADDPROPSHEETPAGE addPage,
                                  LPARAM addPageParameter);
}

namespace {

template <class Function>
FARPROC Export(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

}  // namespace

platform::ModuleImage LibraryImage() {
    return {
        u"WinTsrTune_ipoib.dll",
        DllMain,
        {library_resources_begin, library_resources_end},
        {{"DllMain", Export(DllMain)},
         {"WinTsrTunePropPageProvider", Export(WinTsrTunePropPageProvider)},
         {"CvtPropPageProvider", Export(CvtPropPageProvider)}},
    };
}
