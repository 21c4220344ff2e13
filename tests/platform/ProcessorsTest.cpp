// Processor groups, NUMA nodes and affinity, as the facts or an export give them.

#include <string>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"

using platform::Call;

namespace {

constexpr int kFails = -1;

std::string Processors(const std::string& values) {
    return FactLines("Processors", values);
}

// As an export has its hardware.
const std::string kCpu = "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\";
const std::string kTwoProcessors = KeyLines(kCpu + "0") + KeyLines(kCpu + "1");

std::string Environment(const std::string& count) {
    return KeyLines("SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment",
                    "\"NUMBER_OF_PROCESSORS\"=\"" + count + "\"");
}

TEST(Processors, AreCountedByGroup) {
    const struct {
        const char* why;
        std::string facts;
        std::vector<DWORD> groups;  // none: the facts can't be read
    } kCases[] = {
        {"groups of unequal size", Processors("\"Groups\"=\"4, 64 ,1\""), {4, 64, 1}},
        {"the facts win over the export",
         Processors("\"Groups\"=\"3\"") + kTwoProcessors + Environment("6"),
         {3}},
        {"an export with its hardware", kTwoProcessors + Environment("6"), {2}},
        {"an export without its hardware", Environment("6"), {6}},
        {"more than a group holds", Environment("130"), {64, 64, 2}},
        {"nothing at all", "", {1}},
        {"a group that is no number", Processors("\"Groups\"=\"8,x\""), {}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(test.facts);
        DWORD total = 0;
        for (std::size_t i = 0; i < test.groups.size(); ++i) {
            EXPECT_EQ(GetActiveProcessorCount(static_cast<WORD>(i)), test.groups[i]);
            total += test.groups[i];
        }
        EXPECT_EQ(GetActiveProcessorGroupCount(), test.groups.size());
        EXPECT_EQ(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), total);
        EXPECT_EQ(GetActiveProcessorCount(static_cast<WORD>(test.groups.size())), 0u);
        EXPECT_EQ(Call::GetLast(),
                  DWORD(test.groups.empty() ? ERROR_INVALID_DATA : ERROR_INVALID_PARAMETER));
    }
}

TEST(Processors, HaveTheNodesOfTheFacts) {
    const struct {
        const char* why;
        std::string facts;
        std::vector<int> nodes;  // by flat number
        int highest;
    } kCases[] = {
        {"unequal groups", "\"Groups\"=\"1,2\"\n\"Nodes\"=\"5,6,7\"", {5, 6, 7}, 7},
        {"a list that is too short", "\"Groups\"=\"3\"\n\"Nodes\"=\"2\"", {2, 0, 0}, 2},
        {"a list that is too long", "\"Groups\"=\"1\"\n\"Nodes\"=\"2,3\"", {2}, 3},
        {"a query that fails", "\"Groups\"=\"3\"\n\"Nodes\"=\"1,-,0\"", {1, kFails, 0}, 1},
        {"the highest node is told", "\"Groups\"=\"1\"\n\"HighestNode\"=dword:3", {0}, 3},
        {"a node too large", "\"Groups\"=\"1\"\n\"Nodes\"=\"65536\"", {kFails}, kFails},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(Processors(test.facts));
        std::size_t flat = 0;
        for (WORD group = 0; group < GetActiveProcessorGroupCount(); ++group) {
            for (BYTE number = 0; number < GetActiveProcessorCount(group); ++number) {
                PROCESSOR_NUMBER processor = {group, number, 0};
                USHORT node = 0;
                const BOOL result = GetNumaProcessorNodeEx(&processor, &node);
                EXPECT_EQ(result ? node : kFails, test.nodes[flat++]);
            }
        }
        EXPECT_EQ(flat, test.nodes.size());
        ULONG highest = 0;
        const BOOL result = GetNumaHighestNodeNumber(&highest);
        EXPECT_EQ(result ? static_cast<int>(highest) : kFails, test.highest);
    }
}

TEST(Affinity, MustNameActiveProcessorsOfOneGroup) {
    FactsMachine machine(Processors("\"Groups\"=\"4,64\""));
    GROUP_AFFINITY previous = {};
    const auto pin = [&](const GROUP_AFFINITY& affinity) {
        return ErrorOf(SetThreadGroupAffinity(GetCurrentThread(), &affinity, &previous));
    };
    EXPECT_EQ(pin({8, 0, {}}), 0);
    EXPECT_EQ(previous.Mask, 15u) << "that of a thread which was never pinned";
    EXPECT_EQ(pin({0, 0, {}}), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(pin({16, 0, {}}), ERROR_INVALID_PARAMETER) << "one too many";
    EXPECT_EQ(pin({1, 2, {}}), ERROR_INVALID_PARAMETER) << "no such group";
    EXPECT_EQ(pin({~KAFFINITY{0}, 1, {}}), 0) << "all of a full group";
    EXPECT_EQ(previous.Mask, 8u);
}

}  // namespace
