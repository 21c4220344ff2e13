#include "ProcessEnds.h"

#include <gtest/gtest.h>

#include "Call.h"
#include "Drive.h"
#include "MachineFile.h"
#include "Registry.h"
#include "Text.h"

namespace {

// All files of a directory, whose path ends in a backslash, and of those in it.
void AddFiles(platform::Drive& drive, const std::u16string& directory,
              std::map<std::u16string, std::string>& files) {
    std::vector<platform::Volume::Entry> entries;
    drive.List(directory, entries);
    for (const auto& [name, kind] : entries) {
        if (name == u"." || name == u"..") continue;
        const std::u16string path = directory + name;
        if (kind == platform::Volume::Kind::Directory)
            AddFiles(drive, path + u'\\', files);
        else
            files.emplace(path, drive.ReadWholeFile(path).value_or(""));
    }
}

}  // namespace

Remains Remains::Of(platform::Machine& machine) {
    Remains remains = {platform::FormatRegistry(machine.Get<platform::Registry>().Tree()), {}};
    AddFiles(machine.Get<platform::Drive>(), u"C:\\", remains.files);
    return remains;
}

void Remains::PutInto(platform::Machine& machine) const {
    const platform::QuietScope quiet;
    const auto error = platform::LoadMachineFile(machine, registry);
    EXPECT_FALSE(error.has_value()) << error->line << ": " << error->message;
    PutFilesInto(machine);
}

void Remains::PutFilesInto(platform::Machine& machine) const {
    const platform::QuietScope quiet;
    for (const auto& [path, bytes] : files)
        EXPECT_TRUE(machine.Get<platform::Drive>().WriteWholeFile(path, bytes));
}

ProcessEnds::ProcessEnds(platform::Machine& machine) : m_machine(machine) {
    machine.beforeCall = [this](const char* call, std::u16string_view argument) {
        std::string name = call;
        if (!argument.empty()) name += " " + platform::ToUtf8(std::u16string(argument));
        m_ends.push_back({std::move(name), Take()});
    };
}

ProcessEnds::~ProcessEnds() {
    m_machine.beforeCall = nullptr;
}

std::shared_ptr<const Remains> ProcessEnds::Take() {
    const auto& registry = m_machine.Get<platform::Registry>();
    std::map<std::u16string, std::string> files;
    AddFiles(m_machine.Get<platform::Drive>(), u"C:\\", files);
    const bool isSame = !m_ends.empty() && m_generation == registry.Generation() &&
                        m_ends.back().remains->files == files;
    m_generation = registry.Generation();
    if (isSame) return m_ends.back().remains;
    return std::make_shared<const Remains>(
        Remains{platform::FormatRegistry(registry.Tree()), std::move(files)});
}
