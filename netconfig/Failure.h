#pragma once
// How an operation of the layer leaves: with a result and the line that tells of it.

#include <windows.h>

#include "Diagnostics.h"

// Refusals for which Windows has no code: an object that can't be allocated, an adapter that
// doesn't fit, a name that is taken.
inline constexpr HRESULT kRefused = static_cast<HRESULT>(0x800400FF);
// "The system cannot find the file specified", as an HRESULT: what isn't in the MUX tree.
inline constexpr HRESULT kNotInTree = static_cast<HRESULT>(0x80070002);

// A result as the lines print it, with %x.
inline unsigned Code(HRESULT result) {
    return static_cast<unsigned>(result);
}

// Prints the line and gives the result; for `return Stop(...)`.
template <class... Arguments>
HRESULT Stop(HRESULT result, const char* format, Arguments... arguments) {
    PrintDiagnostic(format, arguments...);
    return result;
}
