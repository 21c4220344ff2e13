#pragma once
// Seeds for random tests: TEST_SEED from the environment replays one.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

inline std::vector<std::uint64_t> Seeds(std::size_t count) {
    if (const char* one = std::getenv("TEST_SEED")) return {std::stoull(one)};
    std::vector<std::uint64_t> seeds;
    for (std::uint64_t seed = 1; seed <= count; ++seed)
        seeds.push_back(seed);
    return seeds;
}
