// The table of nodes and processors.

#include "Processors.h"

#include "TuningTest.h"

namespace {

std::string Repeated(const std::string& field, int times) {
    std::string text = field;
    for (int i = 1; i < times; ++i)
        text += "," + field;
    return text;
}

TEST(Processors, StandInTheRowsOfTheirNodes) {
    const struct {
        const char *groups, *nodes;
        DWORD highest;
        std::vector<std::vector<BYTE>> rows;
    } cases[] = {
        {"8", "0,0,0,0,0,0,0,0", 0, {{0, 1, 2, 3, 4, 5, 6, 7}}},
        {"8", "0,1,0,1,0,1,0,1", 1, {{0, 2, 4, 6}, {1, 3, 5, 7}}},
        {"4,4", "0,0,0,0,1,1,1,1", 1, {{0, 1, 2, 3}, {4, 5, 6, 7}}},
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

TEST(Processors, AMachineBeyondTheTableIsRefused) {
    const std::string fullNodes =
        Repeated("0", 64) + "," + Repeated("1", 64) + "," + Repeated("2", 64);
    const struct {
        const char* groups;
        std::string nodes;
        bool fits;
    } cases[] = {
        {"64", Repeated("0", 64), true},
        {"33,33", Repeated("0", 66), false},
        {"2", "31,31", true},
        {"1", "32", false},
        {"64,64,64,63", fullNodes + "," + Repeated("3", 63), true},
        {"64,64,64,64", fullNodes + "," + Repeated("3", 64), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.groups);
        TestMachine test(Sample().Processors(c.groups, c.nodes));
        ProcessorsInfo table;
        EXPECT_EQ(GetProcessorsInfo(nullptr, table), c.fits);
        EXPECT_EQ(Output(test).empty(), c.fits);
    }
}

}  // namespace
