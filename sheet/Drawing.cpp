#include "Drawing.h"

#include <algorithm>

#include "Canvas.h"
#include "Columns.h"
#include "ControlText.h"
#include "Controls.h"
#include "Layout.h"

namespace sheet {

namespace {

constexpr int kMargin = 2;  // columns between a window's frame and what stands in it
constexpr int kNarrowestWindow = 40;
constexpr int kWidestBoxText = 66;

Canvas DrawControls(HWND dialog) {
    const std::vector<Control> controls = ControlsOf(dialog);
    const Layout layout = LayOut(controls, WidthOf(dialog));
    Canvas canvas(layout.width, layout.height);
    for (const Item& item : layout.items) {
        if (item.control->kind == Class::Picture)
            canvas.Fill(item.left, item.top, item.right, item.bottom, U'░');
        if (item.isFramed) {
            const bool isGroup = item.control->kind == Class::GroupBox;
            canvas.Frame(item.left, item.top, item.right, item.bottom,
                         isGroup ? Printable(item.control->text) : std::u32string());
        }
        int row = item.top + (item.isFramed ? 1 : 0);
        for (const std::u32string& line : item.lines)
            canvas.Put(item.left + (item.isFramed ? 2 : 0), row++, line);
    }
    return canvas;
}

// A window's frame with its caption around what is drawn in it.
Canvas Window(const Text& caption, int width, int height) {
    Canvas canvas(width, height);
    canvas.Frame(0, 0, width - 1, height - 1, Printable(caption));
    return canvas;
}

Text CaptionOfWindow(HWND window) {
    WCHAR caption[256] = {};
    GetWindowTextW(window, caption, ARRAYSIZE(caption));
    return caption;
}

// The row of tabs in three lines; the active one opens into the page below.
void DrawTabs(Canvas& canvas, int y, const std::vector<Text>& titles, std::size_t active) {
    canvas.Fill(1, y + 2, canvas.Width() - 2, y + 2, U'─');
    canvas.Put(0, y + 2, U"├");
    canvas.Put(canvas.Width() - 1, y + 2, U"┤");
    int x = kMargin;
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const std::u32string title = U" " + Printable(titles[i]) + U" ";
        const int right = x + ColumnsOf(title) + 1;
        canvas.Frame(x, y, right, y + 2, U"");
        canvas.Put(x + 1, y + 1, title);
        canvas.Put(x, y + 2, i == active ? U"┘" : i == active + 1 ? U"└" : U"┴");
        canvas.Put(right, y + 2, i == active ? U"└" : U"┴");
        if (i == active) canvas.Fill(x + 1, y + 2, right - 1, y + 2, U' ');
        if (i > 0) canvas.Put(x, y, U"┬");
        x = right;
    }
}

// From the right edge to the left.
void DrawButtons(Canvas& canvas, int y, const std::vector<std::u32string>& buttons) {
    int x = canvas.Width() - kMargin;
    for (auto button = buttons.rbegin(); button != buttons.rend(); ++button) {
        x -= ColumnsOf(*button);
        canvas.Put(x, y, *button);
        x -= 2;
    }
}

}  // namespace

std::string DrawDialog(HWND dialog) {
    const Canvas controls = DrawControls(dialog);
    Canvas canvas =
        Window(CaptionOfWindow(dialog), controls.Width() + 2 * kMargin, controls.Height() + 2);
    canvas.Paste(kMargin, 1, controls);
    return canvas.ToUtf8();
}

std::string DrawSheet(const Sheet& sheet) {
    const Canvas controls = DrawControls(sheet.Page());
    constexpr int kTabRows = 3;
    constexpr int kButtonRows = 2;
    const int height = 1 + kTabRows + controls.Height() + kButtonRows + 1;
    Canvas canvas = Window(CaptionOfWindow(sheet.Window()),
                           std::max(controls.Width() + 2 * kMargin, kNarrowestWindow), height);
    DrawTabs(canvas, 1, sheet.Tabs(), sheet.ActiveTab());
    canvas.Paste(kMargin, 1 + kTabRows, controls);
    const int line = height - 1 - kButtonRows;
    canvas.Fill(1, line, canvas.Width() - 2, line, U'─');
    canvas.Put(0, line, U"├");
    canvas.Put(canvas.Width() - 1, line, U"┤");
    DrawButtons(canvas, line + 1,
                {ButtonOf(U"OK", true, 10), ButtonOf(U"Cancel", true, 10),
                 ButtonOf(U"Apply", sheet.CanApply(), 10)});
    return canvas.ToUtf8();
}

std::string DrawMessageBox(const Box& box) {
    const std::vector<std::u32string> lines = Wrap(CodePoints(box.text), kWidestBoxText);
    int width = std::min(ColumnsOf(Printable(box.caption)), kWidestBoxText) + 4;
    for (const std::u32string& line : lines)
        width = std::max(width, ColumnsOf(line));
    std::vector<std::u32string> buttons;
    for (const int id : ButtonsOf(box.style))
        buttons.push_back(ButtonOf(CodePoints(FromUtf8(LabelOfButton(id))), true, 10));
    const auto rows = static_cast<int>(lines.size());
    Canvas canvas = Window(box.caption, std::max(width + 2 * kMargin, kNarrowestWindow), rows + 5);
    for (int i = 0; i < rows; ++i)
        canvas.Put(kMargin, 2 + i, lines[static_cast<std::size_t>(i)]);
    DrawButtons(canvas, rows + 3, buttons);
    return canvas.ToUtf8();
}

}  // namespace sheet
