#include "PressFaultTable.h"

#include <algorithm>
#include <string_view>

#include "TuningTest.h"
#include "resource.h"

namespace {

constexpr char kTcp[] =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr char kAfd[] = "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters";
constexpr char kRestarts[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts\\";
constexpr char kReboots[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts\\Reboots";
constexpr char kLog[] = "C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log";

const std::vector<const char*> kLevelled = {"*RssProfile", "*NumRSSQueues", "*RssBaseProcNumber",
                                            "*RssMaxProcNumber", "*MaxRssProcessors"};

std::string BelowRoot(std::string_view path) {
    return std::string(path.substr(path.find('\\') + 1));
}

std::string Failed(const std::string& text) {
    return Box("Performance tuning failed.", text, 16);
}

std::string KeyNotOpened(const std::string& reason) {
    return Box("Error", "Failed to open registry key.\r\nError message: " + reason + "\r\n",
               0x2010);
}

auto Find(const Lines& lines, const std::string& start) {
    return std::find_if(lines.begin(), lines.end(),
                        [&](const std::string& line) { return line.starts_with(start); });
}

// The log ends before the line that starts so.
void CutLog(Facts& facts, const std::string& start) {
    facts.log.erase(Find(facts.log, start), facts.log.end());
}

std::string RunStart(const Press& press) {
    return std::string("Start Corvanta Tessaron ") +
           (press.kind == Sample::Kind::Ethernet ? "Ethernet" : "IPoIB") + " performance tuning";
}

// Nothing is done but to say so.
Outcome Refused(const std::string& text, const Lines& log = {}) {
    return [=](Facts& due, const Facts&, const Fault&) { due = {{Failed(text)}, log, {}, {}}; };
}

// The run itself doesn't come about; the defaults stand.
void Restored(const Press& press, Facts& due, const std::string& text) {
    due.boxes.resize(press.tcpChanges ? 1 : 0);
    due.boxes.push_back(Failed(text));
    due.registry = press.restored.registry;
    std::erase_if(due.registry, [](const auto& v) { return v.first.starts_with(kRestarts); });
    CutLog(due, RunStart(press));
}

// The tuner finds no processors, and its log ends with that.
Outcome TunerRefuses(const Press& press) {
    return [=](Facts& due, const Facts& found, const Fault&) {
        if (press.control == IDC_BALANCED) return;
        const Lines end = {kSingleCore, *Find(due.log, RunStart(press)), "", ""};
        Restored(press, due, std::string("For more information see log:\n\n") + kLog + ".");
        due.log = end;
        if (found.log.size() > end.size() &&
            std::equal(end.rbegin(), end.rend(), found.log.rbegin()))
            due.log = found.log;
    };
}

// General tuning stops at one of the two keys.
enum class Consent { NotAsked, Given };
Outcome StopsAt(const Press& press, const char* key, const std::string& box, Consent consent) {
    return [=](Facts& due, const Facts&, const Fault& fault) {
        const bool first = key == kTcp;
        due.boxes.resize(press.tcpChanges && (!first || consent == Consent::Given) ? 1 : 0);
        if (!box.empty()) due.boxes.push_back(box);
        due.boxes.push_back(Failed("General Tuning Failed"));
        CutLog(due, RunStart(press));
        CutLog(due, (!press.tcpChanges ? "No Registry Change Needed for "
                     : first           ? "New Registry entry "
                                       : "Change Registry value ") +
                        BelowRoot(key));
        std::erase_if(due.registry, [&](const auto& value) {
            const std::string& path = value.first;
            return !path.starts_with(kTcp) || (first && path.ends_with("SackOpts"));
        });
        if (fault.call != "RegOpenKeyExW") {
            due.log.push_back(BelowRoot(key) + ": Registry Tuning Failed");
        } else if (first) {
            CutLog(due, "Delete Registry value ");
            due.registry.clear();
        }
    };
}

// The adapters' value keeps what an earlier call made of it.
void Keep(const Press& press, Facts& due, const Facts& found, const std::string& name,
          const Fault& fault) {
    const bool never = fault.lasting && fault.ofArgument == 1;
    for (int port = 1; port <= press.ports; ++port) {
        const std::string path = "HKEY_LOCAL_MACHINE\\" + Sample::ClassKey(port) + "\\" + name;
        due.registry.erase(path);
        const auto kept = found.registry.find(path);
        if (kept == found.registry.end()) continue;
        const bool deleted = kept->second == "-";
        if (never && fault.call == (deleted ? "RegDeleteValueW" : "RegSetValueExW")) continue;
        const auto restored = press.restored.registry.find(path);
        if ((restored != press.restored.registry.end() && *restored == *kept) ||
            Find(press.clean.log, "Setting adapter " + std::to_string(port) + " key " + name +
                                      " to " + kept->second) != press.clean.log.end())
            due.registry.insert(*kept);
    }
}

Outcome WriteLost(const Press& press) {
    return [=](Facts& due, const Facts& found, const Fault& fault) {
        Keep(press, due, found, fault.argument, fault);
    };
}

// The system counts as an old one, for which some values don't exist.
Outcome LevelUnknown(const Press& press) {
    return [=](Facts& due, const Facts& found, const Fault& fault) {
        const auto isLevelled = [](const std::string& line) {
            return std::any_of(kLevelled.begin(), kLevelled.end(), [&](const char* name) {
                return line.find(name) != std::string::npos;
            });
        };
        Lines others[] = {due.log, found.log};
        for (Lines& lines : others)
            std::erase_if(lines, isLevelled);
        if (others[0] == others[1]) due.log = found.log;
        for (const char* name : kLevelled)
            Keep(press, due, found, name, fault);
    };
}

// A line that can't be written is missing, and so are all further ones if the fault lasts.
void LineLost(Facts& due, const Facts& found, const Fault& fault) {
    if (found.log.size() >= due.log.size()) return;
    const auto lost = static_cast<std::ptrdiff_t>(due.log.size() - found.log.size());
    auto at = std::mismatch(found.log.begin(), found.log.end(), due.log.begin()).second;
    if (fault.lasting) at = due.log.end() - lost;
    due.log.erase(at, std::min(at + lost, due.log.end()));
}

void CommandFails(Facts& due, const Facts&, const Fault& fault) {
    due.log.insert(Find(due.log, "Executing: netsh int tcp set global timestamps") + 2,
                   {"netsh command " + fault.argument + " failed with error        2", ""});
}

void WindowSizeStays(Facts& due, const Facts&, const Fault&) {
    due.log.erase(Find(due.log, "Delete Registry value "));
    due.registry.erase(std::string(kTcp) + "\\GlobalMaxTcpWindowSize");
}

// A box that doesn't come up counts as answered otherwise.
Outcome BoxLost(const Press& press) {
    return [=](Facts& due, const Facts& found, const Fault& fault) {
        const auto box = std::find_if(due.boxes.begin(), due.boxes.end(), [&](const auto& shown) {
            return shown.find("|" + fault.argument + "|") != std::string::npos;
        });
        const std::string caption = box->substr(0, box->find('|'));
        if (caption == "GeneralTuning")
            return StopsAt(press, kTcp, "", Consent::NotAsked)(due, found, fault);
        due.boxes.erase(box);
        if (caption == "Reboot Your Machine") due.registry.erase(kReboots);
    };
}

void NoReboot(Facts& due, const Facts&, const Fault&) {
    due.registry.erase(kReboots);
}

// A device that can't be found, disabled or enabled isn't restarted. Nobody is told.
Outcome NoRestart(const Press& press) {
    return [=](Facts& due, const Facts&, const Fault& fault) {
        const bool change = fault.call == "SetupDiSetClassInstallParamsW" ||
                            fault.call == "SetupDiCallClassInstaller";
        // It is enabled for all hardware profiles first; for this one is what counts.
        if (change && fault.ofArgument == 2 && !fault.lasting) return;
        for (int port = 1; port <= press.ports; ++port) {
            const std::string id = Sample::InstanceId(port, press.kind);
            const int which = static_cast<int>(fault.ofName);
            if (fault.argument == id ||
                (fault.argument.empty() && (which == port || (fault.lasting && which < port))))
                due.registry.erase(kRestarts + id);
        }
    };
}

// The node isn't measured, and the default one, which is the same, counts.
void Unmeasured(Facts& due, const Facts&, const Fault&) {
    const auto line = due.log.erase(Find(due.log, "Closest to Adapter #1 NUMA node is 0"));
    *line = "Failed to get the best Numa, using default (0)";
}

// The port's name isn't known, and nothing is tried.
void Unnamed(Facts& due, const Facts&, const Fault&) {
    const auto mask = Find(due.log, "Getting adapter 1 key GuidMask");
    due.log.erase(mask, mask + 3);  // and the node's line with the blank one behind it
}

void MaskUnread(Facts& due, const Facts&, const Fault&) {
    due.log.erase(Find(due.log, "Getting adapter 1 key GuidMask"));
}

using Rows = std::vector<FailureRow>;

Rows FirstRows(const Press& press) {
    const Outcome noChoice = Refused("Please choose one of the tuning scenarios");
    const Outcome noAnalysis = Refused("Processors mapping analysis failed");
    std::vector<Outcome> noNode = {
        Refused("Processors mapping analysis failed",
                {"GetProcessorsInfo: GetNumaProcessorNode() failed: 31"})};
    if (press.twoNodes) noNode.emplace_back(Unmeasured);
    const Outcome noLog = Refused("Log allocation failed");
    const Outcome noRunLog = [=](Facts& due, const Facts&, const Fault&) {
        Restored(press, due, "Log allocation failed");
    };
    const std::vector<const char*> opening = {"GetWindowsDirectoryW", "CreateDirectoryW",
                                              "CreateFileW", "GetFileSizeEx"};
    Rows rows = {
        {{"GetWindowLongPtrW"}, {[](Facts& due, const Facts&, const Fault&) { due = {}; }}},
        {{"GetDlgItem"}, {AsClean, noChoice}},
        {{"SendMessageW"}, {AsClean, noChoice}, "240"},  // BM_GETCHECK
        {{"IsDlgButtonChecked"}, {AsClean}},
        {opening, {noLog}, "", 1},
        {opening, {Refused("General Tuning Failed")}, "", 2},
        {opening, {noRunLog}, "", 3},
        {{"GetActiveProcessorCount"}, {TunerRefuses(press)}, "", 1},
        {{"GetActiveProcessorCount"}, {noAnalysis}, "", 2},
        {{"GetActiveProcessorGroupCount"}, {AsClean}},
        {{"GetNumaHighestNodeNumber"}, {TunerRefuses(press)}, "", 1},
        {{"GetNumaProcessorNodeEx"}, noNode},
    };
    // The mark of a new log, which needn't be read; with a second port the tab's start has made it.
    if (press.ports == 1) rows.push_back({{"WriteFile"}, {noLog}, kLog, 1});
    const unsigned newLogs = press.ports == 1;
    if (newLogs == 0) rows.push_back({{"ReadFile"}, {noLog}, "", 1});
    rows.push_back({{"ReadFile"}, {Refused("General Tuning Failed")}, "", 2 - newLogs});
    rows.push_back({{"ReadFile"}, {noRunLog}, "", 3 - newLogs});
    rows.push_back({{"WriteFile"}, {LineLost}});
    return rows;
}

Rows GeneralTuningRows(const Press& press) {
    std::vector<Outcome> noMemory = {StopsAt(press, kTcp, "", Consent::NotAsked),
                                     StopsAt(press, kAfd, "", Consent::NotAsked)};
    if (press.twoNodes) noMemory.emplace_back(Unmeasured);
    Rows rows = {
        {{"WinExec"}, {CommandFails}},
        {{"RegDeleteValueW"}, {WindowSizeStays}, "GlobalMaxTcpWindowSize"},
        {{"operator new"}, noMemory},
    };
    const std::string denied = KeyNotOpened("Access is denied.");
    const std::string broken = KeyNotOpened("A device attached to the system is not functioning.");
    for (const char* key : {kTcp, kAfd}) {
        const std::string value = key == kTcp ? "SackOpts" : "FastSendDatagramThreshold";
        const std::string unread = Box("Error", "Failed to query " + value + " from registry.", 0);
        const auto stops = [&](const std::string& box, Consent consent) {
            return std::vector<Outcome>{StopsAt(press, key, box, consent)};
        };
        rows.push_back({{"RegOpenKeyExW"}, stops(denied, Consent::NotAsked), BelowRoot(key)});
        rows.push_back({{"RegQueryValueExW"}, stops(broken, Consent::NotAsked), value, 1});
        rows.push_back({{"RegQueryValueExW"}, stops(unread, Consent::NotAsked), value, 2});
        rows.push_back({{"RegSetValueExW"}, stops("", Consent::Given), value});
    }
    return rows;
}

Rows MeasurementRows() {
    return {
        {{"RegQueryValueExW"}, {MaskUnread}, "GuidMask"},
        {{"RegQueryValueExW"}, {Unnamed}, "NetCfgInstanceId"},
        {{"RegOpenKeyExW"}, {Unnamed}},
        {{"RegQueryValueExW", "GetIfTable2", "LoadLibraryExW", "GetProcAddress", "ib_open_al",
          "ib_get_ca_guids", "ib_open_ca", "ib_query_ca", "ib_alloc_pd", "ib_reg_mem",
          "ib_create_cq", "ib_create_qp", "ib_modify_qp", "ib_query_qp", "GetActiveProcessorCount",
          "GetNumaHighestNodeNumber", "SetThreadGroupAffinity"},
         {Unmeasured}},
        {{"ib_destroy_qp", "ib_destroy_cq", "ib_dereg_mr", "ib_dealloc_pd", "ib_close_ca",
          "ib_close_al", "FreeLibrary", "GetTickCount", "WideCharToMultiByte", "GetStdHandle"},
         {AsClean}},
    };
}

}  // namespace

std::vector<FailureRow> PressFaultTable(const Press& press) {
    Rows rows = FirstRows(press);
    const auto append = [&](const Rows& more) {
        rows.insert(rows.end(), more.begin(), more.end());
    };
    append(GeneralTuningRows(press));
    append({
        {{"GetVersionExW"}, {LevelUnknown(press)}},
        {{"RegSetValueExW", "RegDeleteValueW"}, {WriteLost(press)}},
        {{"MessageBoxW"}, {BoxLost(press)}},
        {{"LookupPrivilegeValueW", "OpenProcessToken", "AdjustTokenPrivileges", "ExitWindowsEx"},
         {NoReboot}},
        {{"SetupDiCreateDeviceInfoListExW", "SetupDiOpenDeviceInfoW",
          "SetupDiGetDeviceInfoListDetailW", "SetupDiEnumDeviceInfo",
          "SetupDiSetClassInstallParamsW", "SetupDiCallClassInstaller"},
         {NoRestart(press)}},
        {{"RegCloseKey", "CloseHandle", "GetLocalTime", "FreeMibTable",
          "SetupDiDestroyDeviceInfoList"},
         {AsClean}},
    });
    if (press.twoNodes)
        append(MeasurementRows());
    else  // the order of the ports, which is that of their addresses already
        append({{{"RegQueryValueExW", "RegOpenKeyExW", "GetIfTable2"}, {AsClean}}});
    return rows;
}
