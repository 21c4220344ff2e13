// The device manager over a machine that is loaded from a file.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <string_view>

#include "../CommandTable.h"
#include "../Transcript.h"
#include "Arguments.h"
#include "Call.h"
#include "LineEditor.h"
#include "LoadedMachine.h"
#include "StopPoint.h"

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

// Ends the process as a power failure would: what is saved is the registry as it stands, and
// nothing of the library or the machine runs any more.
[[noreturn]] void StopAt(const std::string& call, platform::Machine& machine,
                         const Options& options) {
    Print(call);
    try {
        if (options.save) Save(machine, *options.save);
    } catch (const Refusal& refusal) {
        PrintRefusal(refusal.reason);
        std::_Exit(kExitRefused);
    }
    std::_Exit(HasPrintingFailed() ? kExitRefused : kExitStopped);
}

int RunSession(platform::Machine& machine, const Options& options, Script& script) {
    const platform::QuietScope quiet;
    Session session(script, Execute, Complete);
    const SessionUser user(machine, session);
    auto& stop = machine.Get<StopPoint>();
    stop.callNumber = options.stopAt;
    stop.onStop = [&](const char* call, std::u16string_view argument) {
        // A session that was refused leaves nothing behind, whatever ends it.
        if (session.HasRefused()) return;
        StopAt(Line({"stopped", call, argument.empty() ? "-" : Field(argument)}), machine, options);
    };
    try {
        return session.Run(options.device ? std::optional(FromUtf8(*options.device))
                                          : std::nullopt);
    } catch (const platform::MachineEnded&) {
        // The machine has said why. It can't be taken down: its threads stand where they stood.
        std::_Exit(kExitStopped);
    }
}

int Run(const Options& options) {
    if (options.help) {
        Print(Usage());
        return HasPrintingFailed() ? kExitRefused : 0;
    }
    std::ifstream file;
    const bool fromFile = options.script && *options.script != "-";
    if (fromFile) {
        std::error_code ignored;
        file.open(*options.script);
        // A folder opens like a file.
        if (!file || std::filesystem::is_directory(*options.script, ignored))
            throw Refusal{*options.script + ": can't be read"};
    }
    LineEditor editor;
    Script script = !options.script && LineEditor::IsAtTerminal()
                        ? Script(editor)
                        : Script(fromFile ? static_cast<std::istream&>(file) : std::cin,
                                 fromFile ? *options.script : "standard input",
                                 options.echo ? Script::Echo::Lines : Script::Echo::None);

    platform::Machine machine;
    Load(machine, options);
    const int exitCode = RunSession(machine, options, script);
    if (options.save && exitCode != kExitRefused) Save(machine, *options.save);
    return exitCode;
}

// A standard stream that the caller has closed would be the next file that is opened.
void KeepStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

}  // namespace sheet

int main(int argc, char** argv) {
    sheet::KeepStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    std::set_new_handler(sheet::EndWithoutMemory);
    // So that a failure to read is told from the end.
    std::ios::sync_with_stdio(false);
    try {
        return sheet::Run(sheet::ReadArguments({argv + 1, argv + argc}));
    } catch (const sheet::Refusal& refusal) {
        sheet::PrintRefusal(refusal.reason);
        return sheet::kExitRefused;
    }
}
