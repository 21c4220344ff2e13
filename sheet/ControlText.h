#pragma once
// What a person sees in a control, as lines of characters.

#include <string>
#include <vector>

#include "Controls.h"

namespace sheet {

// width: columns that the control has. A disabled control's text stands between ~ marks.
std::vector<std::u32string> LinesOf(const Control& control, int width);

// A push button of at least that width.
std::u32string ButtonOf(const std::u32string& caption, bool isEnabled, int width);

}  // namespace sheet
