// The device manager over a machine that is loaded from a file.

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <new>
#include <string_view>

#include "../CommandTable.h"
#include "../Transcript.h"
#include "Arguments.h"
#include "Call.h"
#include "LoadedMachine.h"

namespace sheet {

namespace {

constexpr int kExitRefused = 2;
constexpr int kExitStopped = 3;

// Called by the new operators when there is no memory, in whatever thread. Nobody can go on then:
// what has been saved is whole, and nothing else is written.
[[noreturn]] void EndWithoutMemory() {
    constexpr std::string_view kLine = "sheet: out of memory\n";
    (void)!write(STDERR_FILENO, kLine.data(), kLine.size());
    std::_Exit(kExitRefused);
}

int RunSession(platform::Machine& machine, const Options& options, Script& script) {
    const platform::QuietScope quiet;
    Session session(script, Execute);
    const SessionUser user(machine, session);
    int exitCode = 0;
    try {
        exitCode =
            session.Run(options.device ? std::optional(FromUtf8(*options.device)) : std::nullopt);
    } catch (const platform::MachineEnded&) {
        // The machine has said why. It can't be taken down: its threads stand where they stood.
        std::_Exit(kExitStopped);
    }
    return exitCode;
}

int Run(const Options& options) {
    if (options.help) {
        Print(Usage());
        return 0;
    }
    std::ifstream file;
    const bool fromFile = options.script && *options.script != "-";
    if (fromFile) {
        file.open(*options.script);
        if (!file) throw Refusal{*options.script + ": can't be read"};
    }
    const bool asks = !options.script && isatty(STDIN_FILENO) != 0;
    Script script(fromFile ? static_cast<std::istream&>(file) : std::cin,
                  fromFile ? *options.script : "standard input",
                  asks           ? Script::Echo::Prompt
                  : options.echo ? Script::Echo::Lines
                                 : Script::Echo::None);

    platform::Machine machine;
    Load(machine, options);
    const int exitCode = RunSession(machine, options, script);
    if (options.save && exitCode != kExitRefused) Save(machine, *options.save);
    return exitCode;
}

}  // namespace

}  // namespace sheet

int main(int argc, char** argv) {
    std::set_new_handler(sheet::EndWithoutMemory);
    try {
        return sheet::Run(sheet::ReadArguments({argv + 1, argv + argc}));
    } catch (const sheet::Refusal& refusal) {
        sheet::PrintRefusal(refusal.reason);
        return sheet::kExitRefused;
    }
}
