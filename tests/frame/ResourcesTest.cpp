// The library's resources, read from the compiled file.

#include "Dialogs.h"

#include "Fixture.h"
#include "LibraryImage.h"
#include "Resources.h"
#include "Text.h"
#include "resource.h"

namespace {

constexpr WORD kBitmapType = 2;
constexpr WORD kDialogType = 5;
constexpr WORD kVersionType = 16;

std::span<const BYTE> Find(WORD type, WORD name) {
    for (const auto& each : platform::ParseResources(LibraryImage().resources)) {
        if (each.type == platform::ResourceName(type) &&
            each.name == platform::ResourceName(name)) {
            EXPECT_EQ(each.language, 1033);
            return each.data;
        }
    }
    ADD_FAILURE() << "no resource " << name << " of type " << type;
    return {};
}

std::u16string Characters(std::span<const BYTE> data) {
    std::u16string text;
    for (std::size_t i = 0; i + 1 < data.size(); i += 2)
        text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    return text;
}

// A control as both dialogs have it. The compiler writes names of classes in capitals; they are
// found without regard to case.
struct Row {
    DWORD id;
    std::u16string className;
    platform::ResourceName text;
    DWORD style;
    LONG x, y, width, height;              // on an IPoIB port's dialog, a width of 0: not there
    LONG ethX, ethY, ethWidth, ethHeight;  // on an Ethernet port's
};

std::vector<Row> PerformanceControls() {
    constexpr DWORD none = 0xFFFFFFFF;
    constexpr DWORD shown = WS_CHILD | WS_VISIBLE;
    constexpr DWORD choice = shown | BS_AUTORADIOBUTTON;
    constexpr DWORD starts = WS_GROUP | WS_TABSTOP;
    constexpr DWORD help = shown | ES_MULTILINE | ES_READONLY | WS_VSCROLL | WS_BORDER | WS_TABSTOP;
    const auto T = [](const char16_t* characters) { return std::u16string(characters); };
    return {
        {none, u"STATIC", T(u"Performance Tuning Tool"), shown | WS_GROUP, 76, 14, 107, 8, 76, 14,
         107, 8},
        {none, u"STATIC", WORD{109}, shown | SS_BITMAP | SS_REALSIZECONTROL, 0, 0, 52, 38, 0, 0, 52,
         38},
        {1089, u"BUTTON", T(u"Tuning Scenario:"), shown | BS_GROUPBOX, 27, 45, 193, 99, 27, 40, 193,
         104},
        {1086, u"BUTTON", T(u"Single port traffic"), choice | starts, 39, 63, 101, 10, 38, 52, 101,
         10},
        {1087, u"BUTTON", T(u"Dual port traffic"), choice, 39, 77, 84, 10, 38, 66, 84, 10},
        {1088, u"BUTTON", T(u"Forwarding traffic"), choice, 39, 91, 88, 10, 38, 81, 88, 10},
        {1096, u"BUTTON", T(u"Multicast traffic"), choice, 39, 105, 80, 10, 38, 95, 80, 10},
        {1098, u"BUTTON", T(u"Single stream traffic"), choice, 0, 0, 0, 0, 38, 109, 77, 10},
        {1095, u"BUTTON", T(u"[Default] Balanced tuning"), choice, 39, 119, 95, 10, 38, 123, 95,
         10},
        {1090, u"BUTTON", T(u"Run Tuning"), shown | BS_PUSHBUTTON | starts, 155, 124, 55, 14, 155,
         124, 55, 14},
        {1049, u"RICHEDIT20W", T(u""), help, 4, 149, 240, 73, 4, 149, 240, 73},
    };
}

TEST(Resources, ThePerformanceDialogsAreLaidOutAsPublished) {
    for (const WORD id : {WORD{IDD_PERFORMANCE_IPOIB}, WORD{IDD_PERFORMANCE_ETH}}) {
        SCOPED_TRACE(id);
        const auto data = Find(kDialogType, id);
        const auto dialog = platform::ParseDialogTemplate(data);
        ASSERT_TRUE(dialog);
        EXPECT_EQ(dialog->rect.right - dialog->rect.left, 249);
        EXPECT_EQ(dialog->rect.bottom - dialog->rect.top, 226);
        EXPECT_EQ(dialog->title, u"Performance");
        EXPECT_EQ(dialog->fontSize, 8);
        EXPECT_NE(Characters(data).find(u"MS Shell Dlg"), std::u16string::npos);
        EXPECT_EQ(dialog->style & (DS_SETFONT | WS_CHILD),
                  static_cast<DWORD>(DS_SETFONT | WS_CHILD));

        auto control = dialog->controls.begin();
        for (const Row& row : PerformanceControls()) {
            SCOPED_TRACE(row.id);
            const bool ethernet = id == IDD_PERFORMANCE_ETH;
            if (!ethernet && row.width == 0) continue;
            ASSERT_NE(control, dialog->controls.end());
            EXPECT_EQ(control->id, row.id);
            EXPECT_EQ(control->className, row.className);
            EXPECT_EQ(control->text, row.text);
            EXPECT_EQ(control->style, row.style);
            EXPECT_EQ(control->rect.left, ethernet ? row.ethX : row.x);
            EXPECT_EQ(control->rect.top, ethernet ? row.ethY : row.y);
            EXPECT_EQ(control->rect.right - control->rect.left,
                      ethernet ? row.ethWidth : row.width);
            EXPECT_EQ(control->rect.bottom - control->rect.top,
                      ethernet ? row.ethHeight : row.height);
            ++control;
        }
        EXPECT_EQ(control, dialog->controls.end());
    }
}

TEST(Resources, TheBitmapFillsItsPlaceAt96Dpi) {
    platform::ResourceReader reader(Find(kBitmapType, IDB_PERFORMANCE));
    EXPECT_EQ(reader.Dword(), 40u);
    EXPECT_EQ(reader.Dword(), 78u);
    EXPECT_EQ(reader.Dword(), 62u);
}

TEST(Resources, TheVersionNamesTheLibrary) {
    const std::u16string text = Characters(Find(kVersionType, 1));
    for (const char16_t* part : {u"Corvanta", u"1.0.0.0", u"WinTsrTune_ipoib.dll"})
        EXPECT_NE(text.find(part), std::u16string::npos) << platform::ToUtf8(part);
}

}  // namespace
