#include "Arguments.h"

#include "../Script.h"
#include "../Transcript.h"

namespace sheet {

namespace {

constexpr struct {
    const char* name;
    std::optional<std::string> Options::*value;
} kValues[] = {
    {"--device", &Options::device},
    {"--script", &Options::script},
    {"--files", &Options::files},
    {"--save", &Options::save},
};

constexpr unsigned long long kMostCalls = 1'000'000'000'000;

}  // namespace

Options ReadArguments(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        std::optional<std::string> Options::*value = nullptr;
        for (const auto& known : kValues) {
            if (argument == known.name) value = known.value;
        }
        if (value != nullptr) {
            if (++i == arguments.size()) throw Refusal{argument + " needs a value (try --help)"};
            options.*value = arguments[i];
        } else if (argument == "--stop-at") {
            const std::string number = ++i < arguments.size() ? arguments[i] : std::string();
            options.stopAt = ReadNumber(number, kMostCalls).value_or(0);
            if (options.stopAt == 0) throw Refusal{"--stop-at needs the number of a call, from 1"};
        } else if (argument == "--echo") {
            options.echo = true;
        } else if (argument == "--trace") {
            options.trace = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (argument.starts_with("-")) {
            throw Refusal{"there is no option " + argument + " (try --help)"};
        } else if (options.machine.empty()) {
            options.machine = argument;
        } else {
            throw Refusal{"there is one machine file too many: " + argument};
        }
    }
    if (options.machine.empty() && !options.help)
        throw Refusal{"a machine file is missing (try --help)"};
    return options;
}

std::string Usage() {
    return "sheet MACHINE.reg [--device INSTANCE-ID] [--script FILE|-] [--files DIR]\n"
           "      [--save OUT.reg] [--stop-at N] [--echo] [--trace]\n"
           "\n"
           "Opens the property sheet of a network adapter, or of its bus device, on the machine\n"
           "that a registry export describes, and follows a script, or the terminal.\n"
           "\n"
           "  --device  the device; else the first whose class key names a page provider, else\n"
           "            the first network adapter\n"
           "  --script  commands, one a line; the command help lists them\n"
           "  --files   the folder that is drive C:, made when missing; else an empty drive\n"
           "  --save    writes the machine's registry when the script is at its end\n"
           "  --stop-at ends the process, as a power failure would, at that call of the library\n"
           "            after the first sheet is shown, which doesn't happen any more\n"
           "  --echo    prints the script's lines as well, comments too\n"
           "  --trace   prints each of the library's system calls to standard error\n"
           "\n"
           "Exit code: 0; 2 when an argument, a file or a command was refused, or the output "
           "can't\n"
           "be written; 3 when the machine stopped, as in a deadlock, for lack of memory, or at\n"
           "the call that was asked for.\n";
}

}  // namespace sheet
