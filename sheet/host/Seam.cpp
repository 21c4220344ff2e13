#include "../Seam.h"

#include "../Transcript.h"
#include "Call.h"
#include "Drive.h"
#include "LoadedMachine.h"
#include "MachineFile.h"
#include "Registry.h"
#include "RegistryChanges.h"
#include "StopPoint.h"

namespace sheet {

using platform::Machine;

namespace {

constexpr std::u16string_view kRestarts = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts";

// The registry as it was when this part was made.
struct RememberedRegistry : platform::Part {
    platform::RegistryTree tree = Machine::Current().Get<platform::Registry>().Snapshot();
};

}  // namespace

LibraryCall::LibraryCall() : m_scope(new platform::CallbackScope) {}

LibraryCall::~LibraryCall() {
    delete static_cast<platform::CallbackScope*>(m_scope);
}

void LibraryLoaded(HMODULE) {}

void SheetShown() {
    Machine& machine = Machine::Current();
    machine.Get<StopPoint>().CountFromNow(machine);
}

std::uint64_t MachineTime() {
    return Machine::Current().scheduler.Now();
}

void LetTimePass(std::uint64_t milliseconds) {
    Machine::Current().scheduler.UserWaits(milliseconds);
}

void WakeAt(std::uint64_t time) {
    Machine::Current().scheduler.UserWakesAt(time);
}

bool MayBoxComeYet(int) {
    return false;
}

void MergeFile(const std::string& path) {
    const auto error = platform::MergeMachineFile(Machine::Current(), ReadWholeFile(path));
    if (error) throw Refusal{path + ":" + std::to_string(error->line) + ": " + error->message};
}

void RememberRegistry() {
    Machine::Current().Get<RememberedRegistry>();
}

std::string RegistryChanges(Changes changes) {
    const auto& before = Machine::Current().Get<RememberedRegistry>().tree;
    const auto& now = Machine::Current().Get<platform::Registry>().Tree();
    const auto text = changes == Changes::Made ? platform::FormatChanges(before, now, kRestarts)
                                               : platform::FormatChanges(now, before, kRestarts);
    if (!text) throw Refusal{"a changed key or value has a name that no file can hold"};
    return *text;
}

std::string LibraryOutput() {
    const auto& streams = Machine::Current().Get<platform::Streams>();
    std::string text = streams.output + streams.error;
    if (!text.empty() && text.back() != '\n') text += '\n';
    return text;
}

}  // namespace sheet
