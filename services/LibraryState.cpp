#include "LibraryState.h"

#include <new>

namespace {

// The record lies here, so that making it can't fail.
alignas(LibraryState) BYTE storage[sizeof(LibraryState)];
LibraryState* state = nullptr;

}  // namespace

LibraryState& Library() {
    return *state;
}

void MakeLibraryState(HINSTANCE module) {
    state = new (storage) LibraryState;
    state->moduleHandle = module;
}

void DropLibraryState() {
    state->~LibraryState();
    state = nullptr;
}
