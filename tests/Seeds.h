#pragma once
// Seeds for random tests. From the environment, TEST_SEED replays one, and TEST_RUNS=N takes N
// times as many.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

inline std::vector<std::uint64_t> Seeds(std::size_t count) {
    if (const char* one = std::getenv("TEST_SEED")) return {std::stoull(one)};
    if (const char* factor = std::getenv("TEST_RUNS")) count *= std::stoull(factor);
    std::vector<std::uint64_t> seeds;
    for (std::uint64_t seed = 1; seed <= count; ++seed)
        seeds.push_back(seed);
    return seeds;
}
