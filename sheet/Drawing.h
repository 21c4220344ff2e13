#pragma once
// Windows as text that a person reads, at most 100 columns wide. The thread of the window only.

#include <string>

#include "DeviceManager.h"
#include "MessageBoxes.h"

namespace sheet {

// The sheet with its tabs, the active page and its buttons.
std::string DrawSheet(const Sheet& sheet);
std::string DrawDialog(HWND dialog);
std::string DrawMessageBox(const Box& box);

}  // namespace sheet
