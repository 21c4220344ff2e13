// The VLAN tab's two threads, under many orders of their steps. These tests also run under the
// thread sanitizer.

#include "VlanTest.h"

#include <random>

#include "Desktop.h"
#include "Seeds.h"

namespace {

using namespace vlan;

constexpr std::size_t kSeeds = 60;

// At each call of a pass the sheet is asked to change tabs: the pass still comes to its end.
TEST(VlanThreads, TheTabIsLeftWhateverThePassIsAt) {
    for (std::size_t step = 1; step <= 25; ++step) {
        SCOPED_TRACE(step);
        VlanTest test(WithVlans(3), step);
        std::size_t calls = 0;
        bool left = false;
        test.machine.trace.onCall = [&](const platform::Trace::Record& call) {
            if (call.thread == 0) return;
            EXPECT_FALSE(left);
            if (++calls != step) return;
            const platform::QuietScope quiet;
            PostMessageW(test.SheetWindow(), PSM_SETCURSEL, 1, 0);
        };
        test.user.Do([&] { test.machine.scheduler.UserWaits(20000); });
        test.user.Do([&] {
            test.Leave();
            left = true;
            EXPECT_FALSE(test.Polls());
        });
        test.user.Do([&] { test.machine.scheduler.UserWaits(20000); });
        EXPECT_TRUE(test.RunSheet());
    }
}

// A user who does anything at any time: commands, tabs, Apply, held boxes, closing.
class RestlessUser final : public platform::User {
  public:
    RestlessUser(VlanTest& test, std::uint64_t seed) : m_test(test), m_random(seed) {
        test.machine.user = this;
    }

    int OnMessageBox(const platform::MessageBoxRequest& box) override {
        if (!m_isDone && Chance(3)) return 0;  // left up
        const bool asks = (box.style & MB_TYPEMASK) == MB_YESNO;
        return !asks ? IDOK : Chance(4) ? IDNO : IDYES;
    }
    std::optional<std::u16string> OnFileDialog(const platform::FileDialogRequest&) override {
        return {};
    }
    bool OnIdle() override { return (m_isDone && Close()) || m_test.user.OnIdle(); }

    void Act() {
        const HWND front = GetForegroundWindow();
        if (front != m_test.SheetWindow() && front != m_second && !Chance(3)) return InFront(front);
        switch (m_random() % 11) {
            case 0:
                return m_test.Leave();
            case 1:
                return m_test.Enter();
            case 2:
                SendMessageW(m_test.SheetWindow(), PSM_CHANGED,
                             reinterpret_cast<WPARAM>(m_test.Page()), 0);
                SendMessageW(m_test.SheetWindow(), PSM_APPLY, 0, 0);
                return;
            case 3:
            case 4:
                return m_test.machine.scheduler.UserWaits(m_random() % 20000);
            case 5:
                m_test.Merge(InterfaceKey(1), Chance(2) ? "\"Up\"=dword:0" : "\"Up\"=dword:1");
                return;
            case 6:
                m_test.machine.faults.Disarm();
                if (Chance(2))
                    m_test.machine.faults.FailCalls("GetAdaptersAddresses", u"",
                                                    ERROR_ACCESS_DENIED);
                return;
            case 7:
                if (!std::exchange(m_hasOpened, true))
                    m_second = m_test.OpenSecondSheet();
                else if (m_second)
                    SendMessageW(m_second, PSM_SETCURSEL, 1 + m_random() % 2, 0);
                return;
            default: {
                const int commands[] = {IDC_VLAN_NEW, IDC_VLAN_REMOVE, IDC_VLAN_MODIFY};
                m_test.Select(static_cast<int>(m_random() % 3));
                return m_test.Press(commands[m_random() % 3]);
            }
        }
    }
    // From now on whatever is up is answered or closed.
    void Finish() {
        m_isDone = true;
        CloseSecondSheet();
    }
    void CloseSecondSheet() {
        const platform::QuietScope quiet;
        if (m_second) VlanTest::CloseSecondSheet(std::exchange(m_second, nullptr));
    }

  private:
    // Answers the box or closes the dialog in front. False when there is none.
    bool Close() const {
        for (const HWND window : platform::TheDesktop().TopLevels())
            for (const int button : {IDC_VLAN_CANCEL, IDNO, IDOK})
                if (window != m_test.SheetWindow() && IsWindowVisible(window) &&
                    GetDlgItem(window, button)) {
                    SendDlgItemMessageW(window, button, BM_CLICK, 0, 0);
                    return true;
                }
        return false;
    }
    bool Chance(unsigned of) { return m_random() % of == 0; }
    // Fills the dialog, or presses a button of it or of a box.
    void InFront(HWND front) {
        const int buttons[] = {IDC_VLAN_CANCEL, IDOK, IDYES, IDNO};
        if (GetDlgItem(front, IDC_VLAN_NAME) && Chance(2))
            VlanTest::Edit(u"N" + Wide(std::to_string(m_random() % 4)),
                           Wide(std::to_string(m_random() % 9)));
        else
            SendDlgItemMessageW(front, buttons[m_random() % 4], BM_CLICK, 0, 0);
    }

    VlanTest& m_test;
    std::mt19937_64 m_random;
    bool m_isDone = false;
    bool m_hasOpened = false;
    HWND m_second = nullptr;  // sheet; its start has message loops of its own
};

TEST(VlanThreads, CommandsBoxesPassesAndClosingInAnyOrder) {
    for (const std::uint64_t seed : Seeds(kSeeds)) {
        SCOPED_TRACE(seed);
        VlanTest test(WithVlans(3), seed);
        RestlessUser user(test, seed);
        for (int i = 0; i < 50; ++i)
            test.user.Do([&] { user.Act(); });
        // Whatever is up then goes with its sheet, or is answered.
        if (seed % 2 == 0) test.user.Do([&] { DestroyWindow(test.SheetWindow()); });
        test.user.Do([&] { user.Finish(); });
        EXPECT_TRUE(test.RunSheet());
        user.CloseSecondSheet();
        EXPECT_FALSE(test.Polls());
        EXPECT_EQ(Library().activeConfigTabCount, 0);
    }
}

}  // namespace
