#include "Lending.h"

#include "../Transcript.h"
#include "Imports.h"

namespace sheet {

namespace {

HMODULE g_lender = nullptr;

}  // namespace

void LendFrom(const Text& dll) {
    g_lender = LoadLibraryW(dll.c_str());
    if (g_lender == nullptr) {
        throw Refusal{ToUtf8(dll) + ": can't be loaded: error " + std::to_string(GetLastError())};
    }
    Lend(GetModuleHandleW(nullptr));
}

void Lend(HMODULE library) {
    if (g_lender == nullptr) return;
    for (const Import& import : ImportsOf(library)) {
        const auto lent =
            reinterpret_cast<ImportedFunction>(GetProcAddress(g_lender, import.function));
        if (lent != nullptr) Point(import, lent);
    }
}

HMODULE Lender() {
    return g_lender;
}

}  // namespace sheet
