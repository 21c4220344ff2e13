#include "PageWindowTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

HWND Window(int number) {
    return reinterpret_cast<HWND>(static_cast<std::intptr_t>(0x100 + number));
}

class PageWindows : public testing::Test {
  protected:
    void Register(int number) {
        RegisterPageWindow(table, Window(number), &pages[static_cast<std::size_t>(number)]);
    }
    PageWindowTable table;
    char pages[130] = {};
};

TEST_F(PageWindows, TheTableHolds128PagesAndTheNextHasNoEntry) {
    for (int i = 0; i < 129; ++i)
        Register(i);
    EXPECT_EQ(table.count, 128);
    EXPECT_EQ(FindPageObject(table, Window(127)), &pages[127]);
    EXPECT_EQ(FindPageObject(table, Window(128)), nullptr);

    RemovePageWindow(table, Window(128));
    EXPECT_EQ(table.count, 128);
    RemovePageWindow(table, Window(0));
    Register(128);
    EXPECT_EQ(FindPageObject(table, Window(128)), &pages[128]);
    EXPECT_EQ(FindPageObject(table, Window(0)), nullptr);
    RegisterPageWindow(table, Window(128), &pages[0]);
    EXPECT_EQ(FindPageObject(table, Window(128)), &pages[128]) << "the first entry counts";
}

TEST_F(PageWindows, RemovalKeepsTheOrderOfTheRest) {
    const struct {
        int removed;
        std::vector<int> left;
    } rows[] = {{0, {1, 2, 3}}, {1, {0, 2, 3}}, {3, {0, 1, 2}}, {4, {0, 1, 2, 3}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.removed);
        table = {};
        for (int i = 0; i < 4; ++i)
            Register(i);
        RemovePageWindow(table, Window(row.removed));
        ASSERT_EQ(table.count, static_cast<LONG>(row.left.size()));
        for (std::size_t i = 0; i < row.left.size(); ++i)
            EXPECT_EQ(table.entries[i].window, Window(row.left[i]));
    }
}

}  // namespace
