#pragma once
// What a loaded DLL calls of others, by name (the import table of the PE format, winnt.h).

#include <vector>

#include <windows.h>

namespace sheet {

// Of whatever form.
using ImportedFunction = void (*)();

struct Import {
    const char* function;    // borrowed from the DLL
    ImportedFunction* slot;  // through which the DLL calls it; read-only memory
};

std::vector<Import> ImportsOf(HMODULE library);
// Lets the import lead elsewhere. Refusal: the system doesn't allow it.
void Point(const Import& import, ImportedFunction function);
// The same for the import of that name; nothing when the library doesn't import it.
void PointImport(HMODULE library, const char* name, ImportedFunction function);

}  // namespace sheet
