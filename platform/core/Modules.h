#pragma once
// Modules that the machine can load: the library's own image, and the system's that the stand-in
// plays (Riched20.dll, ibal.dll).

#include <map>
#include <span>
#include <string>
#include <vector>

#include "Machine.h"

namespace platform {

// A module as a program hands it to the machine.
struct ModuleImage {
    std::u16string name;  // as given to LoadLibraryW, e.g. u"WinTsrTune_ipoib.dll"
    BOOL(WINAPI* entry)(HINSTANCE, DWORD, LPVOID) = nullptr;  // may be null
    std::span<const BYTE> resources;                          // a .res file as it stands
    std::map<std::string, FARPROC> exports;
};

class Modules : public Part {
  public:
    Modules();
    ~Modules() override;
    // Makes the image loadable by LoadLibraryW. An image of that name is replaced.
    void Install(ModuleImage image);
    // A loaded module's image, or null.
    const ModuleImage* Find(HMODULE module) const;
    // The module of that name if it is loaded, else null with the last error set. Not counted.
    HMODULE Loaded(const char16_t* name) const;

    // The work of LoadLibraryW, FreeLibrary and GetProcAddress: counted references, the entry point
    // called with DLL_PROCESS_ATTACH and DLL_PROCESS_DETACH at the first and the last. Names
    // compare without regard to case. Load gives null and sets the last error.
    HMODULE Load(const char16_t* name, const char* call);
    bool Free(HMODULE module);
    FARPROC Procedure(HMODULE module, const char* name) const;
    // The process exits: each loaded module, the one loaded last first, gets DLL_PROCESS_DETACH
    // with a reserved parameter that isn't null. FreeLibrary passes null.
    void OnExit() override;

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace platform
