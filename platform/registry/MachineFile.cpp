#include "MachineFile.h"

#include <utility>
#include <vector>

#include "LocalTime.h"
#include "MachineFileReader.h"
#include "Registry.h"
#include "StandInForm.h"

namespace platform {
namespace {

constexpr std::u16string_view standIn = u"SOFTWARE\\StandIn";
constexpr std::u16string_view faultsKey = u"SOFTWARE\\StandIn\\Faults";
constexpr std::u16string_view timeValue = u"Time";

// Takes the rows of a tree's `Faults` key.
void TakeFaults(FaultPlan& faults, const RegistryTree& tree) {
    std::vector<FaultPlan::Row> rows;
    if (const auto key = tree.Find(RegistryRoot::LocalMachine, faultsKey)) {
        for (const RegistryValue& value : key->Values())
            rows.push_back({std::u16string(value.Name()), TextOf(value.Data())});
    }
    faults.SetRows(rows);
}

// Checks what a file says of the stand-in's facts.
class FactChecker : public MachineFileSink {
  public:
    Refusal OpenKey(RegistryRoot root, std::u16string_view path) override {
        return m_form.OpenKey(root, path);
    }
    Refusal DeleteKey(RegistryRoot, std::u16string_view) override { return std::nullopt; }
    Refusal SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) override {
        return m_form.CheckValue(name, type, data);
    }
    Refusal DeleteValue(std::u16string_view) override { return std::nullopt; }

  private:
    StandInForm m_form;
};

// Brings a tree to what the file says.
class TreeWriter : public FactChecker {
  public:
    explicit TreeWriter(RegistryTree& tree) : m_tree(tree) {}

    Refusal OpenKey(RegistryRoot root, std::u16string_view path) override {
        if (auto refusal = FactChecker::OpenKey(root, path)) return refusal;
        KeepCommonSteps(root, path);
        std::u16string_view rest = path.substr(m_steps.size() > 1 ? m_steps.back().end : 0);
        for (auto part = NextPathPart(rest); !part.empty(); part = NextPathPart(rest)) {
            auto key = m_tree.Create(m_steps.back().key, part);
            m_steps.push_back({path.size() - rest.size(), std::move(key)});
        }
        m_path = path;
        return std::nullopt;
    }
    Refusal DeleteKey(RegistryRoot root, std::u16string_view path) override {
        m_steps.clear();
        if (const auto key = m_tree.Find(root, path)) m_tree.Delete(key);
        return std::nullopt;
    }
    Refusal SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) override {
        if (auto refusal = FactChecker::SetValue(name, type, data)) return refusal;
        m_tree.SetValue(*m_steps.back().key, name, type, data);
        return std::nullopt;
    }
    Refusal DeleteValue(std::u16string_view name) override {
        m_tree.DeleteValue(*m_steps.back().key, name);
        return std::nullopt;
    }

  private:
    // A key on the way to the one opened last; end: where its name ends in m_path.
    struct Step {
        std::size_t end;
        std::shared_ptr<RegistryKey> key;
    };

    // An export goes through the tree, so that a key shares most of its way with the one before.
    void KeepCommonSteps(RegistryRoot root, std::u16string_view path) {
        if (m_steps.empty() || m_steps.front().key != m_tree.Root(root))
            m_steps.assign(1, {0, m_tree.Root(root)});
        const auto isOnPath = [&](std::size_t end) {
            return path.substr(0, end) == std::u16string_view(m_path).substr(0, end) &&
                   (path.size() == end || path[end] == u'\\');
        };
        while (m_steps.size() > 1 && !isOnPath(m_steps.back().end))
            m_steps.pop_back();
    }

    RegistryTree& m_tree;
    std::vector<Step> m_steps;  // begins with the root
    std::u16string m_path;
};

}  // namespace

std::optional<MachineFileError> LoadMachineFile(Machine& machine, std::string_view bytes) {
    RegistryTree tree;
    TreeWriter writer(tree);
    if (auto error = ReadMachineFile(bytes, writer)) return error;
    tree.LinkControlSet();

    const auto facts = tree.Find(RegistryRoot::LocalMachine, standIn);
    const RegistryValue* time = facts ? facts->FindValue(timeValue) : nullptr;
    if (const auto start = time ? ParseTime(TextOf(time->Data())) : std::nullopt)
        machine.scheduler.SetStart(*start);
    TakeFaults(machine.faults, tree);
    machine.Get<Registry>().Replace(std::move(tree));
    return std::nullopt;
}

std::optional<MachineFileError> MergeMachineFile(Machine& machine, std::string_view bytes) {
    FactChecker checker;
    if (auto error = ReadMachineFile(bytes, checker)) return error;
    RegistryTree& tree = machine.Get<Registry>().Tree();
    TreeWriter writer(tree);
    if (auto error = ReadMachineFile(bytes, writer)) return error;
    TakeFaults(machine.faults, tree);
    return std::nullopt;
}

}  // namespace platform
