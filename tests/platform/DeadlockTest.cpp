// Two threads that take two mutexes in different order: some seeds find the deadlock, the report
// names what each thread waits in, and the seed brings it about again.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "Machine.h"
#include "Seeds.h"

namespace {

struct Pair {
    HANDLE first;
    HANDLE second;
};

DWORD WINAPI TakeBoth(LPVOID work) {
    const Pair& pair = *static_cast<Pair*>(work);
    WaitForSingleObject(pair.first, INFINITE);
    WaitForSingleObject(pair.second, INFINITE);
    ReleaseMutex(pair.second);
    ReleaseMutex(pair.first);
    return 0;
}

// How it ended; empty when both threads got through.
std::string EndOf(std::uint64_t seed, bool sameOrder) {
    platform::Machine machine(seed);
    const HANDLE a = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE b = CreateMutexW(nullptr, FALSE, nullptr);
    Pair pairs[] = {{a, b}, {sameOrder ? a : b, sameOrder ? b : a}};
    HANDLE threads[2];
    for (int i = 0; i < 2; ++i)
        threads[i] = CreateThread(nullptr, 0, TakeBoth, &pairs[i], 0, nullptr);
    try {
        WaitForMultipleObjects(2, threads, TRUE, INFINITE);
    } catch (const platform::MachineEnded& end) {
        return end.reason;
    }
    for (const HANDLE handle : {threads[0], threads[1], a, b})
        CloseHandle(handle);
    return "";
}

TEST(DeadlockTest, TwoMutexesInTwoOrdersAreFound) {
    const std::vector<std::uint64_t> seeds = Seeds(40);
    std::size_t found = 0;
    for (const std::uint64_t seed : seeds) {
        SCOPED_TRACE(seed);
        EXPECT_EQ(EndOf(seed, true), "");
        const std::string end = EndOf(seed, false);
        EXPECT_EQ(EndOf(seed, false), end) << "a seed repeats its order";
        if (end.empty()) continue;
        ++found;
        EXPECT_EQ(end,
                  "deadlock: thread 0 in WaitForMultipleObjects, thread 1 in WaitForSingleObject, "
                  "thread 2 in WaitForSingleObject");
    }
    if (seeds.size() == 1) return;  // replayed
    EXPECT_GT(found, 0u);
    EXPECT_LT(found, seeds.size());
}

}  // namespace
