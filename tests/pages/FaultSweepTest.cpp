// The Information and Port Protocol tabs, with each of their system calls failing in its turn.

#include <sstream>

#include "Drive.h"
#include "FaultSweep.h"
#include "InformationTest.h"
#include "PortProtocolTest.h"

namespace {

using namespace port_protocol;

const std::string kValue = "HKEY_LOCAL_MACHINE\\" + ParametersPath() + "\\PortType";
const std::string kRestarts = "\\Restarts\\";
const std::vector<const char*> kChangingState = {"SetupDiSetClassInstallParamsW",
                                                 "SetupDiCallClassInstaller"};
const Lines kTypeButtons = {"IB 1", "ETH 1", "AUTO 1", "IB 2", "ETH 2", "AUTO 2"};

// What the texts of State() say, a note for each state of a control.
Values Screen(const std::string& buttons, const std::string& setting1,
              const std::string& setting2) {
    Values notes = {{"setting 1", setting1}, {"setting 2", setting2}};
    std::size_t button = 0;
    bool shown = true;
    for (const char c : buttons) {
        if (c == '(') shown = false;
        if (c == '(' || c == ')' || c == ' ') continue;
        const std::string& name = kTypeButtons[button++];
        notes[name + " is enabled"] = c == 'o' || c == '*' ? "yes" : "no";
        notes[name + " is checked"] = c == 'X' || c == '*' ? "yes" : "no";
        notes[name + " is shown"] = shown ? "yes" : "no";
    }
    return notes;
}

Values PortProtocolScreen(TestMachine& test) {
    const platform::QuietScope quiet;
    Values notes = {{"help", TextOf(test, 1078)},
                    {"setting 1", TextOf(test, 1079)},
                    {"setting 2", TextOf(test, 1080)}};
    for (std::size_t i = 0; i < kTypeButtons.size(); ++i) {
        const int control = i < 3 ? kPort1[i] : kPort2[i - 3];
        const HWND button = GetDlgItem(test.Page(), control);
        const std::string& name = kTypeButtons[i];
        notes[name + " is enabled"] = IsWindowEnabled(button) ? "yes" : "no";
        notes[name + " is checked"] = test.IsChecked(control) ? "yes" : "no";
        notes[name + " is shown"] = IsWindowVisible(button) ? "yes" : "no";
    }
    return notes;
}

TEST(FaultSweep, PortProtocolStart) {
    for (const bool single : {false, true}) {
        FaultSweep sweep;
        sweep.name = std::string("start of the Port Protocol tab, ports: ") + (single ? "1" : "2");
        sweep.sample = single ? Bus(kSingle, R"("eth")") : Bus(kAll, R"("eth,auto")");
        sweep.sample.With(ParametersPath(), "\"PortSetting\"=dword:00000001");
        sweep.help = "<help><PortType>{\\rtf1 wire}</PortType></help>";
        sweep.operation = [](TestMachine& test, const FaultSweep::Sweep& swept) {
            std::vector<TestMachine::ProviderResult> provided = {test.CallBusProvider(),
                                                                 test.CallBusProvider()};
            swept([&](Values& notes) {
                test.user.Do([&] { notes = PortProtocolScreen(test); });
                EXPECT_TRUE(test.RunSheet(std::move(provided.back())));
                provided.pop_back();
            });
        };
        sweep.shownBefore = Screen("ooo ooo", "", "");
        sweep.shownBefore["help"] = "";
        // A control that couldn't be set stays as it was, and nobody is told.
        sweep.succeeded = [](const Observed&, const Observed&) { return true; };
        const auto warned = [](const char* caption, Values screen) {
            return Seen{.boxes = Lines{Box(caption, platform::ToUtf8(kInvalid), 16)},
                        .shown = std::move(screen)};
        };
        const Seen noTypes = single ? warned("Error", Screen("*oo (---)", "IB", ""))
                                    : warned("Warning", Screen("*oo *oo", "IB", "Eth"));
        const Seen noKey = warned("Warning", Screen("*o- *o-", "Eth", "Eth"));
        sweep.described = {
            {{"RegOpenKeyExW"},
             single ? noKey : Seen{.shown = Screen("o*- *o-", "Eth", "Eth")},
             ParametersPath(),
             1,
             false},
            {{"RegOpenKeyExW"}, noKey, ParametersPath(), 1},
            {{"RegOpenKeyExW"}, noTypes, ParametersPath(), 2},
            {{"RegQueryValueExW"}, noTypes, "PortType"},
            {{"RegQueryValueExW"}, {.shown = Screen("o*- (---)", "IB", "")}, "CapabilityFlag"},
            {{"RegQueryValueExW"}, {.shown = {{"setting 1", "Eth"}}}, "PortSetting"},
            {{"IXMLDOMDocument::getElementsByTagName", "IXMLDOMNodeList::get_length",
              "IXMLDOMNodeList::get_item", "IXMLDOMNode::get_text", "operator new",
              "WideCharToMultiByte"},
             {.shown = {{"help", ""}}}},
        };
        sweep.Execute();
    }
}

// A type for the card's one port, or the hardware's default for both.
TEST(FaultSweep, PortProtocolApply) {
    for (const bool single : {false, true}) {
        FaultSweep sweep;
        sweep.name = std::string("a choice of port types, applied, ports: ") + (single ? "1" : "2");
        sweep.sample = single ? Bus(kSingle, R"("ib")") : Bus(kAll, R"("ib,eth")");
        sweep.operation = [=](TestMachine& test, const FaultSweep::Sweep& swept) {
            int next = single ? 1075 : 0;
            test.user.Do([&] {
                if (!single) test.Press(kDefaults);
                swept([&](Values&) {
                    if (const int choice = std::exchange(next, kDefaults)) test.Press(choice);
                    SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
                });
            });
            EXPECT_TRUE(test.RunBusSheet());
        };
        // The value stays, and the device restarts all the same.
        const auto notWritten = [&](const std::string& text, const std::string& error) {
            return Seen{
                .boxes = Lines{Box("Error", text + "\r\nError message: " + error + "\r\n", 0x2010)},
                .shown = {{kValue, single ? "1:i\\00b\\00\\00\\00"
                                          : "1:i\\00b\\00,\\00e\\00t\\00h\\00\\00\\00"}}};
        };
        const std::string denied = "Access is denied.";
        const std::string broken = "A device attached to the system is not functioning.";
        const std::string open = "Failed to open registry key.";
        const std::string restarts = "HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn" + kRestarts;
        const Seen notRestarted = {
            .shown = {{restarts, "-"}, {restarts + Sample::BusInstanceId(), "-"}}};
        sweep.described = {
            {{"RegOpenKeyExW"}, notWritten(open, denied), ParametersPath()},
            {{"RegQueryValueExW"}, notWritten(open, broken), "PortType"},
            {{"RegDeleteValueW"}, notWritten(open, denied), "PortType"},
            {{"RegSetValueExW"}, notWritten("Failed to set value to registry key.", denied)},
            // It is enabled for all hardware profiles first; for this one is what counts.
            {kChangingState, {}, Sample::BusInstanceId(), 2, false},
            {kChangingState, notRestarted},
            {{"SetupDiCreateDeviceInfoListExW", "SetupDiOpenDeviceInfoW",
              "SetupDiGetDeviceInfoListDetailW", "SetupDiEnumDeviceInfo"},
             notRestarted},
        };
        sweep.onceOnly = {kRestarts};
        sweep.Execute();
    }
}

// The rows of the saved file and of the list.
std::string Saved(int row) {
    return "saved " + std::to_string(row);
}
std::string Listed(int row) {
    return "listed " + std::to_string(row);
}

// A sheet with nothing but the Information tab, up for the thread's first pass. The device's id
// becomes another one before that.
void PollAndSave(TestMachine& test, TestMachine::ProviderResult provided, Values& notes) {
    const platform::QuietScope quiet;
    for (; provided.pages.size() > 1; provided.pages.pop_back())
        DestroyPropertySheetPage(provided.pages.back());
    platform::Drive& drive = test.machine.Get<platform::Drive>();
    drive.WriteWholeFile(u"C:\\x.log", "");
    test.user.Do([&] {
        ChangeDeviceId(test);
        test.machine.scheduler.UserWaits(1000);
    });
    test.user.Do([&] {
        test.user.Save(u"C:\\x.log");
        test.Press(kSaveToFile);
        const Texts labels = ListColumn(test.Page(), 0);
        const Texts values = ListValues(test);
        for (std::size_t row = 0; row < labels.size(); ++row)
            notes[Listed(static_cast<int>(row))] =
                platform::ToUtf8(labels[row] + u" : " + values[row]);
        const std::string saved = drive.ReadWholeFile(u"C:\\x.log").value_or("");
        std::istringstream lines(saved.substr(std::min<std::size_t>(saved.size(), 3)));
        int row = 0;
        for (std::string line; std::getline(lines, line); ++row)
            notes[Saved(row)] = line.ends_with('\r') ? line.substr(0, line.size() - 1) : "cut";
    });
    EXPECT_TRUE(test.RunSheet(std::move(provided)));
    EXPECT_FALSE(Polls(test));
    Merge(test, {{MiniportKey(), Answer("0xFFA0C924", "03,10")}});
}

TEST(FaultSweep, InformationTab) {
    FaultSweep sweep;
    sweep.name = "the Information tab's start, passes and save";
    sweep.sample = FullSample();
    sweep.operation = [](TestMachine& test, const FaultSweep::Sweep& swept) {
        std::vector<TestMachine::ProviderResult> provided = {test.CallProvider(),
                                                             test.CallProvider()};
        swept([&](Values& notes) {
            PollAndSave(test, std::move(provided.back()), notes);
            provided.pop_back();
        });
    };
    const Values clean = sweep.Clean().first.values;
    const std::string none = platform::ToUtf8(kNotAvailable);
    // A row that can't be read shows its last value, or that it has none; "Disabled" is one too.
    Lines label(ROW_PKEY + 1);
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row) {
        const std::string line = clean.at(Saved(row));
        label[static_cast<std::size_t>(row)] = line.substr(0, line.find(" : ") + 3);
    }
    const auto mayShow = [&](int row, const std::string& value) {
        for (const std::string& note : {Saved(row), Listed(row)})
            sweep.mayBe.insert({note, label[static_cast<std::size_t>(row)] + value});
    };
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row)
        mayShow(row, row == ROW_NETWORK_STATUS ? "Disabled" : none);
    mayShow(ROW_DEVICE_ID, "4099");
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row)
        sweep.mayBe.insert({Listed(row), label[static_cast<std::size_t>(row)]});
    const auto rows = [](const std::vector<int>& which) {
        Seen seen;
        for (const int row : which)
            seen.kept.insert(seen.kept.end(), {Saved(row), Listed(row)});
        return seen;
    };
    // The file is there for whoever it was told to.
    sweep.succeeded = [](const Observed& found, const Observed&) {
        return found.values.contains(Saved(ROW_PKEY)) && found.values.at(Saved(ROW_PKEY)) != "cut";
    };
    const auto notSaved = [&](const std::string& message, const std::string& error) {
        const std::string text = message + ".\r\nError message: " + error + ".\r\n";
        sweep.failureBoxes.push_back(Box("Error", text, 0x2010));
    };
    notSaved("Failed to write to file", "The handle is invalid");
    notSaved("Failed to write to file", "There is not enough space on the disk");
    notSaved("Failed to write to file",
             "No mapping for the Unicode character exists in the target multi-byte code page");
    notSaved("Failed to open the specified file for writing", "Access is denied");
    const std::string memory = "Not enough storage is available to process this command.\r\n";
    const std::string noTable = Box(
        "Error", "VLAN status refresh failed to query system.\r\nError message: " + memory, 0x2010);
    const std::string noBlock = Box("Error",
                                    "Failed to execute the command. This may occur due to "
                                    "insufficient memory.\r\nError message:" +
                                        memory,
                                    0x2010);
    // The table of adapters is asked for by each of the two passes.
    const auto network = [&](const Lines& boxes) {
        Seen seen = rows({ROW_NETWORK_STATUS, ROW_FRIENDLY_NAME, ROW_IPV4_ADDRESS});
        seen.boxes = boxes;
        return seen;
    };
    Seen noFile;
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row)
        noFile.shown[Saved(row)] = "-";
    Seen empty = noFile;  // a tab that couldn't start
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row)
        empty.shown[Listed(row)] = "-";
    sweep.described = {
        {{"GetAdaptersAddresses"}, network({noTable}), "", 0, false},
        {{"GetAdaptersAddresses"}, network({noTable, noTable}), "", 1},
        {{"GetAdaptersAddresses"}, network({noTable, noTable}), "", 2},
        {{"LocalAlloc"}, network({noBlock}), "", 0, false},
        {{"LocalAlloc"}, network({noBlock, noBlock}), "", 1},
        {{"operator new"}, network({noBlock, noBlock}), "", 1, true},
        {{"operator new"}, network({noBlock, noBlock}), "", 2, true},
        {{"operator new"}, network({noBlock})},
        {{"GetSaveFileNameW"}, noFile},
        {{"SendMessageW"}, empty, std::to_string(LVM_INSERTCOLUMNW)},
        {{"RegQueryValueExW"}, rows({ROW_DRIVER_VERSION}), "DriverVersion"},
        {{"CreateMutexW", "CreateEventW", "CreateThread"}, rows({ROW_DEVICE_ID})},
    };
    // A text that can't be loaded is left out; a label that was loaded before stays.
    const auto without = [&](int id, int row, const std::string& text, bool stays) {
        Seen seen;
        for (const std::string& note : {Saved(row), Listed(row)}) {
            const std::string& full = clean.at(note);
            const std::size_t at = full.find(text);
            seen.shown[note] = full.substr(0, at) + full.substr(at + text.size());
        }
        const unsigned harmless = stays ? 0 : 1;  // all that fail alone, or that of the first pass
        sweep.described.push_back({{"LoadStringW"}, {}, std::to_string(id), harmless, false});
        sweep.described.push_back({{"LoadStringW"}, seen, std::to_string(id)});
    };
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row) {
        const std::string& text = label[static_cast<std::size_t>(row)];
        without(164 + row, row, text.substr(0, text.size() - 3), true);
    }
    without(182, ROW_BUS_TYPE, "PCI-E", false);
    without(184, ROW_BUS_TYPE, "5.0 Gbps", false);
    const std::pair<const char*, int> sources[] = {{"0xFFA0C915", ROW_FIRMWARE_VERSION},
                                                   {"0xFFA0C923", ROW_PORT_NUMBER},
                                                   {"0xFFA0C911", ROW_BUS_TYPE},
                                                   {"0xFFA0C912", ROW_BUS_TYPE},
                                                   {"0xFFA0C913", ROW_BUS_TYPE},
                                                   {"0x00010208", ROW_LINK_SPEED},
                                                   {"0xFFA0C916", ROW_PART_NUMBER},
                                                   {"0xFFA0C924", ROW_DEVICE_ID},
                                                   {"0xFFA0C919", ROW_REVISION_ID},
                                                   {"0x01010102", ROW_CURRENT_MAC_ADDRESS},
                                                   {"0x01010101", ROW_PERMANENT_MAC_ADDRESS},
                                                   {"0xFFA0C925", ROW_USER_NAME},
                                                   {"0xFFA0C933", ROW_PKEY}};
    for (const auto& [oid, row] : sources)
        sweep.described.push_back({{"DeviceIoControl"}, rows({row}), oid});
    sweep.Execute();
}

}  // namespace
