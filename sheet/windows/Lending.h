#pragma once
// Lends a library what this Windows lacks: the functions that a lending DLL exports.

#include <windows.h>

#include "../SheetText.h"

namespace sheet {

// From now on that DLL is lent from, also to this program, which asks for processors and devices as
// the library does. Refusal: it can't be loaded.
void LendFrom(const Text& dll);
// Points each import of the library that the lending DLL exports to it. Does nothing without one.
void Lend(HMODULE library);
// The lending DLL, or null.
HMODULE Lender();

}  // namespace sheet
