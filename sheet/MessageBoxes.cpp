#include "MessageBoxes.h"

#include <algorithm>

#include "Transcript.h"

namespace sheet {

namespace {

constexpr struct {
    int id;
    const char* name;
    const char* label;
} kButtons[] = {
    {IDOK, "ok", "OK"},          {IDCANCEL, "cancel", "Cancel"}, {IDABORT, "abort", "Abort"},
    {IDRETRY, "retry", "Retry"}, {IDIGNORE, "ignore", "Ignore"}, {IDYES, "yes", "Yes"},
    {IDNO, "no", "No"},
};

}  // namespace

std::vector<int> ButtonsOf(UINT style) {
    switch (style & MB_TYPEMASK) {
        case MB_OKCANCEL:
            return {IDOK, IDCANCEL};
        case MB_ABORTRETRYIGNORE:
            return {IDABORT, IDRETRY, IDIGNORE};
        case MB_YESNOCANCEL:
            return {IDYES, IDNO, IDCANCEL};
        case MB_YESNO:
            return {IDYES, IDNO};
        case MB_RETRYCANCEL:
            return {IDRETRY, IDCANCEL};
        default:
            return {IDOK};
    }
}

int DefaultAnswer(UINT style) {
    const std::vector<int> buttons = ButtonsOf(style);
    if (buttons.front() == IDOK || buttons.front() == IDYES) return buttons.front();
    return EnterAnswer(style);
}

int EnterAnswer(UINT style) {
    const std::vector<int> buttons = ButtonsOf(style);
    const std::size_t index = (style & MB_DEFMASK) / MB_DEFBUTTON2;
    return buttons[std::min(index, buttons.size() - 1)];
}

int CautiousAnswer(UINT style) {
    const std::vector<int> buttons = ButtonsOf(style);
    for (const int cautious : {IDCANCEL, IDNO}) {
        if (std::find(buttons.begin(), buttons.end(), cautious) != buttons.end()) return cautious;
    }
    return buttons.front();
}

std::optional<int> ButtonNamed(std::string_view name) {
    for (const auto& button : kButtons) {
        if (name == button.name) return button.id;
    }
    return std::nullopt;
}

const char* NameOfButton(int id) {
    for (const auto& button : kButtons) {
        if (id == button.id) return button.name;
    }
    return "-";
}

const char* LabelOfButton(int id) {
    for (const auto& button : kButtons) {
        if (id == button.id) return button.label;
    }
    return "?";
}

std::vector<std::string> ButtonNames(const Box& box) {
    std::vector<std::string> names;
    for (const int id : ButtonsOf(box.style))
        names.emplace_back(NameOfButton(id));
    return names;
}

std::string ListControls(const Box& box) {
    std::string lines = Line({"control", "-", "Static", Field(box.text), "shown,enabled"});
    for (const int id : ButtonsOf(box.style)) {
        lines +=
            Line({"control", std::to_string(id), "Button", LabelOfButton(id), "shown,enabled"});
    }
    return lines;
}

std::string DescribeBox(const Box& box, int answer) {
    return Line({"box", Field(box.caption), std::to_string(box.style), Field(box.text),
                 NameOfButton(answer)});
}

}  // namespace sheet
