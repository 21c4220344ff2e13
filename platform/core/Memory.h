#pragma once
// Blocks of local memory, for the functions that hand them out beside LocalAlloc.

#include <cstddef>

namespace platform {

// A block that LocalFree takes, entered in the ledger under that call's name; zeroed. Null when
// memory runs out.
void* NewLocalBlock(std::size_t bytes, const char* call);

}  // namespace platform
