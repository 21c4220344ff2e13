#pragma once
// The commands that were started with WinExec.

#include <string>
#include <vector>

#include "Machine.h"

namespace platform {

struct Commands : Part {
    // The command lines in order, without those whose start a fault prevented.
    std::vector<std::string> lines;
};

}  // namespace platform
