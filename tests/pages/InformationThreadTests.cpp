// The Information tab's two threads, under many orders of their steps. These tests also run under
// the thread sanitizer.

#include "InformationTest.h"

#include "Drive.h"
#include "Seeds.h"

namespace {

constexpr std::size_t kSeeds = 60;

// Two states of the adapter that differ in every row.
std::string StateA() {
    return Changes(
        {{InterfaceKey(), "\"Alias\"=\"A\"\n\"Addresses\"=\"10.0.0.1\"\n\"Up\"=dword:1"},
         {Sample::ClassKey(1), "\"DriverVersion\"=\"A\""},
         {MiniportKey(), Answer("0xFFA0C911", "01") + "\n" + Answer("0xFFA0C912", "01") + "\n" +
                             Answer("0xFFA0C913", "01") + "\n" + Answer("0xFFA0C916", "41") + "\n" +
                             Answer("0xFFA0C925", "41")}});
}

std::string StateB() {
    return Changes(
        {{InterfaceKey(), "\"Alias\"=\"BB\"\n\"Addresses\"=\"10.0.0.22\"\n\"Up\"=dword:0"},
         {Sample::ClassKey(1), "\"DriverVersion\"=\"BB\""},
         {MiniportKey(), Answer("0xFFA0C911", "02") + "\n" + Answer("0xFFA0C912", "02") + "\n" +
                             Answer("0xFFA0C913", "02") + "\n" + Answer("0xFFA0C916", "42,42") +
                             "\n" + Answer("0xFFA0C925", "42,42")}});
}

// Each line of a saved file is of one state or the other.
void ExpectWholeRows(const std::string& file) {
    const struct {
        const char* label;
        std::vector<std::string> values;
    } rows[] = {
        {"Driver Version : ", {"A", "BB"}},
        {"Part Number : ", {"A", "BB"}},
        {"Adapter Friendly Name : ", {"A", "BB"}},
        {"Adapter User Name : ", {"A", "BB"}},
        {"IPv4 Address : ", {"10.0.0.1", "10.0.0.22"}},
        {"Network Status : ", {"Connected", "Disconnected"}},
        {"Link Speed : ", {"40.0 Gbps/Full Duplex", "----"}},
    };
    for (const auto& row : rows) {
        const std::size_t at = file.find(row.label);
        ASSERT_NE(at, std::string::npos) << row.label;
        const std::size_t start = at + std::string(row.label).size();
        const std::string value = file.substr(start, file.find("\r\n", start) - start);
        EXPECT_NE(std::find(row.values.begin(), row.values.end(), value), row.values.end())
            << row.label << value;
    }
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 15);
}

TEST(InformationThreads, ASaveSeesWholeRowsWhateverThePassIsAt) {
    for (const std::uint64_t seed : Seeds(kSeeds)) {
        SCOPED_TRACE(seed);
        TestMachine test(FullSample(), seed);
        Merge(test, StateA());
        auto& drive = test.machine.Get<platform::Drive>();
        for (int i = 0; i < 6; ++i) {
            test.user.Do([&test, i] {
                Merge(test, i % 2 == 0 ? StateB() : StateA());
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
        std::size_t bus[3] = {};
        bool left = false;
        test.machine.trace.onCall = [&](const platform::Trace::Record& call) {
            if (call.thread == 0) return;
            afterwards += left;
            for (std::size_t i = 0; i < std::size(bus); ++i)
                bus[i] += call.argument == Wide("0xFFA0C91" + std::to_string(i + 1));
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
        EXPECT_TRUE(bus[0] == bus[1] && bus[1] == bus[2]) << "a row was left in its middle";
    }
}

TEST(InformationThreads, FailingPassesBoxesAndTabChangesInAnyOrder) {
    for (const std::uint64_t seed : Seeds(kSeeds)) {
        SCOPED_TRACE(seed);
        TestMachine test(FullSample(), seed);
        for (int i = 0; i < 40; ++i)
            test.user.Answer(i % 3 == 1 ? 0 : IDOK);
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
                Merge(test, StateB());
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
            WCHAR text[40] = {};
            LVITEMW item = {};
            item.iSubItem = 1;
            item.pszText = text;
            item.cchTextMax = ARRAYSIZE(text);
            SendDlgItemMessageW(page, kInformationList, LVM_GETITEMTEXTW, ROW_PORT_NUMBER,
                                reinterpret_cast<LPARAM>(&item));
            EXPECT_EQ(text, std::u16string(u"2"));
            SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
            DestroyWindow(sheet);
        });
        EXPECT_TRUE(test.RunSheet());
        EXPECT_FALSE(Polls(test));
    }
}

}  // namespace
