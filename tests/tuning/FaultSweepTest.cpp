// The Performance tab's start and a press of Run Tuning, with each of their system calls failing in
// its turn.

#include "FaultSweep.h"
#include "PressFaultTable.h"
#include "TuningTest.h"
#include "resource.h"

namespace {

using Kind = Sample::Kind;

constexpr char kNetwork[] =
    "SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr char kAdapters[] =
    "SYSTEM\\CurrentControlSet\\Control\\class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";

// The start fails: the tab has no choice and can't run. The log may say why.
Outcome StartFails(const Lines& log = {}) {
    return [=](Facts& due, const Facts&, const Fault&) {
        due.notes = {{"checked", "0"}, {"dual", "on"}, {"help", "no"}, {"run", "off"}};
        due.log = log;
    };
}

// Without a next sibling all children of the parent are looked at, if they can be.
void NoNextSibling(Facts& due, const Facts& found, const Fault&) {
    due.notes["dual"] = found.notes.at("dual");
}

TEST(FaultSweep, PerformanceTabStart) {
    for (const int port : {1, 2}) {
        FaultSweep sweep;
        sweep.name = "start of the Performance tab of port " + std::to_string(port);
        sweep.sample.PortValue(port, "\"TuningScenario\"=\"1088\"");
        sweep.help = "<help><Performance_ETH>{\\rtf1 wire}</Performance_ETH></help>";
        sweep.operation = [=](TestMachine& test, const FaultSweep::Sweep& swept) {
            std::vector<TestMachine::ProviderResult> provided = {test.CallProvider(port),
                                                                 test.CallProvider(port)};
            swept([&](auto& notes) {
                OnTab(test, std::move(provided.back()), [&] {
                    const HWND page = test.Page();
                    notes["checked"] = "0";
                    for (const int control : {IDC_FORWARDING, IDC_BALANCED})
                        if (test.IsChecked(control)) notes["checked"] = std::to_string(control);
                    const auto enabled = [&](int control) {
                        return IsWindowEnabled(GetDlgItem(page, control)) ? "on" : "off";
                    };
                    notes["dual"] = enabled(IDC_DUAL_PORT);
                    notes["run"] = enabled(IDC_RUN_TUNING);
                    WCHAR text[10] = {};
                    GetDlgItemTextW(page, IDC_HELP_TEXT, text, ARRAYSIZE(text));
                    notes["help"] = text == std::u16string(u"wire") ? "yes" : "no";
                });
                provided.pop_back();
            });
        };
        const std::string connection =
            std::string(kNetwork) + "\\" + Sample::Guid(port) + "\\Connection";
        const std::string search = "FindAdapterGuidByNetKey: ";
        const Outcome noConnection = StartFails(
            {search + "Network Adapter with PnpInstanceID = " + sweep.sample.InstanceId(3 - port) +
                 " not found",
             ""});
        const Outcome noAdapter = StartFails(
            {std::string("FindAdapterByGuid: Adapter GUID not found: ") + Sample::Guid(3 - port),
             ""});
        sweep.table = {
            {{"RegOpenKeyExW"}, {StartFails()}, Sample::ClassKey(port)},
            {{"RegQueryValueExW"}, {StartFails()}, "ComponentId"},
            {{"RegQueryValueExW"}, {StartFails()}, "TuningScenario"},
            {{"RegQueryValueExW"}, {StartFails()}, "NetCfgInstanceId", 1},
            {{"RegOpenKeyExW"}, {StartFails()}, connection},
            {{"RegQueryValueExW"}, {StartFails()}, "PnpInstanceID", 1},
            {{"CM_Locate_DevNode_ExW", "CM_Get_Device_ID_ExW", "CM_Get_Parent_Ex",
              "CM_Get_Child_Ex", "GetWindowsDirectoryW", "CreateDirectoryW", "CreateFileW",
              "GetFileSizeEx"},
             {StartFails()}},
            {{"CM_Get_Sibling_Ex"}, {NoNextSibling}},
            {{"WriteFile"}, {StartFails()}},  // the mark of the new log
            {{"RegOpenKeyExW"},
             {StartFails({search + "Error opening key: " + kNetwork, ""})},
             kNetwork},
            {{"RegOpenKeyExW"},
             {StartFails({std::string("FindAdapterByGuid: Error opening key: ") + kAdapters, ""})},
             kAdapters},
            // What a search passes over is missed only if it was the one.
            {{"RegEnumKeyExW", "RegOpenKeyExW", "RegQueryValueExW"},
             {AsClean, noConnection, noAdapter}},
            {{"CheckDlgButton"}, {Noted("checked", "0")}},
            {{"SendMessageW"}, {AsClean}, "1091"},  // the help box's colour
            {{"GetDlgItem", "operator new", "IXMLDOMDocument::getElementsByTagName",
              "IXMLDOMNodeList::get_length", "IXMLDOMNodeList::get_item", "IXMLDOMNode::get_text",
              "WideCharToMultiByte", "SendMessageW"},
             {Noted("help", "no")}},
            {{"SysAllocString", "SysFreeString", "LocalFree", "SetWindowLongPtrW", "LoadCursorW",
              "SetCursor", "RegCloseKey", "CloseHandle", "GetLocalTime"},
             {AsClean}},
        };
        sweep.Run();
    }
}

// A press with that choice made before.
auto Pressing(int control) {
    return [=](TestMachine& test, const FaultSweep::Sweep& swept) {
        OnTab(test, test.CallProvider(), [&] {
            test.Press(control);
            swept([&](auto&) { test.Press(IDC_RUN_TUNING); });
        });
    };
}

// A second press finds the TCP settings as the first has left them.
void ForgetTcpSettings(Facts& facts) {
    std::erase_if(facts.registry, [](const auto& value) {
        return value.first.find("\\Restarts\\") != std::string::npos;
    });
    std::erase_if(facts.boxes, [](const std::string& box) {
        return box.starts_with("GeneralTuning|") || box.starts_with("Reboot Your Machine|");
    });
    std::erase_if(facts.log, [](const std::string& line) {
        return line.find("Registry ") != std::string::npos;
    });
}

void SweepPress(const std::string& name, Press press) {
    FaultSweep sweep;
    sweep.name = "press of " + name + ", port 1 of " + std::to_string(press.ports);
    press.ports == 1 ? sweep.sample.OnePort(press.kind)
                     : sweep.sample.Ports(press.kind, press.kind);
    if (press.tcpChanges) sweep.sample.TcpToChange();
    if (press.twoNodes) sweep.sample.Processors("4", "0,0,1,1").Ticks("6000,1");
    sweep.sample.With("SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters",
                      "\"GlobalMaxTcpWindowSize\"=dword:1000");
    for (int port = 1; port <= press.ports; ++port) {
        sweep.sample.PortValue(port, "\"UseRSSForUDP\"=\"7\"\n\"UseSendFwQueue\"=\"7\"");
        sweep.sample.PortValue(port, "\"GuidMask\"=\"231\"");
    }
    sweep.operation = Pressing(IDC_BALANCED);
    press.restored = sweep.Clean();
    sweep.operation = Pressing(press.control);
    press.clean = sweep.Clean();
    sweep.table = PressFaultTable(press);
    sweep.forgetFirst = ForgetTcpSettings;
    sweep.Run();
}

using Scenario = std::pair<const char*, int>;  // and its control
class RunTuning : public testing::TestWithParam<Scenario> {};

// With one port the TCP settings are to be changed, with two they aren't. A lone Ethernet port
// can't choose the dual scenario, and IPoIB has no single stream.
TEST_P(RunTuning, SurvivesEachFailedCall) {
    const auto& [name, control] = GetParam();
    const Kind lone = control == IDC_SINGLE_STREAM ? Kind::Ethernet : Kind::Ipoib;
    SweepPress(name, {control, 1, lone, true, false});
    SweepPress(name, {control, 2, Kind::Ethernet, false, false});
}

INSTANTIATE_TEST_SUITE_P(FaultSweep, RunTuning,
                         testing::Values(Scenario{"SINGLE_PORT_STREAM", IDC_SINGLE_PORT},
                                         Scenario{"SINGLE_STREAM", IDC_SINGLE_STREAM},
                                         Scenario{"DUAL_PORT_STREAM", IDC_DUAL_PORT},
                                         Scenario{"FORWARDING_STREAM", IDC_FORWARDING},
                                         Scenario{"MCAST_STREAM", IDC_MULTICAST},
                                         Scenario{"RESTORE_DEFAULTS", IDC_BALANCED}),
                         [](const auto& scenario) { return scenario.param.first; });

TEST(FaultSweep, RunTuningWithAMeasurement) {
    SweepPress("MCAST_STREAM with two nodes", {IDC_MULTICAST, 1, Kind::Ipoib, false, true});
}

}  // namespace
