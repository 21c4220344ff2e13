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
        Starts(typesToo ? "Warning" : "", typesToo ? "*o- *o-" : "o*- *o-", "Eth")(due, found,
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
                    notes["state"] = State(test);
                    notes["help"] = TextOf(test, 1078);
                    notes["runs"] = TextOf(test, 1079);
                });
                EXPECT_TRUE(test.RunSheet(std::move(provided.back())));
                provided.pop_back();
            });
        };
        const Outcome withoutTypes =
            single ? Starts("Error", "*oo (---)") : Starts("Warning", "*oo *oo");
        sweep.table = {
            {{"RegOpenKeyExW"}, {WithoutKey(single)}, ParametersPath(), 1},
            {{"RegOpenKeyExW"}, {withoutTypes}, ParametersPath(), 2},
            {{"RegQueryValueExW"}, {withoutTypes}, "PortType"},
            {{"RegQueryValueExW"}, {Starts("", "o*- (---)")}, "CapabilityFlag"},
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

std::string Note(int row) {
    return "row " + std::to_string(row);
}

// The row may show one of these instead of its value.
void MayShow(Facts& due, const Facts& found, int row, const std::vector<std::string>& values) {
    const auto shown = found.notes.find(Note(row));
    std::string& text = due.notes[Note(row)];
    const std::string label = text.substr(0, text.find(" : ") + 3);
    for (const std::string& value : values)
        if (shown != found.notes.end() && shown->second == label + value + "\r")
            text = shown->second;
}

// What rows show whose source fails, in the first pass or a later one. The device's id becomes
// another one before the last.
Outcome RowsFail(const std::vector<int>& rows) {
    return [=](Facts& due, const Facts& found, const Fault&) {
        for (const int row : rows) {
            MayShow(due, found, row, {platform::ToUtf8(kNotAvailable)});
            if (row == ROW_DEVICE_ID) MayShow(due, found, row, {"4099"});
            if (row == ROW_NETWORK_STATUS) MayShow(due, found, row, {"Disabled"});
        }
    };
}

const std::vector<int> kNetworkRows = {ROW_NETWORK_STATUS, ROW_FRIENDLY_NAME, ROW_IPV4_ADDRESS};

void AnyRowFails(Facts& due, const Facts& found, const Fault& fault) {
    for (int row = ROW_DRIVER_VERSION; row <= ROW_PKEY; ++row)
        RowsFail({row})(due, found, fault);
}

// The table of adapters fails, which each of the two passes tells.
Outcome TableFails(const std::string& text) {
    return [=](Facts& due, const Facts& found, const Fault& fault) {
        const bool bothPasses = fault.lasting && found.boxes.size() == 2;
        due.boxes.assign(bothPasses ? 2 : 1, Box("Error", text, 0x2010));
        RowsFail(kNetworkRows)(due, found, fault);
    };
}

// A label or a word of the bus that can't be read is left out.
void TextFails(Facts& due, const Facts& found, const Fault& fault) {
    const int id = std::stoi(fault.argument);
    const std::string note = Note(id < 180 ? id - 164 : ROW_BUS_TYPE);
    std::string& text = due.notes[note];
    const bool isShorter = found.notes.contains(note) && found.notes.at(note).size() < text.size();
    if (isShorter) text = found.notes.at(note);
}

// The list isn't what it should be; what is saved is.
void ListFails(Facts& due, const Facts& found, const Fault&) {
    due.notes["list"] = found.notes.at("list");
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
    const std::string memory = "Not enough storage is available to process this command.\r\n";
    const std::string write = "Failed to write to file";
    sweep.table = {
        {{"RegOpenKeyExW"}, {AnyRowFails}, Sample::ClassKey(1)},
        {{"RegQueryValueExW"}, {AnyRowFails}, "NetCfgInstanceId"},
        {{"DeviceIoControl"}, {AnyRowFails}},
        {{"RegQueryValueExW"}, {RowsFail({ROW_DRIVER_VERSION})}, "DriverVersion"},
        {{"CreateFileW"}, {AnyRowFails}, std::string("\\\\.\\") + Sample::Guid(1)},
        {{"GetAdaptersAddresses"},
         {TableFails("VLAN status refresh failed to query system.\r\nError message: " + memory)}},
        {{"LocalAlloc"},
         {TableFails("Failed to execute the command. This may occur due to insufficient "
                     "memory.\r\nError message:" +
                     memory)}},
        {{"MultiByteToWideChar", "SysAllocString", "SysAllocStringLen"}, {AnyRowFails}},
        {{"LoadStringW"}, {TextFails}},
        {{"GetDlgItem", "SendMessageW", "PostMessageW"}, {ListFails}},
        {{"CreateMutexW", "CreateEventW", "CreateThread", "WaitForMultipleObjects"},
         {RowsFail({ROW_DEVICE_ID})}},
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
    sweep.Run();
}

}  // namespace
