#include "Imports.h"

#include <cstring>
#include <string>

#include "../Transcript.h"

namespace sheet {

std::vector<Import> ImportsOf(HMODULE library) {
    BYTE* const image = reinterpret_cast<BYTE*>(library);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<Import> imports;
    if (directory.VirtualAddress == 0) return imports;
    for (auto* dll =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + directory.VirtualAddress);
         dll->Name != 0; ++dll) {
        if (dll->OriginalFirstThunk == 0) continue;  // the names are gone
        auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(image + dll->OriginalFirstThunk);
        auto* slot = reinterpret_cast<ImportedFunction*>(image + dll->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* const entry =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(image + name->u1.AddressOfData);
            imports.push_back({reinterpret_cast<const char*>(entry->Name), slot});
        }
    }
    return imports;
}

void Point(const Import& import, ImportedFunction function) {
    DWORD protection = 0;
    if (!VirtualProtect(import.slot, sizeof(ImportedFunction), PAGE_READWRITE, &protection)) {
        throw Refusal{std::string("the import ") + import.function + " can't be changed: error " +
                      std::to_string(GetLastError())};
    }
    *import.slot = function;
    VirtualProtect(import.slot, sizeof(ImportedFunction), protection, &protection);
}

void PointImport(HMODULE library, const char* name, ImportedFunction function) {
    for (const Import& import : ImportsOf(library)) {
        if (std::strcmp(import.function, name) == 0) Point(import, function);
    }
}

}  // namespace sheet
