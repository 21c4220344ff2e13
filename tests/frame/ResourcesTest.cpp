// The dialogs of the compiled resources, as a person without a mouse uses them.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "Dialogs.h"
#include "LibraryImage.h"
#include "Text.h"

namespace {

using Control = platform::DialogTemplate::Control;

bool IsButton(const Control& control, DWORD type) {
    return control.className == u"BUTTON" && (control.style & BS_TYPEMASK) == type;
}

bool TakesFocus(const Control& control) {
    return control.className != u"STATIC" && !IsButton(control, BS_GROUPBOX);
}

// Buttons have an access key, and so do labels: a text directly before a control without one, and a
// group box around the next control.
bool NeedsKey(std::span<const Control> controls) {
    const Control& first = controls.front();
    if (TakesFocus(first)) return first.className == u"BUTTON";
    const auto next = std::find_if(controls.begin() + 1, controls.end(), TakesFocus);
    if (next == controls.end()) return false;
    if (first.className == u"BUTTON") return next->rect.bottom < first.rect.bottom;
    return next == controls.begin() + 1 && next->className != u"BUTTON";
}

TEST(Dialogs, AreUsableFromTheKeyboard) {
    for (const auto& resource : platform::ParseResources(LibraryImage().resources)) {
        if (resource.type != platform::ResourceName(WORD{5})) continue;
        const auto dialog = platform::ParseDialogTemplate(resource.data);
        ASSERT_TRUE(dialog);
        std::set<int> keys = {'A', 'H'};    // the sheet's own: Apply, Help
        const Control* previous = nullptr;  // of those that take the focus
        const std::span<const Control> controls = dialog->controls;
        for (size_t i = 0; i < controls.size(); ++i) {
            const Control& control = controls[i];
            const auto* name = std::get_if<std::u16string>(&control.text);
            const std::string text = name ? platform::ToUtf8(*name) : "";
            SCOPED_TRACE(platform::ToUtf8(dialog->title) + ": " + text);
            const size_t mark = text.find('&');
            EXPECT_EQ(mark != text.npos, !text.empty() && NeedsKey(controls.subspan(i)));
            EXPECT_TRUE(mark == text.npos || keys.insert(std::toupper(text[mark + 1])).second);
            if (!TakesFocus(control)) continue;

            // The tab key leads from group to group, the arrow keys through the radio buttons.
            const bool continues = IsButton(control, BS_AUTORADIOBUTTON) && i > 0 &&
                                   IsButton(controls[i - 1], BS_AUTORADIOBUTTON);
            constexpr DWORD starts = WS_GROUP | WS_TABSTOP;
            EXPECT_EQ(control.style & starts, continues ? 0 : starts);
            EXPECT_TRUE(!previous || control.rect.top >= previous->rect.bottom ||
                        control.rect.left >= previous->rect.right);
            previous = &control;
        }
    }
}

}  // namespace
