// The base of the tabs and of modal dialogs.

#include "SheetPage.h"

#include <string>

#include "Fixture.h"
#include "ModalDialog.h"
#include "TestWindow.h"
#include "resource.h"

namespace {

// Notes what it is asked, and where it ends.
class NotingPage final : public SheetPage {
  public:
    explicit NotingPage(std::string& notes, bool starts) : m_notes(notes), m_starts(starts) {}
    ~NotingPage() override { m_notes += "gone "; }

  private:
    bool OnStart() override {
        m_notes += "start ";
        return m_starts;
    }
    INT_PTR OnNotify(const NMHDR& header) override {
        if (header.code != PSN_KILLACTIVE) return 0;
        m_notes += "leave ";
        return Answer(m_refusals-- > 0);
    }
    // Has a box up that the sheet doesn't wait for.
    void OnCommand(WORD control, WORD) override {
        m_notes += "command ";
        if (control != IDC_RUN_TUNING) return;
        MessageBoxW(nullptr, TEXT("box"), TEXT("caption"), MB_OK);
        m_notes += IsReleased() ? "released " : "alive ";
    }
    void OnPosted(UINT, WPARAM, LPARAM) override { m_notes += "posted "; }

    std::string& m_notes;
    bool m_starts;
    int m_refusals = 1;
};

template <class Place>
TestMachine::ProviderResult PageOf(TestMachine& test, SheetPage* object) {
    PROPSHEETPAGEW page = {};
    page.dwSize = sizeof(page);
    page.dwFlags = PSP_USECALLBACK;
    page.hInstance = test.Attach();
    page.pszTemplate = MAKEINTRESOURCEW(IDD_PERFORMANCE_ETH);
    page.pfnDlgProc = kPageProcedures<Place>.dialog;
    page.pfnCallback = kPageProcedures<Place>.release;
    page.lParam = reinterpret_cast<LPARAM>(object);
    return {TRUE, {CreatePropertySheetPageW(&page)}};
}

template <class Place>
void ExpectNotes(bool starts, const std::string& expected) {
    TestMachine test;
    test.Attach();
    std::string notes;
    test.user.Do([&] {
        EXPECT_NE(SetCursor(nullptr), LoadCursorW(nullptr, IDC_WAIT)) << "the start is over";
        test.Press(IDC_BALANCED);
        PostMessageW(test.Page(), WM_APP + 1, 0, 0);
    });
    test.user.Do([&] { SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_OK, 0); });
    EXPECT_TRUE(test.RunSheet(PageOf<Place>(test, new NotingPage(notes, starts))));
    EXPECT_EQ(notes, expected);
    EXPECT_EQ(Library().vlanPages.count, 0);
}

TEST(SheetPage, GetsItsMessagesWhereverItIsKept) {
    // The first OK is refused; the test's own end of the sheet cancels it.
    const std::string notes = "start command posted leave gone ";
    ExpectNotes<InWindow>(true, notes);
    ExpectNotes<InPageTable<&LibraryState::vlanPages>>(true, notes);
}

TEST(SheetPage, AFailedStartGetsNothingAndLetsTheSheetGo) {
    ExpectNotes<InWindow>(false, "start gone ");
    ExpectNotes<InPageTable<&LibraryState::vlanPages>>(false, "start gone ");
}

TEST(SheetPage, LivesUntilItsHandlerReturns) {
    TestMachine test;
    test.Attach();
    std::string notes;
    test.user.Answer(0);  // the box stays up
    test.user.Do([&] { test.Press(IDC_RUN_TUNING); });
    test.user.Do([&] {
        const HWND box = GetForegroundWindow();
        DestroyWindow(test.SheetWindow());
        EXPECT_EQ(notes, "start command ");
        SendDlgItemMessageW(box, IDOK, BM_CLICK, 0, 0);
    });
    EXPECT_TRUE(test.RunSheet(PageOf<InWindow>(test, new NotingPage(notes, true))));
    EXPECT_EQ(notes, "start command released gone ");
}

class PlainDialog final : public ModalDialog {
  public:
    bool started = false;

  private:
    bool OnStart() override { return started = Control(IDC_RUN_TUNING) != nullptr; }
    void OnCommand(WORD control, WORD notification) override {
        if (control == IDC_RUN_TUNING && notification == BN_CLICKED) End(7);
    }
};

TEST(ModalDialog, GivesWhatItEndedWithOrSaysThatItCannotOpen) {
    TestMachine test;
    test.Attach();
    const TestWindow owner(u"Static", 0);
    PlainDialog dialog;
    test.user.Do([&] { SendDlgItemMessageW(dialog.Window(), IDC_RUN_TUNING, BM_CLICK, 0, 0); });
    EXPECT_EQ(dialog.Show(IDD_PERFORMANCE_ETH, owner.Handle()), 7);
    EXPECT_TRUE(dialog.started);

    test.machine.faults.FailCalls("DialogBoxParamW", u"", ERROR_NOT_ENOUGH_MEMORY);
    test.user.Answer(IDOK);
    EXPECT_EQ(dialog.Show(IDD_PERFORMANCE_ETH, owner.Handle()), -1);
    ASSERT_EQ(test.user.Boxes().size(), 1u);
    EXPECT_EQ(test.user.Boxes()[0].text, u"Failed to open the internal dialog box.");
}

}  // namespace
