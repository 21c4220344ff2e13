// The library's resources, read from the compiled file.

#include "Dialogs.h"

#include "Fixture.h"
#include "LibraryImage.h"
#include "Resources.h"
#include "Text.h"
#include "resource.h"

namespace {

std::span<const BYTE> FindDialog(WORD name) {
    for (const auto& each : platform::ParseResources(LibraryImage().resources))
        if (each.type == platform::ResourceName(WORD{5}) &&
            each.name == platform::ResourceName(name))
            return each.data;
    return {};
}

TEST(Resources, ThePerformanceDialogsHoldTheirControlsInOrder) {
    constexpr DWORD none = 0xFFFFFFFF;
    constexpr DWORD choice = BS_AUTORADIOBUTTON;
    constexpr DWORD starts = WS_GROUP | WS_TABSTOP;
    const struct {
        DWORD id, style;  // beside a visible child's
        const char16_t *className, *text;
    } rows[] = {
        {none, WS_GROUP, u"STATIC", u"Performance Tuning Tool"},
        {none, SS_BITMAP | SS_REALSIZECONTROL, u"STATIC", nullptr},
        {1089, BS_GROUPBOX, u"BUTTON", u"Tuning Scenario:"},
        {1086, choice | starts, u"BUTTON", u"Single port traffic"},
        {1087, choice, u"BUTTON", u"Dual port traffic"},
        {1088, choice, u"BUTTON", u"Forwarding traffic"},
        {1096, choice, u"BUTTON", u"Multicast traffic"},
        {1098, choice, u"BUTTON", u"Single stream traffic"},
        {1095, choice, u"BUTTON", u"[Default] Balanced tuning"},
        {1090, BS_PUSHBUTTON | starts, u"BUTTON", u"Run Tuning"},
        {1049, ES_MULTILINE | ES_READONLY | WS_VSCROLL | WS_BORDER | WS_TABSTOP, u"RICHEDIT20W",
         u""},
    };
    for (const WORD id : {WORD{IDD_PERFORMANCE_IPOIB}, WORD{IDD_PERFORMANCE_ETH}}) {
        SCOPED_TRACE(id);
        const auto dialog = platform::ParseDialogTemplate(FindDialog(id));
        ASSERT_TRUE(dialog);
        EXPECT_EQ(dialog->rect.right - dialog->rect.left, 249);
        EXPECT_EQ(dialog->rect.bottom - dialog->rect.top, 226);
        EXPECT_EQ(dialog->title, u"Performance");
        EXPECT_EQ(dialog->fontSize, 8);
        auto control = dialog->controls.begin();
        for (const auto& row : rows) {
            SCOPED_TRACE(row.id);
            if (row.id == IDC_SINGLE_STREAM && id == IDD_PERFORMANCE_IPOIB) continue;
            ASSERT_NE(control, dialog->controls.end());
            EXPECT_EQ(control->id, row.id);
            EXPECT_EQ(control->className, row.className);
            EXPECT_EQ(control->style, WS_CHILD | WS_VISIBLE | row.style);
            if (row.text)
                EXPECT_EQ(control->text, platform::ResourceName(std::u16string(row.text)));
            else
                EXPECT_EQ(control->text, platform::ResourceName(WORD{IDB_PERFORMANCE}));
            ++control;
        }
        EXPECT_EQ(control, dialog->controls.end());
    }
}

}  // namespace
