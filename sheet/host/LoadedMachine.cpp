#include "LoadedMachine.h"

#include <filesystem>
#include <fstream>

#include "../Transcript.h"
#include "AccessLayerImage.h"
#include "Drive.h"
#include "FileReplacement.h"
#include "LibraryImage.h"
#include "MachineFile.h"
#include "Modules.h"

namespace sheet {

namespace {

void PrintCall(const platform::Trace::Record& call) {
    const std::string argument = call.argument.empty() ? "-" : Field(call.argument);
    const std::string thread = "thread " + std::to_string(call.thread);
    PrintError(Line({"call", call.name, argument, thread, call.failed ? "fault" : "-"}));
}

}  // namespace

std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::error_code ignored;
    // A folder opens like a file.
    if (!file || std::filesystem::is_directory(path, ignored))
        throw Refusal{path + ": can't be read"};
    std::string bytes;
    char block[65536];
    while (file.read(block, sizeof block), file.gcount() > 0)
        bytes.append(block, static_cast<std::size_t>(file.gcount()));
    if (file.bad()) throw Refusal{path + ": can't be read"};
    return bytes;
}

void Load(platform::Machine& machine, const Options& options) {
    const auto error = platform::LoadMachineFile(machine, ReadWholeFile(options.machine));
    if (error)
        throw Refusal{options.machine + ":" + std::to_string(error->line) + ": " + error->message};
    if (options.files && !machine.Get<platform::Drive>().Mount(*options.files))
        throw Refusal{*options.files + ": can't be used as drive C:"};
    machine.Get<platform::Modules>().Install(LibraryImage());
    machine.Get<platform::Modules>().Install(platform::AccessLayerImage());
    if (options.trace) machine.trace.onCall = PrintCall;
}

void Save(platform::Machine& machine, const std::string& path) {
    ReplaceFileContent(path, platform::SaveMachineFile(machine));
}

SessionUser::SessionUser(platform::Machine& machine, Session& session)
    : m_machine(machine), m_session(session) {
    m_machine.user = this;
}

SessionUser::~SessionUser() {
    m_machine.user = nullptr;
}

int SessionUser::OnMessageBox(const platform::MessageBoxRequest& box) {
    return m_session.OnMessageBox({box.window, box.caption, box.text, box.style});
}

std::optional<std::u16string> SessionUser::OnFileDialog(const platform::FileDialogRequest&) {
    return m_session.OnFileDialog();
}

bool SessionUser::OnIdle() {
    return m_session.OnIdle();
}

}  // namespace sheet
