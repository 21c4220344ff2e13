#include "CommonControls.h"

#include "Fixture.h"
#include "TestWindow.h"

namespace {

TEST(CommonControls, AListKeepsItsRowsWithTheirData) {
    TestMachine test;
    const TestWindow list(WC_LISTVIEWW, LVS_REPORT);
    EXPECT_TRUE(InsertColumn(list.Handle(), 0, TEXT("Name"), 140));
    EXPECT_EQ(InsertRow(list.Handle(), 0, TEXT("a"), 7), 0);
    EXPECT_EQ(InsertRow(list.Handle(), 0, TEXT("b"), 8), 0) << "before the first";
    EXPECT_EQ(RowData(list.Handle(), 0), 8);
    EXPECT_EQ(RowData(list.Handle(), 1), 7);
    EXPECT_EQ(RowData(list.Handle(), 2), 0);
    EXPECT_EQ(SelectedRow(list.Handle()), -1);
    LVITEMW item = {};
    item.stateMask = item.state = LVIS_SELECTED;
    SendMessageW(list.Handle(), LVM_SETITEMSTATE, 1, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(SelectedRow(list.Handle()), 1);
}

TEST(CommonControls, AComboBoxIsFilledAnewAndReadIntoWhatHoldsIt) {
    TestMachine test;
    const TestWindow combo(TEXT("ComboBox"), CBS_DROPDOWNLIST);
    const LPCWSTR texts[] = {TEXT("0"), TEXT("seven")};
    for (int i = 0; i < 2; ++i)
        FillComboBox(combo.Handle(), texts, ARRAYSIZE(texts));
    EXPECT_EQ(SendMessageW(combo.Handle(), CB_GETCOUNT, 0, 0), 2);
    WCHAR text[6];
    EXPECT_FALSE(ReadComboBoxText(combo.Handle(), text, ARRAYSIZE(text)));
    EXPECT_FALSE(SelectComboBoxText(combo.Handle(), TEXT("8")));
    EXPECT_TRUE(SelectComboBoxText(combo.Handle(), TEXT("SEV")));
    EXPECT_FALSE(ReadComboBoxText(combo.Handle(), text, 5)) << "no room for the terminator";
    EXPECT_TRUE(ReadComboBoxText(combo.Handle(), text, 6));
    EXPECT_EQ(std::u16string(text), u"seven");
}

}  // namespace
