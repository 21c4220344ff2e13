// A press of Run Tuning, from the click to the end of its last box: its time, its calls by kind,
// and that it reads and writes no registry value twice for one purpose.

#include <algorithm>

#include <prsht.h>

#include "CallKinds.h"
#include "Fixture.h"
#include "MachineFile.h"
#include "Text.h"
#include "Timing.h"
#include "ValueAccess.h"
#include "resource.h"

namespace {

struct Device {
    const char* sample;
    const char* instanceId;
    const char16_t* classKey;  // the end of its path
};

constexpr Device kTwoPorts = {"samples/two-port-ethernet.reg",
                              "TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&01", u"\\0011"};
constexpr Device kOnePort = {"samples/single-port.reg", "TSR4\\Tessaron-ETH26_Eth\\6&30C15AE8&0&01",
                             u"\\0008"};

struct Scenario {
    int control;
    int ports;  // that it tunes
};

constexpr Scenario kSinglePort = {IDC_SINGLE_PORT, 1};
constexpr Scenario kSingleStream = {IDC_SINGLE_STREAM, 1};
constexpr Scenario kDualPort = {IDC_DUAL_PORT, 2};
constexpr Scenario kForwarding = {IDC_FORWARDING, 2};
constexpr Scenario kMulticast = {IDC_MULTICAST, 1};
constexpr Scenario kRestore = {IDC_BALANCED, 0};

// Opens the Performance tab on a fresh machine, chooses the scenario, and does the deed.
void OnTab(TestMachine& test, const Device& device, int control,
           const std::function<void()>& deed) {
    const platform::QuietScope quiet;
    const auto error = platform::LoadMachineFile(test.machine, SourceFile(device.sample));
    EXPECT_FALSE(error) << error->message;
    test.user.agrees = true;
    auto provided = test.CallProvider(device.instanceId, "WinTsrTunePropPageProvider");
    std::swap(provided.pages[0], provided.pages[1]);
    for (; provided.pages.size() > 1; provided.pages.pop_back())
        DestroyPropertySheetPage(provided.pages.back());
    test.user.Do([&] {
        test.Press(control);
        EXPECT_TRUE(test.IsChecked(control));
        deed();
    });
    EXPECT_TRUE(test.RunSheet(std::move(provided)));
}

const CallKind kKinds[] = {
    {"key", {"RegOpen", "RegClose", "RegEnum"}},
    {"read", {"RegQuery"}},
    {"write", {"RegSet", "RegDelete"}},
    {"log",
     {"CreateFile", "CreateDirectory", "GetFileSize", "GetWindowsDirectory", "GetLocalTime",
      "WriteFile", "CloseHandle"}},
    {"card", {"ib_", "LoadLibrary", "GetProcAddress", "FreeLibrary", "GetIfTable", "FreeMibTable"}},
    {"cpu", {"GetActiveProcessor", "GetNuma", "SetThreadGroupAffinity", "GetTickCount"}},
    {"device", {"SetupDi"}},
    {"window", {"GetDlgItem", "IsDlg", "SendMessage", "CheckDlg", "IsWindow", "GetWindowLong"}},
    {"other", {""}},
};

// How often a press has a purpose for a value: to learn its size, to read it, to change it.
struct Purposes {
    std::ptrdiff_t sizes = 1;
    std::ptrdiff_t reads = 1;
    std::ptrdiff_t changes = 1;
};

Purposes PurposesOf(const Device& device, const Scenario& scenario, const std::u16string& key,
                    const std::u16string& name) {
    const bool dual = scenario.control == IDC_DUAL_PORT;
    Purposes purposes;
    // A port's connection name is looked up to find its node, and before that to order two ports.
    if (dual && (name == u"NetCfgInstanceId" || name == u"Name")) ++purposes.reads;
    if (key.find(u"\\Class\\") == std::u16string::npos) return purposes;
    // Every press restores both ports. The scenario restores its own ones again, for the log to
    // tell, and then tunes them.
    const int port = key.ends_with(device.classKey) ? 1 : 2;
    if (port <= scenario.ports) purposes.changes += 2;
    // Each of two ports is tuned as a single one first, which stores that scenario.
    if (dual && name == u"TuningScenario") ++purposes.changes;
    return purposes;
}

void CheckValues(const Device& device, const Scenario& scenario,
                 const ValueRecorder::Accesses& values) {
    for (const auto& [value, accesses] : values) {
        const auto& [key, name] = value;
        const auto count = [&all = accesses](char what) { return std::ranges::count(all, what); };
        const Purposes purposes = PurposesOf(device, scenario, key, name);
        EXPECT_TRUE(count('s') <= purposes.sizes && count('r') <= purposes.reads &&
                    count('w') + count('d') <= purposes.changes)
            << platform::ToUtf8(key) << " " << platform::ToUtf8(name) << ": " << accesses;
    }
}

void RunTuning(benchmark::State& state, const Device& device, const Scenario& scenario) {
    while (state.KeepRunning()) {
        TestMachine test;
        OnTab(test, device, scenario.control, [&] {
            const Clock::time_point start = Clock::now();
            test.Press(IDC_RUN_TUNING);
            state.SetIterationTime(Seconds(Clock::now() - start));
        });
    }
    TestMachine test;
    OnTab(test, device, scenario.control, [&] {
        const ValueRecorder recorder(test.machine);
        test.machine.trace.Start();
        test.Press(IDC_RUN_TUNING);
        test.machine.trace.Stop();
        CheckValues(device, scenario, recorder.Values());
    });
    CountCalls(test.machine.trace, kKinds, state);
}

void Presses(benchmark::internal::Benchmark* benchmark) {
    Repeated(benchmark->Unit(benchmark::kMicrosecond), 20);
}

BENCHMARK_CAPTURE(RunTuning, two_ports_single_port, kTwoPorts, kSinglePort)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, two_ports_single_stream, kTwoPorts, kSingleStream)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, two_ports_dual_port, kTwoPorts, kDualPort)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, two_ports_forwarding, kTwoPorts, kForwarding)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, two_ports_multicast, kTwoPorts, kMulticast)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, two_ports_restore, kTwoPorts, kRestore)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, one_port_single_port, kOnePort, kSinglePort)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, one_port_single_stream, kOnePort, kSingleStream)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, one_port_forwarding, kOnePort, kForwarding)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, one_port_multicast, kOnePort, kMulticast)->Apply(Presses);
BENCHMARK_CAPTURE(RunTuning, one_port_restore, kOnePort, kRestore)->Apply(Presses);

}  // namespace
