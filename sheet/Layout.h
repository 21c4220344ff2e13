#pragma once
// Finds the rows and columns of a dialog's controls: what stands beside each other in the dialog
// does so in the text, what stands below follows in the next row, and a box gets as many rows as
// its content needs.

#include <vector>

#include "Controls.h"

namespace sheet {

// What is drawn of one control.
struct Item {
    const Control* control;
    std::vector<std::u32string> lines;  // what stands in it
    bool isFramed;                      // a border around the lines, or around other controls
    int left;                           // columns and rows, the last ones included
    int right;
    int top;
    int bottom;
};

struct Layout {
    int width;
    int height;
    std::vector<Item> items;  // frames first
};

// controls: borrowed by the result. Hidden ones are left out.
Layout LayOut(const std::vector<Control>& controls, int dialogWidth);

}  // namespace sheet
