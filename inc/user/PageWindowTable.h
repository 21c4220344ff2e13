#pragma once
// Finds a page's object by its dialog window. The sheet's thread only. Borrows the objects.

#include <windows.h>

struct PageWindowTable {
    static constexpr LONG capacity = 128;
    struct Entry {
        HWND window;
        void* page;
    };
    Entry entries[capacity] = {};  // in order of registration
    LONG count = 0;
};

// Appends the pair; a full table stays as it is.
void RegisterPageWindow(PageWindowTable& table, HWND window, void* page);
// The object of the first entry of that window, or null.
void* FindPageObject(const PageWindowTable& table, HWND window);
// Takes the first entry of that window out, keeping the order of the rest.
void RemovePageWindow(PageWindowTable& table, HWND window);
