#include "MachineFile.h"

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include <winnt.h>

#include "LocalTime.h"
#include "MachineFileReader.h"
#include "Registry.h"
#include "Text.h"

namespace platform {
namespace {

constexpr std::u16string_view standIn = u"SOFTWARE\\StandIn";
constexpr std::u16string_view faultsKey = u"SOFTWARE\\StandIn\\Faults";
constexpr std::u16string_view timeValue = u"Time";

// A REG_SZ up to its terminator.
std::optional<std::u16string> TextOf(DWORD type, std::span<const BYTE> data) {
    if (type != REG_SZ) return std::nullopt;
    std::u16string text(data.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(char16_t));
    return text.substr(0, text.find(u'\0'));
}

std::optional<FaultPlan::Row> FaultRow(std::u16string_view name, DWORD type,
                                       std::span<const BYTE> data) {
    const auto text = TextOf(type, data);
    if (!text) return std::nullopt;
    FaultPlan::Row row{std::u16string(name), *text};
    if (!FaultPlan().SetRows({row})) return std::nullopt;
    return row;
}

// Takes the rows of a tree's `Faults` key. Those that the files gave can be read; others count for
// nothing.
void TakeFaults(FaultPlan& faults, const RegistryTree& tree) {
    std::vector<FaultPlan::Row> rows;
    if (const auto key = tree.Find(RegistryRoot::LocalMachine, faultsKey)) {
        for (const RegistryValue& value : key->Values()) {
            if (auto row = FaultRow(value.Name(), value.Type(), value.Data()))
                rows.push_back(std::move(*row));
        }
    }
    faults.SetRows(rows);
}

// Checks the facts that the machine itself takes from a file.
class FactChecker : public MachineFileSink {
  public:
    Refusal OpenKey(RegistryRoot root, std::u16string_view path) override {
        const bool local = root == RegistryRoot::LocalMachine;
        m_inStandIn = local && EqualNames(path, standIn);
        m_inFaults = local && EqualNames(path, faultsKey);
        return std::nullopt;
    }
    Refusal DeleteKey(RegistryRoot, std::u16string_view) override { return std::nullopt; }
    Refusal SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) override {
        if (m_inFaults) {
            if (!FaultRow(name, type, data))
                return "a fault reads \"<call>[ <argument>]\"=\"<error>[,<first>[,<count>]]\"";
        } else if (m_inStandIn && EqualNames(name, timeValue)) {
            const auto text = TextOf(type, data);
            if (!text || !ParseTime(*text)) return "the time reads \"YYYY-MM-DD HH:MM\"";
        }
        return std::nullopt;
    }
    Refusal DeleteValue(std::u16string_view) override { return std::nullopt; }

  private:
    bool m_inStandIn = false;
    bool m_inFaults = false;
};

// Brings a tree to what the file says.
class TreeWriter : public FactChecker {
  public:
    explicit TreeWriter(RegistryTree& tree) : m_tree(tree) {}

    Refusal OpenKey(RegistryRoot root, std::u16string_view path) override {
        KeepCommonSteps(root, path);
        std::u16string_view rest = path.substr(m_steps.size() > 1 ? m_steps.back().end : 0);
        for (auto part = NextPathPart(rest); !part.empty(); part = NextPathPart(rest)) {
            auto key = m_tree.Create(m_steps.back().key, part);
            m_steps.push_back({path.size() - rest.size(), std::move(key)});
        }
        m_path = path;
        return FactChecker::OpenKey(root, path);
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
    const auto text = time ? TextOf(time->Type(), time->Data()) : std::nullopt;
    if (const auto start = text ? ParseTime(*text) : std::nullopt)
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
