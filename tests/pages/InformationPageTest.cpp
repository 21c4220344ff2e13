// The Information tab in its sheet.

#include "InformationTest.h"

#include "Drive.h"

namespace {

void FailTable(TestMachine& test) {
    test.machine.faults.FailCalls("GetAdaptersAddresses", u"", ERROR_ACCESS_DENIED);
}

HWND List(const TestMachine& test) {
    return GetDlgItem(test.Page(), kInformationList);
}

void PressBoxOk() {
    SendDlgItemMessageW(GetForegroundWindow(), IDOK, BM_CLICK, 0, 0);
}

// The deed, when the tab has been up for so long.
void DoAfter(TestMachine& test, std::uint64_t milliseconds, std::function<void()> deed) {
    test.user.Do([&test, milliseconds] { test.machine.scheduler.UserWaits(milliseconds); });
    test.user.Do(std::move(deed));
}

TEST(InformationPage, PollsOnlyWhileItIsActive) {
    TestMachine test(FullSample());
    const auto passes = [&] { return test.machine.trace.Count("GetAdaptersAddresses") / 2; };
    const auto start = [&] {
        test.machine.trace.Clear();
        test.machine.trace.Start();
    };
    DoAfter(test, 1000, [&] {
        EXPECT_TRUE(Polls(test));
        Leave(test);
        EXPECT_FALSE(Polls(test));
        start();
    });
    DoAfter(test, 20000, [&] {
        EXPECT_EQ(passes(), 0u);
        Return(test);
    });
    DoAfter(test, 12000, [&] {
        EXPECT_EQ(passes(), 3u) << "at once, after 5 and after 10 seconds";
        // Apply stops and starts it: the tab is left, applied and entered.
        start();
        SendMessageW(test.SheetWindow(), PSM_CHANGED, reinterpret_cast<WPARAM>(test.Page()), 0);
        SendMessageW(test.SheetWindow(), PSM_APPLY, 0, 0);
        EXPECT_TRUE(Polls(test));
    });
    DoAfter(test, 1000, [&] { EXPECT_EQ(passes(), 1u); });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_FALSE(Polls(test));
}

TEST(InformationPage, AnUnchangedPassTouchesNoControl) {
    TestMachine test(FullSample());
    DoAfter(test, 1000, [&] {
        LVITEMW item = {};
        item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(List(test), LVM_SETITEMSTATE, 6, reinterpret_cast<LPARAM>(&item));
        test.machine.trace.Start();
    });
    DoAfter(test, 60000, [&] {
        for (const char* call : {"SendMessageW", "SendDlgItemMessageW", "PostMessageW"})
            EXPECT_EQ(test.machine.trace.Count(call), 0u) << call;
        EXPECT_EQ(SendMessageW(List(test), LVM_GETNEXTITEM, WPARAM(-1), LVNI_SELECTED), 6);
    });
    EXPECT_TRUE(test.RunSheet());
}

TEST(InformationPage, AChangedValueRedrawsTheListOnce) {
    TestMachine test(FullSample());
    DoAfter(test, 1000, [&] {
        test.machine.trace.Start();
        Merge(test, {{InterfaceKey(), "\"Up\"=dword:0"}});
        ChangeDeviceId(test);
        EXPECT_EQ(ListValues(test), FullValues());
    });
    DoAfter(test, 20000, [&] {
        Texts expected = FullValues();
        expected[ROW_NETWORK_STATUS] = u"Disconnected";
        expected[ROW_LINK_SPEED] = u"----";
        expected[ROW_DEVICE_ID] = u"8192";
        EXPECT_EQ(ListValues(test), expected);
        std::size_t redraws = 0;
        for (const auto& call : test.machine.trace.Records())
            redraws += call.argument == u"4105";  // LVM_DELETEALLITEMS
        EXPECT_EQ(redraws, 1u);
    });
    EXPECT_TRUE(test.RunSheet());
}

TEST(InformationPage, ARedrawThatCouldNotBeToldIsToldLater) {
    TestMachine test(FullSample());
    DoAfter(test, 1000, [&] {
        test.machine.faults.FailCalls("PostMessageW", u"", ERROR_NOT_ENOUGH_MEMORY, 1, 2);
        ChangeDeviceId(test);
    });
    DoAfter(test, 10000, [&] { EXPECT_EQ(ListValues(test)[ROW_DEVICE_ID], u"4099"); });
    DoAfter(test, 10000, [&] { EXPECT_EQ(ListValues(test)[ROW_DEVICE_ID], u"8192"); });
    EXPECT_TRUE(test.RunSheet());
}

TEST(InformationPage, EachFailedPassIsToldOnceItsForerunnerIsRead) {
    TestMachine test(FullSample());
    FailTable(test);
    for (const int answer : {IDOK, IDOK, IDOK, 0})
        test.user.Answer(answer);
    // The first fill, the pass at once, the one after 5 seconds, and the one whose box is left up.
    DoAfter(test, 60000, [&] {
        EXPECT_EQ(test.user.Boxes().size(), 4u);
        PressBoxOk();
        test.user.Answer(IDOK);
    });
    DoAfter(test, 6000, [&] {
        EXPECT_EQ(test.user.Boxes().size(), 5u);
        test.machine.faults.Disarm();
    });
    EXPECT_TRUE(test.RunSheet());
}

TEST(InformationPage, WhatAPassSaysOfATabThatWasLeftIsDropped) {
    TestMachine test(FullSample());
    DoAfter(test, 1000, [&] {
        FailTable(test);
        ChangeDeviceId(test);
        Sleep(6000);  // the sheet's thread is busy while a pass posts its failure and its rows
        Leave(test);
        EXPECT_FALSE(Polls(test));
        test.machine.faults.Disarm();
    });
    DoAfter(test, 20000, [&] {
        Return(test);
        EXPECT_EQ(ListValues(test)[ROW_DEVICE_ID], u"8192");
    });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_TRUE(test.user.Boxes().empty());
}

TEST(InformationPage, SavesWhatItShowsWhereItsUserSays) {
    struct Asked final : ScriptedUser {
        std::optional<std::u16string> OnFileDialog(
            const platform::FileDialogRequest& dialog) override {
            asked = dialog;
            return std::exchange(path, std::nullopt);
        }
        std::optional<std::u16string> path = u"C:\\facts";
        platform::FileDialogRequest asked;
    } user;
    // The longest name, with a character of two units; a line break would make another line.
    std::string name = "\u0421\u0435\u0442\u044C \U0001F5A7";
    for (int i = 0; i < 242; ++i)
        name += "\uFF21";
    TestMachine test(FullSample()
                         .With(InterfaceKey(), "\"Alias\"=\"" + name + "\"")
                         .PortValue(1, "\"DriverVersion\"=\"4.2\r\n9\n1\""));
    auto& drive = test.machine.Get<platform::Drive>();
    drive.WriteWholeFile(u"C:\\facts.log", std::string(5000, '?'));  // replaced
    test.user.Do([&] {
        test.machine.user = &user;
        test.Press(kSaveToFile);
        EXPECT_EQ(user.asked.owner, test.Page());
        test.Press(kSaveToFile);  // cancelled
        test.machine.user = &test.user;
    });
    EXPECT_TRUE(test.RunSheet());
    EXPECT_EQ(user.asked.title, u"Save Adapter's Information");
    EXPECT_EQ(user.asked.filter, std::u16string(u"*.log\0*.log\0", 12));
    EXPECT_EQ(user.asked.defaultExtension, u"log");
    EXPECT_EQ(user.asked.flags, 18u);
    EXPECT_EQ(drive.ReadWholeFile(u"C:\\facts.log"),
              "\xEF\xBB\xBF"
              "Driver Version : 4.2  9 1\r\n"
              "Firmware Version : 2.9.15000\r\n"
              "Port Number : 1a\r\n"
              "Bus Type : PCI-E 5.0 Gbps x8\r\n"
              "Link Speed : 40.0 Gbps/Full Duplex\r\n"
              "Part Number : CV354A-FC\r\n"
              "Device Id : 4099\r\n"
              "Revision Id : AB\r\n"
              "Current MAC Address : 02-02-C9-AA-BB-CC\r\n"
              "Permanent MAC Address : 00-02-C9-11-22-33\r\n"
              "Network Status : Connected\r\n"
              "Adapter Friendly Name : " +
                  name +
                  "\r\n"
                  "IPv4 Address : 192.168.7.10\r\n"
                  "Adapter User Name : Eth 1\r\n"
                  "Adapter PKey : 0x7fff\r\n");
}

}  // namespace
