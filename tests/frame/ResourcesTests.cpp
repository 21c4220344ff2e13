// The library's resources, read from the compiled file.

#include "Resources.h"

#include <algorithm>

#include "Fixture.h"
#include "LibraryImage.h"
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

struct Control {
    DWORD id;
    platform::ResourceName kind;  // the window class
    platform::ResourceName text;
    DWORD style;
    short x, y, width, height;
};

struct Dialog {
    DWORD style = 0;
    short width = 0;
    short height = 0;
    std::u16string title;
    WORD points = 0;
    std::u16string font;
    std::vector<Control> controls;
};

Dialog ReadDialog(WORD id) {
    platform::ResourceReader reader(Find(kDialogType, id));
    Dialog dialog;
    EXPECT_EQ(reader.Word(), 1);
    EXPECT_EQ(reader.Word(), 0xFFFF);  // the extended form
    reader.Dword();
    reader.Dword();
    dialog.style = reader.Dword();
    const WORD count = reader.Word();
    reader.Dword();
    dialog.width = reader.Short();
    dialog.height = reader.Short();
    reader.Name();
    reader.Name();
    dialog.title = reader.Text();
    dialog.points = reader.Word();
    reader.Dword();
    dialog.font = reader.Text();
    for (WORD i = 0; i < count; ++i) {
        reader.Align(4);
        Control control;
        reader.Dword();
        reader.Dword();
        control.style = reader.Dword();
        control.x = reader.Short();
        control.y = reader.Short();
        control.width = reader.Short();
        control.height = reader.Short();
        control.id = reader.Dword();
        control.kind = reader.Name();
        control.text = reader.Name();
        reader.Bytes(reader.Word());
        dialog.controls.push_back(control);
    }
    EXPECT_TRUE(reader.Good());
    return dialog;
}

// The compiler writes names of classes in capitals; they are found without regard to case.
const platform::ResourceName kButton = std::u16string(u"BUTTON");
const platform::ResourceName kStatic = std::u16string(u"STATIC");
const platform::ResourceName kRichEdit = std::u16string(u"RICHEDIT20W");
constexpr DWORD kNoId = 0xFFFFFFFF;
constexpr DWORD kShown = WS_CHILD | WS_VISIBLE;
constexpr DWORD kRadio = kShown | BS_AUTORADIOBUTTON;

platform::ResourceName T(const char16_t* text) {
    return std::u16string(text);
}

std::vector<Control> PerformanceControls(bool ethernet) {
    const DWORD first = kRadio | WS_GROUP | WS_TABSTOP;
    std::vector<Control> controls = {
        {kNoId, kStatic, T(u"Performance Tuning Tool"), kShown | WS_GROUP, 76, 14, 107, 8},
        {kNoId, kStatic, WORD{109}, kShown | SS_BITMAP | SS_REALSIZECONTROL, 0, 0, 52, 38},
        {1089, kButton, T(u"Tuning Scenario:"), kShown | BS_GROUPBOX, 27, 45, 193, 99},
        {1086, kButton, T(u"Single port traffic"), first, 39, 63, 101, 10},
        {1087, kButton, T(u"Dual port traffic"), kRadio, 39, 77, 84, 10},
        {1088, kButton, T(u"Forwarding traffic"), kRadio, 39, 91, 88, 10},
        {1096, kButton, T(u"Multicast traffic"), kRadio, 39, 105, 80, 10},
        {1098, kButton, T(u"Single stream traffic"), kRadio, 38, 109, 77, 10},
        {1095, kButton, T(u"[Default] Balanced tuning"), kRadio, 39, 119, 95, 10},
        {1090, kButton, T(u"Run Tuning"), kShown | BS_PUSHBUTTON | WS_GROUP | WS_TABSTOP, 155, 124,
         55, 14},
        {1049, kRichEdit, T(u""),
         kShown | ES_MULTILINE | ES_READONLY | WS_VSCROLL | WS_BORDER | WS_TABSTOP, 4, 149, 240,
         73},
    };
    if (!ethernet) {
        std::erase_if(controls, [](const Control& each) { return each.id == 1098; });
        return controls;
    }
    const struct {
        DWORD id;
        short x, y, height;
    } moved[] = {{1089, 27, 40, 104}, {1086, 38, 52, 10}, {1087, 38, 66, 10},
                 {1088, 38, 81, 10},  {1096, 38, 95, 10}, {1095, 38, 123, 10}};
    for (const auto& each : moved) {
        auto& control = *std::find_if(controls.begin(), controls.end(),
                                      [&](const Control& one) { return one.id == each.id; });
        control.x = each.x;
        control.y = each.y;
        control.height = each.height;
    }
    return controls;
}

TEST(Resources, ThePerformanceDialogsAreLaidOutAsPublished) {
    for (const WORD id : {WORD{IDD_PERFORMANCE_IPOIB}, WORD{IDD_PERFORMANCE_ETH}}) {
        SCOPED_TRACE(id);
        const Dialog dialog = ReadDialog(id);
        EXPECT_EQ(dialog.width, 249);
        EXPECT_EQ(dialog.height, 226);
        EXPECT_EQ(dialog.title, u"Performance");
        EXPECT_EQ(dialog.points, 8);
        EXPECT_EQ(dialog.font, u"MS Shell Dlg");
        EXPECT_EQ(dialog.style & (DS_SETFONT | WS_CHILD),
                  static_cast<DWORD>(DS_SETFONT | WS_CHILD));

        const auto expected = PerformanceControls(id == IDD_PERFORMANCE_ETH);
        ASSERT_EQ(dialog.controls.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            SCOPED_TRACE(expected[i].id);
            const Control& control = dialog.controls[i];
            EXPECT_EQ(control.id, expected[i].id);
            EXPECT_EQ(control.kind, expected[i].kind);
            EXPECT_EQ(control.text, expected[i].text);
            EXPECT_EQ(control.style, expected[i].style);
            EXPECT_EQ(control.x, expected[i].x);
            EXPECT_EQ(control.y, expected[i].y);
            EXPECT_EQ(control.width, expected[i].width);
            EXPECT_EQ(control.height, expected[i].height);
        }
    }
}

TEST(Resources, TheBitmapFillsItsPlaceAt96Dpi) {
    platform::ResourceReader reader(Find(kBitmapType, IDB_PERFORMANCE));
    EXPECT_EQ(reader.Dword(), 40u);
    EXPECT_EQ(reader.Dword(), 78u);
    EXPECT_EQ(reader.Dword(), 62u);
}

TEST(Resources, TheVersionNamesTheLibrary) {
    const auto data = Find(kVersionType, 1);
    std::u16string text;
    for (std::size_t i = 0; i + 1 < data.size(); i += 2)
        text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    for (const char16_t* part : {u"Corvanta", u"1.0.0.0", u"WinTsrTune_ipoib.dll"})
        EXPECT_NE(text.find(part), std::u16string::npos) << platform::ToUtf8(part);
}

}  // namespace
