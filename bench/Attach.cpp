// Loading the library into a process, with and without a help file.

#include "Fixture.h"
#include "Timing.h"

namespace {

void Attach(benchmark::State& state, bool withHelp) {
    const std::string help = SourceFile("resources/help.xml");
    TestMachine test(Sample(), 0, withHelp ? help.c_str() : nullptr);
    while (state.KeepRunning()) {
        const Clock::time_point start = Clock::now();
        test.Attach();
        state.SetIterationTime(Seconds(Clock::now() - start));
        test.Detach();
    }
    test.machine.trace.Start();
    test.Attach();
    state.counters["calls"] = static_cast<double>(test.machine.trace.Records().size());
    if (withHelp) state.counters["help_bytes"] = static_cast<double>(help.size());
}
BENCHMARK_CAPTURE(Attach, without_help, false)->Unit(benchmark::kMicrosecond)->Apply([](auto* b) {
    Repeated(b, 1000);
});
BENCHMARK_CAPTURE(Attach, with_help, true)->Unit(benchmark::kMicrosecond)->Apply([](auto* b) {
    Repeated(b, 1000);
});

}  // namespace
