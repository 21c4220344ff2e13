// The machine's processors: groups, NUMA nodes, affinity. All of it is read from the facts at each
// call. A fact that can't be read fails the call that needs it with ERROR_INVALID_DATA.

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

#include "Call.h"
#include "Carrier.h"
#include "Facts.h"

using namespace platform;

namespace {

using WideText = std::basic_string<WCHAR>;

constexpr DWORD kGroupCapacity = 64;        // processors in a group
constexpr DWORD kMostProcessors = 0x10000;  // beyond, a count is taken for a slip of the pen
constexpr const WCHAR* kProcessors = TEXT("Processors");

const WideText kProcessorKeys = TEXT("HARDWARE\\DESCRIPTION\\System\\CentralProcessor");
const WideText kEnvironment =
    TEXT("SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment");

// The size of each group as the facts give it; empty when the text can't be read.
std::vector<DWORD> ParseGroups(const WideText& text) {
    std::vector<DWORD> groups;
    for (const WideText& field : SplitFields(text, TEXT(','))) {
        const std::optional<long long> size = ParseNumber(field);
        if (!size || *size < 1 || *size > static_cast<long long>(kGroupCapacity)) return {};
        groups.push_back(static_cast<DWORD>(*size));
    }
    return groups;
}

// How many processors an export of a real machine shows.
DWORD ExportedProcessors() {
    const std::size_t keys = MachineSubkeys(kProcessorKeys).size();
    if (keys != 0) return static_cast<DWORD>(std::min<std::size_t>(keys, kMostProcessors));
    const auto text = MachineText(kEnvironment, TEXT("NUMBER_OF_PROCESSORS"));
    const std::optional<long long> count = text ? ParseNumber(*text) : std::nullopt;
    return count && *count >= 1 && *count <= kMostProcessors ? static_cast<DWORD>(*count) : 1;
}

// The size of each group. Empty when the facts can't be read.
std::vector<DWORD> Groups() {
    if (const auto text = FactText(kProcessors, TEXT("Groups"))) return ParseGroups(*text);
    std::vector<DWORD> groups;
    for (DWORD left = ExportedProcessors(); left != 0; left -= groups.back())
        groups.push_back(std::min(left, kGroupCapacity));
    return groups;
}

KAFFINITY ActiveMask(DWORD groupSize) {
    return groupSize >= kGroupCapacity ? ~KAFFINITY{0} : (KAFFINITY{1} << groupSize) - 1;
}

constexpr int kQueryFails = -1;

// The node of each flat processor number, or kQueryFails. False when the text can't be read.
bool Nodes(std::vector<int>& nodes) {
    nodes.clear();
    const auto text = FactText(kProcessors, TEXT("Nodes"));
    if (!text) return true;
    for (const WideText& field : SplitFields(*text, TEXT(','))) {
        if (field == TEXT("-")) {
            nodes.push_back(kQueryFails);
            continue;
        }
        const std::optional<long long> node = ParseNumber(field);
        if (!node || *node < 0 || *node > 0xFFFF) return false;
        nodes.push_back(static_cast<int>(*node));
    }
    return true;
}

template <class T>
T FailWith(DWORD error, T result) {
    Call::SetLast(error);
    return result;
}

}  // namespace

DWORD WINAPI GetActiveProcessorCount(WORD group) {
    Call call("GetActiveProcessorCount");
    if (call.Failed()) return call.With(DWORD{0});
    const std::vector<DWORD> groups = Groups();
    if (groups.empty()) return FailWith(ERROR_INVALID_DATA, DWORD{0});
    if (group == ALL_PROCESSOR_GROUPS) {
        DWORD count = 0;
        for (const DWORD size : groups)
            count += size;
        return count;
    }
    return group < groups.size() ? groups[group] : FailWith(ERROR_INVALID_PARAMETER, DWORD{0});
}

WORD WINAPI GetActiveProcessorGroupCount() {
    Call call("GetActiveProcessorGroupCount");
    if (call.Failed()) return call.With(WORD{0});
    const std::size_t count = Groups().size();
    if (count == 0) return FailWith(ERROR_INVALID_DATA, WORD{0});
    return static_cast<WORD>(std::min<std::size_t>(count, 0xFFFF));
}

BOOL WINAPI GetNumaHighestNodeNumber(PULONG highest) {
    Call call("GetNumaHighestNodeNumber");
    if (call.Failed()) return call.With(FALSE);
    if (!highest) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    if (const auto fact = FactNumber(kProcessors, TEXT("HighestNode"))) {
        *highest = *fact;
        return TRUE;
    }
    std::vector<int> nodes;
    if (!Nodes(nodes)) return FailWith(ERROR_INVALID_DATA, FALSE);
    nodes.push_back(0);
    *highest = static_cast<ULONG>(*std::max_element(nodes.begin(), nodes.end()));
    return TRUE;
}

// A processor that the list of nodes doesn't reach is on node 0, like one without a list.
BOOL WINAPI GetNumaProcessorNodeEx(PPROCESSOR_NUMBER processor, PUSHORT node) {
    Call call("GetNumaProcessorNodeEx");
    if (node) *node = 0xFFFF;
    if (call.Failed()) return call.With(FALSE);
    if (!processor || !node || processor->Reserved != 0)
        return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    const std::vector<DWORD> groups = Groups();
    std::vector<int> nodes;
    if (groups.empty() || !Nodes(nodes)) return FailWith(ERROR_INVALID_DATA, FALSE);
    if (processor->Group >= groups.size() || processor->Number >= groups[processor->Group])
        return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    std::size_t flat = processor->Number;
    for (std::size_t group = 0; group < processor->Group; ++group)
        flat += groups[group];
    const int found = flat < nodes.size() ? nodes[flat] : 0;
    if (found == kQueryFails) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    *node = static_cast<USHORT>(found);
    return TRUE;
}

BOOL WINAPI SetThreadGroupAffinity(HANDLE thread, const GROUP_AFFINITY* affinity,
                                   PGROUP_AFFINITY previous) {
    Call call("SetThreadGroupAffinity");
    if (call.Failed()) return call.With(FALSE);
    const std::vector<DWORD> groups = Groups();
    if (groups.empty()) return FailWith(ERROR_INVALID_DATA, FALSE);
    if (!affinity || affinity->Group >= groups.size() || affinity->Mask == 0 ||
        (affinity->Mask & ~ActiveMask(groups[affinity->Group])) != 0 ||
        std::any_of(std::begin(affinity->Reserved), std::end(affinity->Reserved),
                    [](WORD word) { return word != 0; }))
        return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    const GROUP_AFFINITY before =
        PinnedTo(thread).value_or(GROUP_AFFINITY{ActiveMask(groups[0]), 0, {}});
    if (const DWORD error = PinThread(thread, *affinity)) return FailWith(error, FALSE);
    if (previous) *previous = before;
    return TRUE;
}
