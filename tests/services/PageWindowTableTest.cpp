#include "PageWindowTable.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

HWND Window(int number) {
    return reinterpret_cast<HWND>(static_cast<std::intptr_t>(0x100 + number));
}

TEST(PageWindowTable, Holds128PagesAndTheNextHasNoEntry) {
    PageWindowTable table;
    char pages[130] = {};
    const auto add = [&](int number) { RegisterPageWindow(table, Window(number), pages + number); };
    for (int i = 0; i < 129; ++i)
        add(i);
    EXPECT_EQ(table.count, 128);
    EXPECT_EQ(FindPageObject(table, Window(127)), &pages[127]);
    EXPECT_EQ(FindPageObject(table, Window(128)), nullptr);

    RemovePageWindow(table, Window(128));
    EXPECT_EQ(table.count, 128);
    RemovePageWindow(table, Window(0));
    add(128);
    EXPECT_EQ(FindPageObject(table, Window(128)), &pages[128]);
    EXPECT_EQ(FindPageObject(table, Window(0)), nullptr);
    RegisterPageWindow(table, Window(128), &pages[0]);
    EXPECT_EQ(FindPageObject(table, Window(128)), &pages[128]) << "the first entry counts";
}

}  // namespace
