// Threads, and what ends a machine.

#include <string>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"
#include "Seeds.h"

namespace {

// Two mutexes in the order in which a thread takes them.
struct Mutexes {
    HANDLE first, second;
};

DWORD WINAPI TakeBoth(LPVOID mutexes) {
    const auto [first, second] = *static_cast<const Mutexes*>(mutexes);
    WaitForSingleObject(first, INFINITE);
    WaitForSingleObject(second, INFINITE);
    ReleaseMutex(second);
    ReleaseMutex(first);
    return 0;
}

// How a machine ends on which two threads take the mutexes, in the same order or not.
std::string EndOfMutexes(std::uint64_t seed, bool sameOrder) {
    platform::Machine machine(seed);
    const HANDLE a = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE b = CreateMutexW(nullptr, FALSE, nullptr);
    Mutexes orders[] = {{a, b}, sameOrder ? Mutexes{a, b} : Mutexes{b, a}};
    HANDLE threads[2];
    for (int i = 0; i < 2; ++i)
        threads[i] = CreateThread(nullptr, 0, &TakeBoth, &orders[i], 0, nullptr);
    try {
        EXPECT_EQ(WaitForMultipleObjects(2, threads, TRUE, INFINITE), WAIT_OBJECT_0);
    } catch (const platform::MachineEnded& end) {
        return end.reason;
    }
    for (const HANDLE handle : {a, b, threads[0], threads[1]})
        EXPECT_TRUE(CloseHandle(handle));
    return "";
}

TEST(SchedulerTest, SomeSeedsFindADeadlockAndRepeatIt) {
    const std::vector<std::uint64_t> seeds = Seeds(40);
    std::size_t found = 0;
    for (const std::uint64_t seed : seeds) {
        SCOPED_TRACE(seed);
        EXPECT_EQ(EndOfMutexes(seed, true), "");
        const std::string end = EndOfMutexes(seed, false);
        EXPECT_EQ(EndOfMutexes(seed, false), end);
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
