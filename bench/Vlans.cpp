// The VLAN tab of an adapter with many VLANs: the time of its opening, of its commands and of a
// pass of its status thread, and their calls for each VLAN.

#include "CallKinds.h"
#include "Timing.h"
#include "pages/VlanTest.h"

namespace {

using vlan::VlanTest;

void Command(VlanTest& test, int command) {
    test.user.DoFirst([] { VlanTest::Edit(u"x", u"4095", 3); });
    test.Press(command);
}
// The test itself opens the tab.
void Open(VlanTest& /*test*/) {}
void New(VlanTest& test) {
    Command(test, IDC_VLAN_NEW);
}
// The last row's component is the last that a search comes to.
void SelectLast(const VlanTest& test) {
    const HWND list = GetDlgItem(test.Page(), IDC_VLAN_LIST);
    test.Select(static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)) - 1);
}
void Modify(VlanTest& test) {
    SelectLast(test);
    Command(test, IDC_VLAN_MODIFY);
}
void Remove(VlanTest& test) {
    SelectLast(test);
    test.Press(IDC_VLAN_REMOVE);
}
void Pass(VlanTest& test) {
    test.machine.scheduler.UserWaits(16000);
}
// A pass in which all VLANs lose their link.
void LinkGoesDown(VlanTest& test) {
    test.Merge("SOFTWARE\\StandIn\\Interfaces\\" + std::string(Sample::Guid(1)), "\"Up\"=dword:0");
    Pass(test);
}

const CallKind kKinds[] = {
    {"key", {"RegOpen", "RegCreate", "RegClose", "RegEnum"}},
    {"read", {"RegQuery"}},
    {"write", {"RegSet", "RegDelete"}},
    {"engine", {"INetCfg", "IEnumNetCfg", "Co"}},
    {"text", {"StringFromGUID2", "CLSIDFromString", "WriteFile", "GetStdHandle"}},
    {"window", {"SendMessage", "GetDlgItem"}},
    {"other", {""}},
};

using Operation = void (*)(VlanTest& test);

// Does the operation on a fresh machine: `begin` comes before it, `end` when all is quiet again.
void OnTab(const benchmark::State& state, Operation operation,
           const std::function<void(VlanTest&)>& begin, const std::function<void(VlanTest&)>& end) {
    VlanTest test(Sample().Vlans(static_cast<int>(state.range(0))));
    test.user.agrees = true;
    const auto start = [&] {
        begin(test);
        operation(test);
    };
    if (operation == Open)
        test.user.DoFirst(start);
    else
        test.user.Do(start);
    test.user.Do([&] { end(test); });
    EXPECT_TRUE(test.RunSheet());
}

void Vlans(benchmark::State& state, Operation operation) {
    while (state.KeepRunning()) {
        Clock::time_point start;
        OnTab(
            state, operation, [&](VlanTest&) { start = Clock::now(); },
            [&](VlanTest&) { state.SetIterationTime(Seconds(Clock::now() - start)); });
    }
    OnTab(
        state, operation, [](VlanTest& test) { test.machine.trace.Start(); },
        [&](VlanTest& test) {
            test.machine.trace.Stop();
            CountCalls(test.machine.trace, kKinds, state, static_cast<int>(state.range(0)));
        });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(256)->Arg(1024)->Arg(4094);
    Repeated(benchmark->Unit(benchmark::kMillisecond), 1);
}

BENCHMARK_CAPTURE(Vlans, open, Open)->Apply(Sizes);
BENCHMARK_CAPTURE(Vlans, new, New)->Apply(Sizes);
BENCHMARK_CAPTURE(Vlans, modify, Modify)->Apply(Sizes);
BENCHMARK_CAPTURE(Vlans, remove, Remove)->Apply(Sizes);
BENCHMARK_CAPTURE(Vlans, pass, Pass)->Apply(Sizes);
BENCHMARK_CAPTURE(Vlans, link_goes_down, LinkGoesDown)->Apply(Sizes);

}  // namespace
