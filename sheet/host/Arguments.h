#pragma once
// The command line of the host's program.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sheet {

struct Options {
    std::string machine;
    std::optional<std::string> device;
    std::optional<std::string> script;  // "-" for standard input
    std::optional<std::string> files;
    std::optional<std::string> save;
    std::uint64_t stopAt = 0;  // the call at which the process ends; 0: at none
    bool echo = false;
    bool trace = false;
    bool help = false;
};

// arguments: without the program's name. Refusal: an option or argument that doesn't exist, an
// option without its value, no machine file.
Options ReadArguments(const std::vector<std::string>& arguments);

std::string Usage();

}  // namespace sheet
