// The Performance tab's start and a press of Run Tuning, with each of their system calls failing in
// its turn.

#include "FaultSweep.h"
#include "TuningTest.h"
#include "resource.h"

namespace {

using Kind = Sample::Kind;

constexpr char kTcpKey[] = "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr char kAfdKey[] = "SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters";
constexpr char kNetwork[] =
    "SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr char kAdapters[] =
    "SYSTEM\\CurrentControlSet\\Control\\class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr char kLog[] = "C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log";
// The log is made: its folder, the file and its mark.
const std::vector<const char*> kOpening = {"GetWindowsDirectoryW", "CreateDirectoryW",
                                           "CreateFileW", "GetFileSizeEx"};

TEST(FaultSweep, PerformanceTabStart) {
    for (const int port : {1, 2}) {
        FaultSweep sweep;
        sweep.name = "start of the Performance tab of port " + std::to_string(port);
        sweep.sample.PortValue(port, "\"TuningScenario\"=\"1088\"");
        sweep.help = "<help><Performance_ETH>{\\rtf1 wire}</Performance_ETH></help>";
        sweep.operation = [=](TestMachine& test, const FaultSweep::Sweep& swept) {
            std::vector<TestMachine::ProviderResult> provided = {test.CallProvider(port),
                                                                 test.CallProvider(port)};
            swept([&](Values& notes) {
                OnTab(test, std::move(provided.back()), [&] {
                    const HWND page = test.Page();
                    const auto enabled = [&](int control) {
                        return IsWindowEnabled(GetDlgItem(page, control)) ? "on" : "off";
                    };
                    notes["forwarding"] = test.IsChecked(IDC_FORWARDING) ? "checked" : "-";
                    notes["balanced"] = test.IsChecked(IDC_BALANCED) ? "checked" : "-";
                    notes["dual"] = enabled(IDC_DUAL_PORT);
                    notes["run"] = enabled(IDC_RUN_TUNING);
                    WCHAR text[10] = {};
                    GetDlgItemTextW(page, IDC_HELP_TEXT, text, ARRAYSIZE(text));
                    notes["help"] = platform::ToUtf8(text);
                });
                provided.pop_back();
            });
        };
        sweep.shownBefore = {
            {"forwarding", "-"}, {"balanced", "-"}, {"dual", "on"}, {"run", "on"}, {"help", ""}};
        // A control that couldn't be set stays as it was, and nobody is told. A page whose start
        // failed can't run.
        sweep.mayBe = {{"run", "off"}, {"dual", "off"}, {"help", "This adap"}};
        sweep.succeeded = [](const Observed& found, const Observed&) {
            return found.values.at("run") == "on" ||
                   (found.values.at("forwarding") == "-" && found.values.at("help") == "This adap");
        };
        // The start fails: nothing is chosen, nothing can be run, and the tab says why.
        const auto fails = [](const std::string& reason, Lines log = {}) {
            if (!reason.empty()) log.insert(log.end(), {"GetKeysInfo: " + reason, ""});
            return Seen{
                .log = LogEdit{"", "", log},
                .shown = {
                    {"forwarding", "-"}, {"dual", "off"}, {"run", "off"}, {"help", "This adap"}}};
        };
        const std::string connection =
            std::string(kNetwork) + "\\" + Sample::Guid(port) + "\\Connection";
        const std::string search = "FindAdapterGuidByNetKey: ";
        const std::string own = sweep.sample.InstanceId(port);
        const std::string sibling = sweep.sample.InstanceId(3 - port);
        const std::string siblingGuid = Sample::Guid(3 - port);
        const auto noLog = [&](const std::string& path) {
            return fails("Error opening the log: " + path);
        };
        const std::string folder = std::string(kLog).substr(0, std::string(kLog).rfind('\\'));
        sweep.described = {
            {{"RegOpenKeyExW"},
             fails("Error opening key: " + Sample::ClassKey(port) + ": 5"),
             Sample::ClassKey(port)},
            {{"RegQueryValueExW"}, fails("Reading ComponentId failed: 1f"), "ComponentId"},
            {{"RegQueryValueExW"}, fails("Reading TuningScenario failed: 1f"), "TuningScenario"},
            {{"RegQueryValueExW"},
             fails("Reading NetCfgInstanceId failed: 1f"),
             "NetCfgInstanceId",
             1},
            {{"RegQueryValueExW"}, fails("Reading PnpInstanceID failed: 1f"), "PnpInstanceID", 1},
            {{"RegOpenKeyExW"},
             fails(std::string("Error opening key of connection: ") + Sample::Guid(port)),
             connection},
            {{"CM_Locate_DevNode_ExW"},
             fails("CM_Locate_DevNode_Ex failed for DeviceInstanceID " + own)},
            {{"CM_Get_Device_ID_ExW"},
             fails("CM_Get_Device_ID_Ex failed for sibling of DeviceInstanceID " + own)},
            {{"CM_Get_Parent_Ex"}, fails("CM_Get_Parent_Ex failed for DeviceInstanceID " + own)},
            {{"CM_Get_Child_Ex"},
             fails("CM_Get_Child_Ex failed for DeviceInstanceID " + own + " parent")},
            // Without a log only the help pane tells.
            {{"GetWindowsDirectoryW", "CreateDirectoryW", "CreateFileW", "GetFileSizeEx",
              "WriteFile"},
             fails(""),
             "",
             0,
             true},
            {{"GetWindowsDirectoryW"}, noLog("")},
            {{"CreateDirectoryW"}, noLog(folder)},
            {{"CreateFileW", "GetFileSizeEx", "WriteFile"}, noLog(kLog)},
            {{"RegOpenKeyExW"},
             fails("FindAdapterGuidByNetKey failed for PnpInstanceID = " + sibling + ": 5",
                   {search + "Error opening key: " + kNetwork, ""}),
             kNetwork},
            {{"RegOpenKeyExW"},
             fails("FindAdapterByGuid failed for guid \"" + siblingGuid + "\": 5",
                   {std::string("FindAdapterByGuid: Error opening key: ") + kAdapters, ""}),
             kAdapters},
            // Neither port is found then.
            {{"CM_Get_Sibling_Ex"}, {.shown = {{"dual", "off"}}}, "", 1, true},
            {{"IXMLDOMDocument::getElementsByTagName", "IXMLDOMNodeList::get_length",
              "IXMLDOMNodeList::get_item", "IXMLDOMNode::get_text", "operator new",
              "WideCharToMultiByte"},
             {.shown = {{"help", ""}}}},
        };
        sweep.failureLines = {
            search + "Network Adapter with PnpInstanceID = " + sibling + " not found\n",
            "GetKeysInfo: FindAdapterGuidByNetKey failed for PnpInstanceID = " + sibling +
                ": 103\n",
            "FindAdapterByGuid: Adapter GUID not found: " + siblingGuid + "\n",
            "GetKeysInfo: FindAdapterByGuid failed for guid \"" + siblingGuid + "\": 103\n"};
        sweep.Execute();
    }
}

struct Press {
    std::string scenario;
    int control;        // of its button
    std::string first;  // what its tuner sets first
    int ports;
    Kind kind;
    bool tcpChanges;        // general tuning asks for consent, and the press ends with a reboot
    bool twoNodes = false;  // the port's node is measured, and is the default one
};

std::string Failed(const std::string& text) {
    return Box("Performance tuning failed.", text, 16);
}

// A press with that choice made before.
auto Pressing(int control) {
    return [=](TestMachine& test, const FaultSweep::Sweep& swept) {
        OnTab(test, test.CallProvider(), [&] {
            test.Press(control);
            swept([&](Values&) { test.Press(IDC_RUN_TUNING); });
        });
    };
}

const std::string kRoot = "HKEY_LOCAL_MACHINE\\";
const std::string kRestarts = "\\Restarts\\";
const Lines kLevelled = {"\\*RssProfile", "\\*NumRSSQueues", "\\*RssBaseProcNumber",
                         "\\*RssMaxProcNumber", "\\*MaxRssProcessors"};
const char* const kCommands[] = {"netsh int tcp set global rss = enabled",
                                 "netsh int tcp set global timestamps=disabled"};

std::string KeyNotOpened(const std::string& reason) {
    return Box("Error", "Failed to open registry key.\r\nError message: " + reason + "\r\n",
               0x2010);
}

// Describes the failures of one press.
class PressFailures {
  public:
    // clean: of the press; restored: of one with the default button.
    PressFailures(const Press& press, const FaultSweep::Run& clean, const FaultSweep::Run& restored)
        : m_press(press), m_clean(clean), m_restored(restored.first.values) {
        if (press.tcpChanges) m_consent = {clean.first.boxes.at(0)};
        for (auto& [name, data] : m_restored)
            if (name.find(kRestarts) != std::string::npos) data = "-";
    }

    std::vector<FailureRow> Rows() {
        DescribePage();
        DescribeRun();
        DescribeGeneralTuning(kTcpKey);
        DescribeGeneralTuning(kAfdKey);
        return m_rows;
    }

    // The first line of the scenario's run; one that fails repeats it at its end.
    std::string RunStart() const {
        return std::string("Start Corvanta Tessaron ") +
               (m_press.kind == Kind::Ethernet ? "Ethernet" : "IPoIB") +
               " performance tuning for " + m_press.scenario + ".";
    }

  private:
    void Add(const std::vector<const char*>& calls, Seen seen, const std::string& argument = "",
             unsigned which = 0) {
        m_rows.push_back({calls, std::move(seen), argument, which});
    }
    // Nothing is done but to say so.
    Seen Refused(const std::string& text, const Lines& log = {}) const {
        return {
            .boxes = Lines{Failed(text)}, .log = LogEdit{"", "", log}, .values = m_clean.before};
    }
    // The scenario isn't run, and the defaults remain. The log ends with `log` in the place of the
    // line that starts with `from`.
    Seen Restored(const std::string& text, const std::string& from, const Lines& log) const {
        Seen seen = {.boxes = m_consent, .log = LogEdit{from, "", log}, .values = m_restored};
        seen.boxes->push_back(Failed(text));
        return seen;
    }

    void DescribePage() {
        // As on a page whose start has failed.
        Add({"GetWindowLongPtrW"},
            {.boxes = Lines(), .log = LogEdit{"", ""}, .values = m_clean.before});
        Add(kOpening, Refused("Log allocation failed"), "", 1);
        Add(kOpening, Refused("General Tuning Failed"), "", 2);
        Add(kOpening, Restored("Log allocation failed", RunStart(), {}), "", 3);
        if (!m_press.twoNodes)
            Add({"GetNumaProcessorNodeEx"},
                Refused("Processors mapping analysis failed",
                        {"GetProcessorsInfo: GetNumaProcessorNode() failed: 31"}));
        Lines restarts = {kRestarts};
        for (int port = 1; port <= m_press.ports; ++port)
            restarts.push_back(kRestarts + Sample::InstanceId(port, m_press.kind));
        Add({"SetupDiCreateDeviceInfoListExW", "SetupDiOpenDeviceInfoW",
             "SetupDiGetDeviceInfoListDetailW", "SetupDiEnumDeviceInfo",
             "SetupDiSetClassInstallParamsW", "SetupDiCallClassInstaller"},
            {.kept = restarts});
        const Lines reboots = {kRestarts, kRestarts + "Reboots"};
        Add({"LookupPrivilegeValueW", "OpenProcessToken", "AdjustTokenPrivileges", "ExitWindowsEx"},
            {.kept = reboots});
        const Lines& boxes = m_clean.first.boxes;
        if (boxes.back().starts_with("Reboot Your Machine|"))
            Add({"MessageBoxW"}, {.boxes = Lines(boxes.begin(), boxes.end() - 1), .kept = reboots},
                boxes.back().substr(20, boxes.back().rfind('|') - 20));
    }

    void DescribeRun() {
        // Where the run goes on behind its own restore.
        const std::string tuner =
            m_press.twoNodes ? "Getting adapter 1 key" : "Setting adapter 1 key " + m_press.first;
        const bool refusedAnyway = m_press.control == IDC_DUAL_PORT && m_press.ports == 1;
        if (m_press.control != IDC_BALANCED && !refusedAnyway)
            Add({"GetNumaHighestNodeNumber"},
                Restored(std::string("For more information see log:\n\n") + kLog + ".", tuner,
                         {kSingleCore, RunStart(), "", ""}),
                "", 1);
        for (const DefaultValue& value : Defaults(true, true, 2))
            Add({"RegSetValueExW", "RegDeleteValueW"}, {.kept = {std::string("\\") + value.name}},
                value.name);
        // The system counts as one that doesn't have all values.
        Add({"GetVersionExW"}, {.kept = kLevelled, .linesMissing = true});
        if (m_press.twoNodes)
            Add({"ib_open_al", "ib_get_ca_guids", "ib_open_ca", "ib_query_ca", "ib_alloc_pd",
                 "ib_reg_mem", "ib_create_cq", "ib_create_qp", "ib_modify_qp", "ib_query_qp",
                 "LoadLibraryW", "GetProcAddress"},
                {.log = LogEdit{"Closest to Adapter #1",
                                "Setting adapter 1",
                                {"Failed to get the best Numa, using default (0)"}}});
    }

    void DescribeGeneralTuning(const std::string& key) {
        const bool first = key == kTcpKey;
        const std::string value = first ? "SackOpts" : "FastSendDatagramThreshold";
        // The key's last line in the log of a run that succeeds.
        const std::string line = (!m_press.tcpChanges ? "No Registry Change Needed for "
                                  : first             ? "New Registry entry "
                                                      : "Change Registry value ") +
                                 key;
        const auto stops = [&](const Lines& boxes, const std::string& from, const Lines& lines) {
            Seen seen = {.boxes = first ? Lines() : m_consent,
                         .log = LogEdit{from, "", lines},
                         .values = m_clean.before};
            seen.boxes->insert(seen.boxes->end(), boxes.begin(), boxes.end());
            seen.boxes->push_back(Failed("General Tuning Failed"));
            seen.shown[kRoot + kTcpKey + "\\GlobalMaxTcpWindowSize"] = "-";
            if (!first) seen.shown[kRoot + kTcpKey + "\\SackOpts"] = "4:\\00\\00\\00\\00";
            return seen;
        };
        const auto fails = [&](const Lines& boxes) {
            return stops(boxes, line, {key + ": Registry Tuning Failed"});
        };
        Seen closed = stops({KeyNotOpened("Access is denied.")}, line, {});
        if (first) {
            closed.log->from = "Delete Registry value ";
            closed.shown.clear();
            for (const char* command : kCommands)
                Add({"WinExec"},
                    {.log = LogEdit{"Delete ",
                                    "Delete ",
                                    {std::string("netsh command ") + command +
                                         " failed with error        2",
                                     ""}}},
                    command);
            Add({"RegDeleteValueW"},
                {.log = LogEdit{"Delete ", line}, .kept = {"\\GlobalMaxTcpWindowSize"}},
                "GlobalMaxTcpWindowSize");
        }
        Add({"RegOpenKeyExW"}, closed, key);
        Add({"RegQueryValueExW"},
            fails({KeyNotOpened("A device attached to the system is not functioning.")}), value, 1);
        Add({"RegQueryValueExW"},
            fails({Box("Error", "Failed to query " + value + " from registry.", 0)}), value, 2);
        Add({"RegSetValueExW"}, fails(first ? m_consent : Lines()), value);
        // A table of what is saved, and a buffer for each value that is there.
        for (int i = 0; i < (first && m_press.tcpChanges ? 1 : 2); ++i)
            Add({"operator new"}, fails({}), "", ++m_allocations);
    }

    const Press& m_press;
    const FaultSweep::Run& m_clean;
    Values m_restored;  // without the restart behind it
    Lines m_consent;    // the box that asks for it, if any
    unsigned m_allocations = 0;
    std::vector<FailureRow> m_rows;
};

void SweepPress(const Press& press) {
    FaultSweep sweep;
    sweep.name = "press of " + press.scenario + ", port 1 of " + std::to_string(press.ports);
    press.ports == 1 ? sweep.sample.OnePort(press.kind)
                     : sweep.sample.Ports(press.kind, press.kind);
    if (press.tcpChanges) sweep.sample.TcpToChange();
    if (press.twoNodes) sweep.sample.Processors("4", "0,0,1,1").Ticks("6000,1");
    sweep.sample.With(kTcpKey, "\"GlobalMaxTcpWindowSize\"=dword:1000");
    for (int port = 1; port <= press.ports; ++port) {
        sweep.sample.PortValue(port, "\"UseRSSForUDP\"=\"7\"\n\"UseSendFwQueue\"=\"7\"");
        sweep.sample.PortValue(port, "\"GuidMask\"=\"231\"");
    }
    sweep.operation = Pressing(IDC_BALANCED);
    const FaultSweep::Run restored = sweep.Clean();
    sweep.operation = Pressing(press.control);
    const FaultSweep::Run clean = sweep.Clean();
    PressFailures failures(press, clean, restored);
    sweep.described = failures.Rows();
    for (const char* text : {"Please choose one of the tuning scenarios", "Log allocation failed",
                             "Processors mapping analysis failed", "General Tuning Failed"})
        sweep.failureBoxes.push_back(Failed(text));
    sweep.failureBoxes.push_back(
        Failed(std::string("For more information see log:\n\n") + kLog + "."));
    sweep.failureLines = {"Failed to get the best Numa, using default (0)", kSingleCore,
                          failures.RunStart(), std::string(kTcpKey) + ": Registry Tuning Failed",
                          "GetProcessorsInfo: GetNumaProcessorNode() failed: 31"};
    // A second press finds the TCP settings as the first has left them.
    sweep.onceOnly = {kRestarts, "GeneralTuning|", "Reboot Your Machine|", "Registry "};
    sweep.Execute();
}

struct Scenario {
    const char* name;
    int control;
    const char* first;
};
class RunTuning : public testing::TestWithParam<Scenario> {};

// With one port the TCP settings are to be changed, with two they aren't. A lone Ethernet port
// can't choose the dual scenario, and IPoIB has no single stream.
TEST_P(RunTuning, SurvivesEachFailedCall) {
    const Scenario& run = GetParam();
    const Kind lone = run.control == IDC_SINGLE_STREAM ? Kind::Ethernet : Kind::Ipoib;
    SweepPress({run.name, run.control, run.first, 1, lone, true});
    SweepPress({run.name, run.control, run.first, 2, Kind::Ethernet, false});
}

INSTANTIATE_TEST_SUITE_P(
    FaultSweep, RunTuning,
    testing::Values(Scenario{"SINGLE_PORT_STREAM", IDC_SINGLE_PORT, "TuningScenario to 1086"},
                    Scenario{"SINGLE_STREAM", IDC_SINGLE_STREAM, "SingleStream to 1"},
                    Scenario{"DUAL_PORT_STREAM", IDC_DUAL_PORT, "TuningScenario to 1086"},
                    Scenario{"FORWARDING_STREAM", IDC_FORWARDING, "*ReceiveBuffers to 4096"},
                    Scenario{"MCAST_STREAM", IDC_MULTICAST, "*ReceiveBuffers to 4096"},
                    Scenario{"RESTORE_DEFAULTS", IDC_BALANCED, ""}),
    [](const auto& scenario) { return scenario.param.name; });

TEST(FaultSweep, RunTuningWithAMeasurement) {
    SweepPress({"MCAST_STREAM", IDC_MULTICAST, "", 1, Kind::Ipoib, false, true});
}

}  // namespace
