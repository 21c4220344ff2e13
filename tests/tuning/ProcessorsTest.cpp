// The table of nodes and processors.

#include "Processors.h"

#include "TuningTest.h"

namespace {

TEST(Processors, StandInTheRowsOfTheirNodes) {
    const struct {
        const char *groups, *nodes;
        DWORD highest;
        std::vector<std::vector<BYTE>> rows;
    } cases[] = {
        {"8", "0,0,0,0,0,0,0,0", 0, {{0, 1, 2, 3, 4, 5, 6, 7}}},
        {"8", "0,1,0,1,0,1,0,1", 1, {{0, 2, 4, 6}, {1, 3, 5, 7}}},
        {"4,4", "0,0,0,0,1,1,1,1", 1, {{0, 1, 2, 3}, {4, 5, 6, 7}}},
        {"2,5,1", "0,0,1,1,1,1,1,2", 2, {{0, 1}, {2, 3, 4, 5, 6}, {7}}},
        {"4", "0,0,2,2", 2, {{0, 1}, {}, {2, 3}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nodes);
        TestMachine test(Sample().Processors(c.groups, c.nodes));
        ProcessorsInfo table;
        ASSERT_TRUE(GetProcessorsInfo(nullptr, table));
        EXPECT_EQ(table.processorCount, (std::string(c.nodes).size() + 1) / 2);
        EXPECT_EQ(table.highestNode, c.highest);
        for (std::size_t node = 0; node < c.rows.size(); ++node) {
            const NumaNodeRow& row = table.nodes[node];
            EXPECT_EQ(std::vector<BYTE>(row.processors, row.processors + row.count), c.rows[node])
                << "node " << node;
        }
    }
}

// A number of processors, and the node that they are on.
using NodeRun = std::pair<int, int>;

std::string Nodes(const std::vector<NodeRun>& runs) {
    std::string text;
    for (const auto& [count, node] : runs)
        for (int i = 0; i < count; ++i)
            text += (text.empty() ? "" : ",") + std::to_string(node);
    return text;
}

TEST(Processors, OfALargeMachineWhatFitsIsTaken) {
    const struct {
        const char* groups;
        std::vector<NodeRun> nodes, rows;
        const char* told;  // how many don't fit, or null
    } cases[] = {
        {"64", {{64, 0}}, {{64, 0}}, nullptr},
        {"33,32", {{65, 0}}, {{64, 0}}, "1 of 65"},
        {"64,64", {{70, 0}, {58, 1}}, {{64, 0}, {58, 1}}, "6 of 128"},
        {"8", {{2, 0}, {2, 31}, {2, 32}, {2, 256}}, {{2, 0}, {2, 31}}, "4 of 8"},
        {"64,64,64,64",
         {{64, 0}, {64, 1}, {64, 2}, {64, 3}},
         {{64, 0}, {64, 1}, {64, 2}, {64, 3}},
         nullptr},
        {"64,64,64,64,1",
         {{64, 0}, {64, 1}, {64, 2}, {63, 3}, {2, 4}},
         {{64, 0}, {64, 1}, {64, 2}, {63, 3}, {1, 4}},
         "1 of 257"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.groups);
        TestMachine test(Sample().Processors(c.groups, Nodes(c.nodes)));
        ProcessorsInfo table;
        const Lines lines =
            Logged(test, [&](LogStream* log) { EXPECT_TRUE(GetProcessorsInfo(log, table)); });
        EXPECT_EQ(lines, c.told ? Lines{"GetProcessorsInfo: " + std::string(c.told) +
                                        " processors don't fit into the table and aren't used"}
                                : Lines());
        std::vector<NodeRun> rows;
        for (int node = 0; node < static_cast<int>(kTableNodes); ++node)
            if (const int count = table.nodes[node].count) rows.emplace_back(count, node);
        EXPECT_EQ(rows, c.rows);
        EXPECT_EQ(static_cast<int>(table.highestNode), c.rows.back().second);
    }
}

}  // namespace
