#pragma once
// The tuning log as a person reads it.

#include <string>

namespace sheet {

// The whole log in UTF-8; empty when there is none. Refusal: it is there and
// can't be read.
std::string ReadTuningLog();

}  // namespace sheet
