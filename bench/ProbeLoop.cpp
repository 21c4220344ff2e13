// The NUMA probe's store loop, as it runs within a measurement, against the bare loop: read the
// value, read the address, store, each time anew. What the store alone takes is shown beside it;
// the probe has to read as well.

#include <string_view>

#include "ClosestNuma.h"
#include "Fixture.h"
#include "Timing.h"

namespace {

constexpr char16_t kCard[] = u"0002c90300a5b6c0";
constexpr std::size_t kNodes = 8;
constexpr int kStores = 0x1FFFFF;  // of one measurement

// Seconds of each store loop of one probe: the time from the probe's look at the clock in front of
// a loop to the one behind it.
std::vector<double> TimeProbe(TestMachine& test) {
    std::vector<Clock::time_point> looks;
    test.machine.trace.onCall = [&](const platform::Trace::Record& call) {
        if (std::string_view(call.name) == "GetTickCount") looks.push_back(Clock::now());
    };
    DWORD node = 0;
    EXPECT_EQ(FindFastestNuma(kCard, node), 0);
    test.machine.trace.onCall = nullptr;
    // One look at the start; then for each node around its loop, and for the time limit.
    EXPECT_EQ(looks.size(), 1 + 3 * kNodes);
    std::vector<double> times;
    for (std::size_t i = 1; i + 1 < looks.size(); i += 3)
        times.push_back(Seconds(looks[i + 1] - looks[i]));
    return times;
}

// A page of plain memory with what the loops need to reach it.
struct Page {
    alignas(4096) volatile ULONG words[1024] = {};
    volatile ULONG value = 0x100;
    volatile ULONG* volatile place = &words[5];
};

template <class Store>
double TimeLoop(const Store& store) {
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < kStores; ++i)
        store();
    return Seconds(Clock::now() - start);
}

void ProbeLoop(benchmark::State& state) {
    TestMachine test(Sample().Processors("8", "0,1,2,3,4,5,6,7").Ticks("1,1,1,1,1,1,1,1"));
    Page page;
    std::vector<double> probe;
    std::vector<double> bare;
    std::vector<double> storeOnly;
    while (state.KeepRunning()) {
        const std::vector<double> times = TimeProbe(test);
        probe.insert(probe.end(), times.begin(), times.end());
        for (std::size_t i = 0; i < times.size(); ++i) {
            bare.push_back(TimeLoop([&] { *page.place = page.value; }));
            storeOnly.push_back(TimeLoop([&] { page.words[5] = 0x100; }));
        }
        state.SetIterationTime(Median(times));
    }
    constexpr double kNanoseconds = 1e9 / kStores;
    state.counters["probe_ns"] = Lowest(probe) * kNanoseconds;
    state.counters["bare_ns"] = Lowest(bare) * kNanoseconds;
    state.counters["store_only_ns"] = Lowest(storeOnly) * kNanoseconds;
    state.counters["to_bare_min"] = Lowest(probe) / Lowest(bare);
    state.counters["to_bare_median"] = Median(probe) / Median(bare);
}
BENCHMARK(ProbeLoop)->Unit(benchmark::kMicrosecond)->Apply([](auto* b) { Repeated(b, 10); });

}  // namespace
