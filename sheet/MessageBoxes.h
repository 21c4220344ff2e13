#pragma once
// Message boxes as the transcript and the script name them.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SheetText.h"

namespace sheet {

struct Box {
    HWND window;
    Text caption;
    Text text;
    UINT style;  // MB_...
};

// The ids of the box's buttons from left to right.
std::vector<int> ButtonsOf(UINT style);
// OK or Yes, or on a box without them its default button.
int DefaultAnswer(UINT style);
// The button that Enter presses.
int EnterAnswer(UINT style);
// The answer that lets the least happen: Cancel or No, or on a box without them its first button.
int CautiousAnswer(UINT style);
// "ok" for IDOK and so on; nothing for a name that is no button.
std::optional<int> ButtonNamed(std::string_view name);
const char* NameOfButton(int id);
// The caption that a person reads on it.
const char* LabelOfButton(int id);
// The names of its buttons.
std::vector<std::string> ButtonNames(const Box& box);
// The lines of the `controls` command: what it says, and its buttons.
std::string ListControls(const Box& box);
// "box | caption | style | text | answer" with its line end.
std::string DescribeBox(const Box& box, int answer);

}  // namespace sheet
