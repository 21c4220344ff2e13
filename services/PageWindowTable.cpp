#include "PageWindowTable.h"

#include <algorithm>

void RegisterPageWindow(PageWindowTable& table, HWND window, void* page) {
    if (table.count == PageWindowTable::capacity) return;
    table.entries[table.count++] = {window, page};
}

void* FindPageObject(const PageWindowTable& table, HWND window) {
    const auto* end = table.entries + table.count;
    const auto* entry = std::find_if(table.entries, end,
                                     [window](const auto& each) { return each.window == window; });
    return entry == end ? nullptr : entry->page;
}

void RemovePageWindow(PageWindowTable& table, HWND window) {
    auto* end = table.entries + table.count;
    auto* entry = std::find_if(table.entries, end,
                               [window](const auto& each) { return each.window == window; });
    if (entry == end) return;
    std::move(entry + 1, end, entry);
    table.entries[--table.count] = {};
}
