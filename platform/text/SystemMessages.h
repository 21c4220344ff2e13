#pragma once
// The system's English texts of its error codes.

#include <minwindef.h>

namespace platform {

// Without its final line break; null when the system has no text for that code. A code of the
// Windows facility (0x8007xxxx) has the text of its low half.
const char* SystemMessage(DWORD code);

}  // namespace platform
