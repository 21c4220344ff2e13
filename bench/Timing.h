#pragma once
// What the benchmarks share: a clock, and how a repeated benchmark is reported.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using Clock = std::chrono::steady_clock;

inline double Seconds(Clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

inline double Lowest(const std::vector<double>& values) {
    return *std::min_element(values.begin(), values.end());
}

inline double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Timed by the benchmark itself, so often; the lowest time of five runs and their spread are shown.
inline void Repeated(benchmark::internal::Benchmark* benchmark, int iterations) {
    benchmark->UseManualTime()->Iterations(iterations)->Repetitions(5);
    benchmark->ComputeStatistics("min", Lowest)->DisplayAggregatesOnly();
}

// A file of the source tree; empty when it can't be read.
inline std::string SourceFile(const std::string& name) {
    std::ifstream file(std::string(SOURCE_DIR) + "/" + name, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}
