#pragma once
// What holds for the reading of any bytes as a machine file.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "MachineFile.h"
#include "Registry.h"
#include "RegistryChanges.h"

// What is wrong; empty when nothing is. base: the file of a machine into which the bytes are
// merged.
inline std::string WrongWithReading(std::string_view base, std::string_view bytes) {
    using namespace platform;
    Machine machine;
    Registry& registry = machine.Get<Registry>();
    if (LoadMachineFile(machine, base)) return "the base can't be read";
    RegistryTree before = registry.Snapshot();
    const std::string savedBefore = SaveMachineFile(machine);
    if (const auto error = MergeMachineFile(machine, bytes)) {
        const auto lines = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
        if (error->line == 0 || error->line > lines + 1) return "no such line";
        if (error->message.empty()) return "no message";
        const auto again = LoadMachineFile(machine, bytes);
        if (!again || again->line != error->line) return "loading says something else than merging";
        return SaveMachineFile(machine) == savedBefore ? ""
                                                       : "refused, but it has changed something";
    }
    const std::string merged = SaveMachineFile(machine);
    RegistryTree after = registry.Snapshot();
    const auto changes = FormatChanges(before, after, {});
    const auto undo = FormatChanges(after, before, {});
    if (changes && undo) {  // else a name can't be written
        if (MergeMachineFile(machine, *undo) || SaveMachineFile(machine) != savedBefore)
            return "undo doesn't lead back:\n" + *undo;
        if (MergeMachineFile(machine, *changes) || SaveMachineFile(machine) != merged)
            return "changes don't lead there again:\n" + *changes;
    }
    if (LoadMachineFile(machine, bytes)) return "merged, but not loaded";
    const std::string saved = SaveMachineFile(machine);
    if (const auto error = LoadMachineFile(machine, saved))
        return "what was saved isn't read: " + error->message;
    return SaveMachineFile(machine) == saved ? "" : "what was saved reads differently";
}
