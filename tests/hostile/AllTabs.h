#pragma once
// All tabs of a machine that has something of everything, used while something is wrong with it.

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "../pages/InformationTest.h"
#include "../pages/PortProtocolTest.h"
#include "Registry.h"

constexpr std::size_t kMachines = 4;
inline const std::vector<int> kScenarios = {1086, 1087, 1088, 1096, 1098, 1095};
constexpr int kRunTuning = 1090;

// One port or two, of either kind.
inline Sample MachineOf(std::size_t number) {
    Sample sample = FullSample();
    const Sample::Kind kind = number % 2 ? Sample::Kind::Ipoib : Sample::Kind::Ethernet;
    number / 2 % 2 ? sample.OnePort(kind) : sample.Ports(kind, kind);
    for (const char* line : {"\"TuningScenario\"=\"1088\"", "\"GuidMask\"=\"231\""})
        sample.PortValue(1, line);
    return sample.TcpToChange()
        .Processors("4", "0,0,1,1")
        .Ticks("50,1")
        .With(port_protocol::ParametersPath(),
              std::string("\"CapabilityFlag\"=dword:") + port_protocol::kAll)
        .With(port_protocol::ParametersPath(), "\"PortType\"=\"ib,eth\"")
        .With(std::string("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\") +
                  Sample::Guid(1),
              "\"Other\"=dword:1");
}

inline void PressIfEnabled(TestMachine& test, int control) {
    const HWND button = GetDlgItem(test.Page(), control);
    if (button && IsWindowEnabled(button)) test.Press(control);
}

// Opens both sheets and does on each tab what there is to do. meanwhile: when the first is open.
inline void UseAllTabs(
    TestMachine& test, const std::vector<int>& scenarios,
    const std::function<void()>& meanwhile = [] {}) {
    test.user.agrees = true;
    if (auto provided = test.CallProvider(); !provided.pages.empty()) {
        const std::size_t tabs = provided.pages.size();
        test.user.Do(meanwhile);
        test.user.Do([&] { test.machine.scheduler.UserWaits(6000); });
        test.user.Do([&, tabs] {
            for (std::size_t tab = 0; tab < tabs; ++tab) {
                SendMessageW(test.SheetWindow(), PSM_SETCURSEL, tab, 0);
                test.user.Save(u"C:\\x.log");
                PressIfEnabled(test, kSaveToFile);
                for (const int scenario : scenarios) {
                    PressIfEnabled(test, scenario);
                    PressIfEnabled(test, kRunTuning);
                }
                SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
            }
        });
        test.RunSheet(std::move(provided));
    }
    if (auto bus = test.CallBusProvider(); !bus.pages.empty()) {
        test.user.Do([&] {
            for (const int control : {1085, 1085, 1074, 1077, 1083})
                PressIfEnabled(test, control);
            SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
        });
        test.RunSheet(std::move(bus));
    }
}

// What was to be seen of a use: its boxes, and the registry that it left.
inline std::string Outcome(TestMachine& test, std::size_t firstBox) {
    std::string text;
    for (std::size_t i = firstBox; i < test.user.Boxes().size(); ++i)
        text += platform::ToUtf8(test.user.Boxes()[i].text) + "\n";
    return text + platform::FormatRegistry(test.machine.Get<platform::Registry>().Tree());
}

// Uses all tabs while something is spoilt, before the sheets open (`early`) or when the first one
// is open. Then everything is put back, and the next use must be as if nothing had been.
inline void ExpectCleanUseAfter(std::size_t machine, int scenario, bool early,
                                const std::function<void(TestMachine&)>& spoil) {
    static std::map<std::pair<std::size_t, int>, std::string> s_clean;
    std::string& clean = s_clean[{machine, scenario}];
    if (clean.empty()) {
        TestMachine test(MachineOf(machine));
        UseAllTabs(test, {scenario});
        clean = Outcome(test, 0);
    }
    TestMachine test(MachineOf(machine));
    platform::Registry& registry = test.machine.Get<platform::Registry>();
    platform::RegistryTree before = registry.Snapshot();
    if (early) spoil(test);
    UseAllTabs(test, {scenario}, [&] {
        if (!early) spoil(test);
    });
    test.LogLines();  // whole lines
    const std::size_t boxes = test.user.Boxes().size();
    registry.Replace(std::move(before));
    UseAllTabs(test, {scenario});
    ASSERT_EQ(Outcome(test, boxes), clean);
}
