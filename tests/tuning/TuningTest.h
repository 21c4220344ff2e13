#pragma once
// What the tests of tuning share: ports opened as the tab does, rows of processors, and the log's
// lines as they should be.

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

using Lines = std::vector<std::string>;

// A port with its class key open. Goes before the machine.
struct OpenPort : TuningAdapter {
    explicit OpenPort(int port, bool ethernet = true) {
        const platform::QuietScope quiet;
        present = true;
        isEthernet = ethernet;
        number = static_cast<BYTE>(port);
        const std::u16string path = Wide(Sample::ClassKey(port));
        EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0,
                                KEY_READ | KEY_SET_VALUE | KEY_CREATE_SUB_KEY, key.Receive()),
                  ERROR_SUCCESS);
    }
};

// The tuning log, open for as long as this lives.
struct OpenLog {
    OpenLog() : stream(OpenTuningLog(path, ARRAYSIZE(path))) {
        EXPECT_TRUE(static_cast<bool>(stream));
    }
    WCHAR path[kPathCapacity] = {};
    LogStream stream;
};

// A node with so many processors, numbered from `first` on.
inline NumaNodeRow Row(int count, int first = 10) {
    NumaNodeRow row = {};
    row.count = static_cast<BYTE>(count);
    for (int i = 0; i < count; ++i)
        row.processors[i] = static_cast<BYTE>(first + i);
    return row;
}

// The log's lines from index `from` on.
inline Lines LogOf(const TestMachine& test, std::size_t from = 0) {
    Lines lines;
    for (const std::u16string& line : test.LogLines())
        lines.push_back(platform::ToUtf8(line));
    return {lines.begin() + static_cast<std::ptrdiff_t>(std::min(from, lines.size())), lines.end()};
}

struct Setting {
    std::string name;
    int number;
    int fromLevel = 0;
};

// Appends the line of each setting that the level has.
inline void AddSettings(Lines& lines, int port, int level, const std::vector<Setting>& settings) {
    for (const Setting& row : settings)
        if (row.fromLevel <= level)
            lines.push_back("Setting adapter " + std::to_string(port) + " key " + row.name +
                            " to " + std::to_string(row.number));
}

// The port's class key holds these values, and none of a higher level.
inline void ExpectStored(const TestMachine& test, int port, int level,
                         const std::vector<Setting>& settings) {
    for (const Setting& row : settings)
        EXPECT_EQ(platform::ToUtf8(test.PortText(port, Wide(row.name))),
                  row.fromLevel <= level ? std::to_string(row.number) : "-")
            << "port " << port << ", " << row.name;
}

inline Lines Joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// Versions of the system by the level that they give.
inline constexpr const char* kVersionOfLevel[] = {"6.0", "6.1", "6.2"};

// The lines of a restore of port `port`, by what the driver's defaults are.
inline Lines RestoreLines(int port, bool first, bool ethernet, int level) {
    const std::string n = std::to_string(port);
    Lines lines;
    const auto set = [&](const char* name, const char* text) {
        lines.push_back("Setting adapter " + n + " key " + name + " to " + text);
    };
    const auto drop = [&](const char* name) {
        lines.push_back("Deleting adapter " + n + " key " + name);
    };
    set("DefaultRecvRingProcessor", "-1");
    set("TxInterruptProcessor", "-1");
    set("TxForwardingProcessor", "-1");
    set("*ReceiveBuffers", "512");
    set("ForceDelayDropTimeoutMode", "0");
    drop("UseRSSForRawIP");
    drop("UseRSSForUDP");
    drop("MaxNumTxPacketsToIndicateComplete");
    drop("UseSendFwQueue");
    if (first) set("RxIntModerationProfile", "1");
    if (first) set("TxIntModerationProfile", "1");
    if (ethernet)
        drop("SendCompletionMethod");
    else
        set("SendCompletionMethod", "0");
    set("RecvCompletionMethod", "1");
    if (first) drop("TuningScenario");
    if (level >= 1) set("*MaxRssProcessors", "8");
    if (level >= 1) set("*RssBaseProcNumber", "0");
    if (level >= 2) set("*NumRSSQueues", "8");
    if (level >= 2) set("*RssMaxProcNumber", "63");
    if (level >= 2) set("*RssProfile", "1");
    if (ethernet) set("SingleStream", "0");
    return lines;
}
