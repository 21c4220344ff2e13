// The Information tab's two threads, under many orders of their steps. These tests also run under
// the thread sanitizer.

#include "InformationTest.h"

#include "Drive.h"
#include "Seeds.h"

namespace {

constexpr std::size_t kSeeds = 60;

// Gives the adapter one of two states that differ in these rows.
void SetState(TestMachine& test, bool second) {
    const std::string text = second ? "BB" : "A";
    const std::string hex = second ? "42,42" : "41";
    Merge(test, {{InterfaceKey(), "\"Alias\"=\"" + text + "\"\n\"Addresses\"=\"10.0.0." +
                                      (second ? "22\"\n\"Up\"=dword:0" : "1\"\n\"Up\"=dword:1")},
                 {Sample::ClassKey(1), "\"DriverVersion\"=\"" + text + "\""},
                 {MiniportKey(), Answer("0xFFA0C916", hex) + "\n" + Answer("0xFFA0C925", hex)}});
}

// Each line of a saved file is of one state or the other.
void ExpectWholeRows(const std::string& file) {
    const struct {
        std::string label;
        const char* values[2];
    } rows[] = {
        {"Driver Version : ", {"A\r\n", "BB\r\n"}},
        {"Part Number : ", {"A\r\n", "BB\r\n"}},
        {"Adapter Friendly Name : ", {"A\r\n", "BB\r\n"}},
        {"Adapter User Name : ", {"A\r\n", "BB\r\n"}},
        {"IPv4 Address : ", {"10.0.0.1\r\n", "10.0.0.22\r\n"}},
        {"Network Status : ", {"Connected\r\n", "Disconnected\r\n"}},
        {"Link Speed : ", {"40.0 Gbps/Full Duplex\r\n", "----\r\n"}},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(file.find(row.label + row.values[0]) != std::string::npos ||
                    file.find(row.label + row.values[1]) != std::string::npos)
            << row.label << "\n"
            << file;
    }
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 15);
}

TEST(InformationThreads, ASaveSeesWholeRowsWhateverThePassIsAt) {
    for (const std::uint64_t seed : Seeds(kSeeds)) {
        SCOPED_TRACE(seed);
        TestMachine test(FullSample(), seed);
        SetState(test, false);
        auto& drive = test.machine.Get<platform::Drive>();
        for (int i = 0; i < 6; ++i) {
            test.user.Do([&test, i] {
                SetState(test, i % 2 == 0);
                test.machine.scheduler.UserWaits(i * 1700);
            });
            test.user.Do([&] {
                test.user.Save(u"C:\\x.log");
                const platform::CallbackScope counted;  // where the baton may change hands
                test.Press(kSaveToFile);
                ExpectWholeRows(drive.ReadWholeFile(u"C:\\x.log").value_or(""));
            });
        }
        EXPECT_TRUE(test.RunSheet());
        EXPECT_FALSE(Polls(test));
    }
}

TEST(InformationThreads, TheTabIsLeftWhateverThePassIsAt) {
    // At each call of a pass the sheet is asked to change tabs.
    for (std::size_t step = 1; step <= 100; ++step) {
        SCOPED_TRACE(step);
        TestMachine test(FullSample(), step);
        std::size_t calls = 0;
        std::size_t afterwards = 0;
        bool left = false;
        test.machine.trace.onCall = [&](const platform::Trace::Record& call) {
            if (call.thread == 0) return;
            afterwards += left;
            if (++calls != step) return;
            const platform::QuietScope quiet;
            PostMessageW(test.SheetWindow(), PSM_SETCURSEL, 1, 0);
        };
        test.user.Do([&] { test.machine.scheduler.UserWaits(8000); });
        test.user.Do([&] {
            Leave(test);
            left = true;
            EXPECT_FALSE(Polls(test));
        });
        test.user.Do([&] { test.machine.scheduler.UserWaits(8000); });
        EXPECT_TRUE(test.RunSheet());
        EXPECT_EQ(afterwards, 0u);
    }
}

TEST(InformationThreads, FailingPassesBoxesAndTabChangesInAnyOrder) {
    for (const std::uint64_t seed : Seeds(kSeeds)) {
        SCOPED_TRACE(seed);
        TestMachine test(FullSample(), seed);
        for (int i = 0; i < 40; ++i)
            test.user.Answer(i % 3 == 1 ? 0 : IDOK);  // 0: left up
        const auto pressBox = [&] {
            const HWND front = GetForegroundWindow();
            if (front != test.SheetWindow()) SendDlgItemMessageW(front, IDOK, BM_CLICK, 0, 0);
        };
        test.user.Do([&] {
            test.machine.faults.FailCalls("GetAdaptersAddresses", u"", ERROR_ACCESS_DENIED);
        });
        for (int i = 0; i < 4; ++i) {
            test.user.Do([&test, i] { test.machine.scheduler.UserWaits(i * 3300); });
            test.user.Do([&] { Leave(test); });
            test.user.Do(pressBox);
            test.user.Do([&] {
                Return(test);
                SetState(test, true);
            });
            test.user.Do(pressBox);
        }
        test.user.Do([&] { test.machine.faults.Disarm(); });
        for (int i = 0; i < 3; ++i)
            test.user.Do(pressBox);
        EXPECT_TRUE(test.RunSheet());
        EXPECT_FALSE(Polls(test));
    }
}

// What is sent to the sheet while it waits for the end of a pass is answered at once.
TEST(InformationThreads, TheWaitForTheThreadAnswersWhatIsSent) {
    TestMachine test(FullSample());
    std::size_t calls = 0;
    bool stops = false;
    LRESULT length = 0;
    test.machine.trace.onCall = [&](const platform::Trace::Record& call) {
        const platform::QuietScope quiet;
        if (call.thread == 0) stops |= std::string_view(call.name) == "SetEvent";
        if (call.thread == 0 || ++calls != 10) return;
        PostMessageW(test.SheetWindow(), PSM_SETCURSEL, 1, 0);
        test.machine.scheduler.BlockUntil("a row", [&] { return stops; });
        length = SendMessageW(test.SheetWindow(), WM_GETTEXTLENGTH, 0, 0);
    };
    test.user.Do([&] { test.machine.scheduler.UserWaits(1000); });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_GT(length, 0);
}

// Two sheets of two adapters poll side by side.
TEST(InformationThreads, SheetsDoNotMixUpTheirAdapters) {
    for (const std::uint64_t seed : Seeds(20)) {
        SCOPED_TRACE(seed);
        TestMachine test(
            FullSample().With(MiniportKey(Sample::Guid(2)), Answer("0xFFA0C923", "02")), seed);
        test.user.Do([&] {
            TestMachine::ProviderResult other = test.CallProvider(2);
            PROPSHEETHEADERW header = {};
            header.dwSize = sizeof(header);
            header.dwFlags = PSH_MODELESS;
            header.nPages = static_cast<UINT>(other.pages.size());
            header.phpage = other.pages.data();
            const HWND sheet = reinterpret_cast<HWND>(PropertySheetW(&header));
            Sleep(6000);
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
            EXPECT_EQ(ListValues(test), FullValues());
            const HWND page =
                reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
            EXPECT_EQ(ListColumn(page, 1)[ROW_PORT_NUMBER], u"2");
            SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
            DestroyWindow(sheet);
        });
        EXPECT_TRUE(test.RunSheet());
        EXPECT_FALSE(Polls(test));
    }
}

}  // namespace
