#pragma once
// What the tests of tuning share: ports opened as the tab does, rows of processors, and the log's
// lines as they should be.

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "AdapterContext.h"
#include "Call.h"
#include "Drive.h"
#include "Fixture.h"
#include "Processors.h"
#include "Text.h"
#include "TuningLog.h"

inline const std::string kNoRow = "Failed to retrieve Numa's information, Invalid input.";
inline const std::string kNoAdapter = "Failed to retrieve Adapter's information, Invalid input.";
inline const std::string kSingleCore = "Tuning for single core CPUs is not supported, aborting.";
inline const Lines kRestore = {"Restore Tuning Defaults", ""};
inline const std::string kNoTcpChange =
    "No Registry Change Needed for SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
inline const std::string kNoAfdChange =
    "No Registry Change Needed for SYSTEM\\CurrentControlSet\\Services\\AFD\\Parameters";

// Versions of the system by the level that they give.
inline constexpr const char* kVersionOfLevel[] = {"6.0", "6.1", "6.2"};

// A port with its class key open. Goes before the machine.
struct OpenPort : TuningAdapter {
    explicit OpenPort(int port, bool ethernet = true) {
        const platform::QuietScope quiet;
        present = true;
        isEthernet = ethernet;
        number = static_cast<BYTE>(port);
        EXPECT_EQ(key.Open(Wide(Sample::ClassKey(port)).c_str(),
                           KEY_READ | KEY_SET_VALUE | KEY_CREATE_SUB_KEY),
                  ERROR_SUCCESS);
    }
    void Named(const std::string& name) { Wide(name).copy(connectionName, name.size()); }
};

// Does something with the log open, and gives the lines that it wrote.
template <class Act>
Lines Logged(const TestMachine& test, Act act) {
    const auto before = static_cast<std::ptrdiff_t>(test.LogLines().size());
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, kPathCapacity);
    EXPECT_TRUE(static_cast<bool>(log));
    act(&log);
    log.Close();
    const Lines lines = test.LogLines();
    return {lines.begin() + before, lines.end()};
}

inline const std::string& Output(TestMachine& test) {
    return test.machine.Get<platform::Streams>().output;
}

inline const std::string& Errors(TestMachine& test) {
    return test.machine.Get<platform::Streams>().error;
}

// Opens a sheet with nothing but the Performance tab of the pages, does the deed there and cancels
// the sheet.
inline void OnTab(TestMachine& test, TestMachine::ProviderResult provided,
                  const std::function<void()>& deed) {
    const platform::QuietScope quiet;
    std::swap(provided.pages.at(0), provided.pages.at(1));
    for (; provided.pages.size() > 1; provided.pages.pop_back())
        DestroyPropertySheetPage(provided.pages.back());
    test.user.Do(deed);
    EXPECT_TRUE(test.RunSheet(std::move(provided)));
}

// A node with so many processors, numbered from `first` on.
inline NumaNodeRow Row(int count, int first = 10) {
    NumaNodeRow row = {};
    row.count = static_cast<BYTE>(count);
    for (int i = 0; i < count; ++i)
        row.processors[i] = static_cast<BYTE>(first + i);
    return row;
}

// How the log of general tuning begins.
inline Lines GeneralTuningHead(const std::string& kind) {
    return {"Start Corvanta Tessaron " + kind + " general performance tuning.",
            "Executing: netsh int tcp set global rss = enabled", "",
            "Executing: netsh int tcp set global timestamps=disabled", ""};
}

inline Lines Joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A port's driver defaults, in the order of a restore.
struct DefaultValue {
    const char* name;
    const char* text;  // null: the value is deleted
    bool applies = true;
    bool logged = true;
};

inline std::vector<DefaultValue> Defaults(bool first, bool ethernet, int level) {
    return {
        {"DefaultRecvRingProcessor", "-1"},
        {"TxInterruptProcessor", "-1"},
        {"TxForwardingProcessor", "-1"},
        {"*ReceiveBuffers", "512"},
        {"ForceDelayDropTimeoutMode", "0"},
        {"UseRSSForRawIP", nullptr},
        {"UseRSSForUDP", nullptr},
        {"MaxNumTxPacketsToIndicateComplete", nullptr},
        {"UseSendFwQueue", nullptr},
        {"RxIntModerationProfile", "1", first},
        {"TxIntModerationProfile", "1", first},
        {"SendCompletionMethod", ethernet ? nullptr : "0"},
        {"RecvCompletionMethod", "1"},
        {"TuningScenario", nullptr, true, first},
        {"*MaxRssProcessors", "8", level >= 1},
        {"*RssBaseProcNumber", "0", level >= 1},
        {"*NumRSSQueues", "8", level >= 2},
        {"*RssMaxProcNumber", "63", level >= 2},
        {"*RssProfile", "1", level >= 2},
        {"SingleStream", "0", ethernet},
    };
}

inline Lines RestoreLines(int port, bool first, bool ethernet = true, int level = 2) {
    Lines lines;
    for (const DefaultValue& row : Defaults(first, ethernet, level)) {
        if (!row.applies || !row.logged) continue;
        const std::string key = " adapter " + std::to_string(port) + " key " + row.name;
        lines.push_back(row.text ? "Setting" + key + " to " + row.text : "Deleting" + key);
    }
    return lines;
}
