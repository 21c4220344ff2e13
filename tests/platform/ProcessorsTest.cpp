// Processor groups, NUMA nodes and affinity, as the facts or an export give them.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "Call.h"
#include "FactsMachine.h"

using platform::Call;

namespace {

constexpr int kFails = -1;

std::string Processors(const std::string& values) {
    return "[" + FactsMachine::kStandIn + "\\Processors]\n" + values + "\n";
}

std::string CentralProcessors(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "[HKEY_LOCAL_MACHINE\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\" +
                std::to_string(i) + "]\n";
    return text;
}

std::string Environment(const std::string& count) {
    return "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment]"
           "\n\"NUMBER_OF_PROCESSORS\"=\"" +
           count + "\"\n";
}

TEST(Processors, AreCountedByGroup) {
    const struct {
        const char* why;
        std::string facts;
        std::vector<DWORD> groups;  // none: the facts can't be read
    } kCases[] = {
        {"two groups", Processors("\"Groups\"=\"8,8\""), {8, 8}},
        {"groups of unequal size", Processors("\"Groups\"=\"4, 64 ,1\""), {4, 64, 1}},
        {"the facts win over the export",
         Processors("\"Groups\"=\"2\"") + CentralProcessors(4) + Environment("6"),
         {2}},
        {"an export with its hardware", CentralProcessors(4) + Environment("6"), {4}},
        {"an export without its hardware", Environment("6"), {6}},
        {"more than a group holds", Environment("130"), {64, 64, 2}},
        {"nothing at all", "", {1}},
        {"an environment that is no number", Environment("many"), {1}},
        {"an environment beyond reason", Environment("99999999999999999999"), {1}},
        {"a group that is no number", Processors("\"Groups\"=\"8,x\""), {}},
        {"an empty group", Processors("\"Groups\"=\"8,0\""), {}},
        {"a group that is too large", Processors("\"Groups\"=\"65\""), {}},
        {"a missing number", Processors("\"Groups\"=\"8,,8\""), {}},
        {"an empty text", Processors("\"Groups\"=\"\""), {}},
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
        {"two nodes", "\"Groups\"=\"2,2\"\n\"Nodes\"=\"0,1,1,0\"", {0, 1, 1, 0}, 1},
        {"unequal groups", "\"Groups\"=\"1,2\"\n\"Nodes\"=\"5,6,7\"", {5, 6, 7}, 7},
        {"one node by default", "\"Groups\"=\"2\"", {0, 0}, 0},
        {"a list that is too short", "\"Groups\"=\"3\"\n\"Nodes\"=\"2\"", {2, 0, 0}, 2},
        {"a list that is too long", "\"Groups\"=\"1\"\n\"Nodes\"=\"2,3\"", {2}, 3},
        {"a query that fails", "\"Groups\"=\"3\"\n\"Nodes\"=\"1,-,0\"", {1, kFails, 0}, 1},
        {"the largest node", "\"Groups\"=\"1\"\n\"Nodes\"=\"65535\"", {65535}, 65535},
        {"the highest node is told", "\"Groups\"=\"1\"\n\"HighestNode\"=dword:3", {0}, 3},
        {"all queries fail", "\"Groups\"=\"1\"\n\"Nodes\"=\"-\"", {kFails}, 0},
        {"a node too large", "\"Groups\"=\"1\"\n\"Nodes\"=\"65536\"", {kFails}, kFails},
        {"a node that is no number", "\"Groups\"=\"1\"\n\"Nodes\"=\"0,?\"", {kFails}, kFails},
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

TEST(Processors, ThatAreNotThereHaveNoNode) {
    FactsMachine machine(Processors("\"Groups\"=\"4,4\""));
    for (PROCESSOR_NUMBER processor :
         {PROCESSOR_NUMBER{0, 4, 0}, PROCESSOR_NUMBER{2, 0, 0}, PROCESSOR_NUMBER{0, 0, 1}}) {
        USHORT node = 0;
        EXPECT_FALSE(GetNumaProcessorNodeEx(&processor, &node));
        EXPECT_EQ(Call::GetLast(), DWORD{ERROR_INVALID_PARAMETER});
        EXPECT_EQ(node, 0xFFFF);
    }
}

TEST(Processors, OfAMergedFileCountAtOnce) {
    FactsMachine machine(Processors("\"Groups\"=\"4\""));
    EXPECT_EQ(GetActiveProcessorCount(0), 4u);
    machine.Merge(Processors("\"Groups\"=\"4,4\""));
    EXPECT_EQ(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), 8u);
}

TEST(Affinity, MustNameActiveProcessorsOfOneGroup) {
    const struct {
        const char* why;
        GROUP_AFFINITY affinity;
        DWORD error;
    } kCases[] = {
        {"one processor", {8, 0, {}}, 0},
        {"all of a group", {15, 0, {}}, 0},
        {"all of a full group", {~KAFFINITY{0}, 1, {}}, 0},
        {"none", {0, 0, {}}, ERROR_INVALID_PARAMETER},
        {"one too many", {16, 0, {}}, ERROR_INVALID_PARAMETER},
        {"a group that isn't there", {1, 2, {}}, ERROR_INVALID_PARAMETER},
        {"reserved words set", {1, 0, {0, 0, 1}}, ERROR_INVALID_PARAMETER},
    };
    FactsMachine machine(Processors("\"Groups\"=\"4,64\""));
    GROUP_AFFINITY before = {15, 0, {}};  // that of a thread which was never pinned
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        GROUP_AFFINITY previous = {};
        const BOOL result = SetThreadGroupAffinity(GetCurrentThread(), &test.affinity, &previous);
        EXPECT_EQ(result ? 0 : Call::GetLast(), test.error);
        if (!result) continue;
        EXPECT_EQ(previous.Mask, before.Mask);
        EXPECT_EQ(previous.Group, before.Group);
        before = test.affinity;
    }
}

}  // namespace
