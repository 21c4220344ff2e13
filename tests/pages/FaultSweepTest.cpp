// The Information and Port Protocol tabs, with each of their system calls failing in its turn.

#include <sstream>

#include "Drive.h"
#include "FaultSweep.h"
#include "InformationTest.h"
#include "PortProtocolTest.h"

namespace {

using namespace port_protocol;

const std::string kValue = "HKEY_LOCAL_MACHINE\\" + ParametersPath() + "\\PortType";
const std::string kRestarts =
    std::string("HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts\\") + Sample::BusInstanceId();

// The value stays, and the user is told; the device restarts all the same.
Outcome NotWritten(const std::string& text) {
    return [=](Facts& due, const Facts&, const Fault&) {
        due.boxes = {Box("Error", text + "\r\nError message: Access is denied.\r\n", 0x2010)};
        due.registry.erase(kValue);
    };
}

void NotRestarted(Facts& due, const Facts&, const Fault& fault) {
    const bool change =
        fault.call == "SetupDiSetClassInstallParamsW" || fault.call == "SetupDiCallClassInstaller";
    // It is enabled for all hardware profiles first; for this one is what counts.
    if (!change || fault.ofArgument != 2 || fault.lasting) due.registry.erase(kRestarts);
}

// A control that couldn't be set stays as it was.
void ControlStays(Facts& due, const Facts& found, const Fault&) {
    due.notes = found.notes;
}

// caption: of the box about an invalid text; empty: none. runs: the present type of port 1, which a
// failure may hide.
Outcome Starts(const std::string& caption, const std::string& state,
               const std::string& runs = "IB") {
    return [=](Facts& due, const Facts&, const Fault&) {
        if (!caption.empty()) due.boxes = {Box(caption, platform::ToUtf8(kInvalid), 16)};
        due.notes["state"] = state;
        due.notes["runs"] = runs;
    };
}

// The capabilities can't be read, and with a lasting fault not the types either.
Outcome WithoutKey(bool single) {
    return [=](Facts& due, const Facts& found, const Fault& fault) {
        const bool typesToo = single || fault.lasting;
        Starts(typesToo ? "Warning" : "", typesToo ? "o*o-*o-" : "oo*-*o-", "Eth")(due, found,
                                                                                   fault);
    };
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
            swept([&](auto& notes) {
                test.user.Do([&] {
                    const platform::QuietScope quiet;
                    std::string& state = notes["state"];
                    for (const int control : {kDefaults, 1074, 1075, 1083, 1076, 1077, 1084}) {
                        const bool isEnabled = IsWindowEnabled(GetDlgItem(test.Page(), control));
                        state += test.IsChecked(control) ? (isEnabled ? '*' : 'X')
                                                         : (isEnabled ? 'o' : '-');
                    }
                    WCHAR text[10] = {};
                    GetDlgItemTextW(test.Page(), 1078, text, ARRAYSIZE(text));
                    notes["help"] = platform::ToUtf8(text);
                    GetDlgItemTextW(test.Page(), 1079, text, ARRAYSIZE(text));
                    notes["runs"] = platform::ToUtf8(text);
                });
                EXPECT_TRUE(test.RunSheet(std::move(provided.back())));
                provided.pop_back();
            });
        };
        const Outcome withoutTypes =
            single ? Starts("Error", "o*oo---") : Starts("Warning", "o*oo*oo");
        sweep.table = {
            {{"RegOpenKeyExW"}, {WithoutKey(single)}, ParametersPath(), 1},
            {{"RegOpenKeyExW"}, {withoutTypes}, ParametersPath(), 2},
            {{"RegQueryValueExW"}, {withoutTypes}, "PortType"},
            {{"RegQueryValueExW"}, {Starts("", "oo*----")}, "CapabilityFlag"},
            {{"RegQueryValueExW"}, {Noted("runs", "Eth")}, "PortSetting"},
            {{"GetDlgItem", "EnableWindow", "SendMessageW", "SetWindowTextW", "ShowWindow"},
             {ControlStays}},
            {{"IXMLDOMDocument::getElementsByTagName", "IXMLDOMNodeList::get_length",
              "IXMLDOMNodeList::get_item", "IXMLDOMNode::get_text", "operator new",
              "WideCharToMultiByte"},
             {Noted("help", "")}},
            {{"RegCloseKey", "SysAllocString", "SysFreeString", "DefWindowProcW", "LoadCursorW",
              "SetCursor"},
             {AsClean}},
        };
        sweep.Run();
    }
}

TEST(FaultSweep, PortProtocolApply) {
    for (const bool single : {false, true}) {
        FaultSweep sweep;
        sweep.name = std::string("a choice of port types, applied, ports: ") + (single ? "1" : "2");
        sweep.sample = single ? Bus(kSingle, R"("ib")") : Bus(kAll, R"("ib,eth")");
        sweep.operation = [](TestMachine& test, const FaultSweep::Sweep& swept) {
            int choice = 1075;
            test.user.Do([&] {
                swept([&](auto&) {
                    test.Press(std::exchange(choice, kDefaults));
                    SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
                });
            });
            EXPECT_TRUE(test.RunBusSheet());
        };
        sweep.table = {
            {{"RegOpenKeyExW"}, {NotWritten("Failed to open registry key.")}, ParametersPath()},
            {{"RegSetValueExW"}, {NotWritten("Failed to set value to registry key.")}},
            {{"SetupDiCreateDeviceInfoListExW", "SetupDiOpenDeviceInfoW",
              "SetupDiGetDeviceInfoListDetailW", "SetupDiEnumDeviceInfo",
              "SetupDiSetClassInstallParamsW", "SetupDiCallClassInstaller"},
             {NotRestarted}},
            // A port that can't be looked at counts as one without teams and VLANs.
            {{"CM_Get_Child", "CM_Get_Sibling", "CM_Get_DevNode_Registry_PropertyW",
              "RegOpenKeyExW", "RegQueryValueExW"},
             {AsClean}},
            {{"GetDlgItem", "GetParent", "ShowWindow", "EnableWindow", "SetWindowTextW",
              "SendMessageW", "SysAllocString", "SysFreeString", "RegCloseKey",
              "SetupDiDestroyDeviceInfoList"},
             {AsClean}},
        };
        sweep.forgetFirst = [](Facts& facts) { facts.registry.erase(kRestarts); };
        sweep.Run();
    }
}

constexpr unsigned kPasses = 2;  // the first fill, and the thread's first one

// The queries of a pass in their order, and what a failure leaves of the row.
const struct {
    const char* oid;
    int row;
    bool keeps;  // what an earlier pass has read
} kQueries[] = {{"0xFFA0C915", ROW_FIRMWARE_VERSION, true},
                {"0xFFA0C911", ROW_BUS_TYPE, true},
                {"0xFFA0C912", ROW_BUS_TYPE, true},
                {"0xFFA0C913", ROW_BUS_TYPE, true},
                {"0xFFA0C923", ROW_PORT_NUMBER, false},
                {"0x00010208", ROW_LINK_SPEED, true},
                {"0xFFA0C916", ROW_PART_NUMBER, true},
                {"0xFFA0C924", ROW_DEVICE_ID, true},
                {"0xFFA0C919", ROW_REVISION_ID, true},
                {"0xFFA0C925", ROW_USER_NAME, false},
                {"0xFFA0C933", ROW_PKEY, false},
                {"0x01010102", ROW_CURRENT_MAC_ADDRESS, true},
                {"0x01010101", ROW_PERMANENT_MAC_ADDRESS, true}};

void SetRow(Facts& due, int row, const std::string& value) {
    std::string& text = due.notes["row " + std::to_string(row)];
    text = text.substr(0, text.find(" : ") + 3) + value + "\r";
}

// The row's source fails in that pass, and in all later ones if `lasting`. The device's id becomes
// another one before the last pass.
void FailRow(Facts& due, int row, bool keeps, unsigned pass, bool lasting) {
    if (pass > kPasses || (pass < kPasses && !lasting)) return;
    if (pass == 1 || !keeps)
        SetRow(due, row, platform::ToUtf8(kNotAvailable));
    else if (row == ROW_DEVICE_ID)
        SetRow(due, row, "4099");
}

Outcome RowFails(int row, bool keeps) {
    return [=](Facts& due, const Facts&, const Fault& fault) {
        FailRow(due, row, keeps, fault.ofArgument, fault.lasting);
    };
}

void NetworkFails(Facts& due, unsigned pass, bool lasting) {
    if (pass < kPasses && !lasting) return;
    SetRow(due, ROW_NETWORK_STATUS, "Disabled");
    SetRow(due, ROW_FRIENDLY_NAME, platform::ToUtf8(kNotAvailable));
    SetRow(due, ROW_IPV4_ADDRESS, platform::ToUtf8(kNotAvailable));
}

// The table of adapters fails, which each pass tells.
Outcome TableFails(const std::string& text, unsigned callsOfAPass) {
    return [=](Facts& due, const Facts&, const Fault& fault) {
        const unsigned pass = (fault.ofName - 1) / callsOfAPass + 1;
        due.boxes.assign(fault.lasting ? kPasses - pass + 1 : 1, Box("Error", text, 0x2010));
        NetworkFails(due, pass, fault.lasting);
    };
}

// Without the adapter's name nothing is known but the version.
void NoDevice(Facts& due, const Facts&, const Fault& fault) {
    for (const auto& query : kQueries)
        FailRow(due, query.row, false, 1, true);
    NetworkFails(due, 1, true);
    if (fault.lasting) FailRow(due, ROW_DRIVER_VERSION, true, 1, true);
}

// Some rows can't be read: memory runs out for their text, or the device can't be opened. All
// others are as they should be.
void RowsMiss(Facts& due, const Facts& found, const Fault& fault) {
    Facts missed = due;
    NoDevice(missed, found, fault);
    for (auto& [name, text] : due.notes)
        if (found.notes.contains(name) && found.notes.at(name) == missed.notes[name])
            text = missed.notes[name];
}

// A label that is never read is empty.
void LabelFails(Facts& due, const Facts&, const Fault& fault) {
    if (!fault.lasting || fault.ofArgument > 1) return;
    std::string& text = due.notes["row " + std::to_string(std::stoi(fault.argument) - 164)];
    text = text.substr(text.find(" : "));
}

Outcome BusTextFails(const std::string& value) {
    return [=](Facts& due, const Facts&, const Fault& fault) {
        if (fault.lasting || fault.ofArgument == kPasses) SetRow(due, ROW_BUS_TYPE, value);
    };
}

// The list isn't what it should be; what is saved is.
void ListFails(Facts& due, const Facts& found, const Fault&) {
    due.notes["list"] = found.notes.at("list");
}

// The thread's pass is lost.
void NoPass(Facts& due, const Facts&, const Fault&) {
    SetRow(due, ROW_DEVICE_ID, "4099");
}

// The file ends before its end, or there is none; the user hears why.
Outcome NotSaved(const std::string& message, const std::string& error) {
    const std::string text = message + ".\r\nError message: " + error + ".\r\n";
    return [=](Facts& due, const Facts& found, const Fault&) {
        if (!message.empty()) due.boxes = {Box("Error", text, 0x2010)};
        due.notes["list"] = "otherwise";
        std::erase_if(due.notes, [&](auto& note) {
            return note.first == "row 14" || !found.notes.contains(note.first);
        });
    };
}

// A sheet with nothing but the Information tab, up for the thread's first pass.
void PollAndSave(TestMachine& test, TestMachine::ProviderResult provided,
                 std::map<std::string, std::string>& notes) {
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
        std::string shown = "\xEF\xBB\xBF";
        const Texts labels = ListColumn(test.Page(), 0);
        const Texts values = ListValues(test);
        for (std::size_t row = 0; row < labels.size(); ++row)
            shown += platform::ToUtf8(labels[row] + u" : " + values[row]) + "\r\n";
        const std::string saved = drive.ReadWholeFile(u"C:\\x.log").value_or("");
        notes["list"] = saved == shown ? "as saved" : "otherwise";
        std::istringstream lines(saved.substr(std::min<std::size_t>(saved.size(), 3)));
        int row = 0;
        for (std::string line; std::getline(lines, line); ++row)
            notes["row " + std::to_string(row)] = line;
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
        swept([&](auto& notes) {
            PollAndSave(test, std::move(provided.back()), notes);
            provided.pop_back();
        });
    };
    for (const auto& query : kQueries)
        sweep.table.push_back({{"DeviceIoControl"}, {RowFails(query.row, query.keeps)}, query.oid});
    const std::string memory = "Not enough storage is available to process this command.\r\n";
    const std::string write = "Failed to write to file";
    const FailureRow rows[] = {
        {{"RegOpenKeyExW"}, {NoDevice}, Sample::ClassKey(1), 1},
        {{"RegQueryValueExW"}, {NoDevice}, "NetCfgInstanceId"},
        {{"RegOpenKeyExW"},
         {[](Facts& due, const Facts&, const Fault& fault) {
             FailRow(due, ROW_DRIVER_VERSION, true, fault.ofArgument - 1, fault.lasting);
         }},
         Sample::ClassKey(1)},
        {{"RegQueryValueExW"}, {RowFails(ROW_DRIVER_VERSION, true)}, "DriverVersion"},
        {{"CreateFileW"}, {RowsMiss, NoPass}, std::string("\\\\.\\") + Sample::Guid(1)},
        {{"GetAdaptersAddresses"},
         {TableFails("VLAN status refresh failed to query system.\r\nError message: " + memory,
                     2)}},
        {{"LocalAlloc"},
         {TableFails("Failed to execute the command. This may occur due to insufficient "
                     "memory.\r\nError message:" +
                         memory,
                     1)}},
        {{"MultiByteToWideChar", "SysAllocString", "SysAllocStringLen"}, {RowsMiss}},
        {{"LoadStringW"}, {BusTextFails(" 5.0 Gbps x8")}, "182"},
        {{"LoadStringW"}, {BusTextFails("PCI-E  x8")}, "184"},
        {{"LoadStringW"}, {AsClean}, "186"},
        {{"LoadStringW"}, {LabelFails}},
        {{"GetDlgItem", "SendMessageW", "PostMessageW"}, {ListFails}},
        {{"CreateMutexW", "CreateEventW", "CreateThread", "WaitForMultipleObjects"}, {NoPass}},
        {{"WaitForSingleObject"}, {AsClean, ListFails, NotSaved(write, "The handle is invalid")}},
        {{"CreateFileW"},
         {NotSaved("Failed to open the specified file for writing", "Access is denied")}},
        {{"WriteFile"}, {NotSaved(write, "There is not enough space on the disk")}},
        {{"WideCharToMultiByte"},
         {NotSaved(
             write,
             "No mapping for the Unicode character exists in the target multi-byte code page")}},
        {{"GetSaveFileNameW"}, {NotSaved("", "")}},
        {{"RegCloseKey", "CloseHandle", "LocalFree", "SysFreeString", "ReleaseMutex", "SetEvent",
          "MsgWaitForMultipleObjectsEx", "GetDC", "GetDeviceCaps", "ReleaseDC", "DefWindowProcW",
          "LoadCursorW", "SetCursor"},
         {AsClean}},
    };
    sweep.table.insert(sweep.table.end(), std::begin(rows), std::end(rows));
    sweep.Run();
}

}  // namespace
