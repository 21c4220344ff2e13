// Threads, and what ends a machine.

#include <functional>
#include <string>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"
#include "Seeds.h"

namespace {

using platform::Machine;
using platform::MachineEnded;

// A thread at work. The owner joins it at its end, unless the machine has ended.
class Worker {
  public:
    explicit Worker(std::function<void()> work) : m_work(std::move(work)) {
        m_thread = CreateThread(nullptr, 0, &Body, &m_work, 0, nullptr);
    }
    ~Worker() {
        if (Machine::Current().Ended()) return;
        EXPECT_EQ(WaitForSingleObject(m_thread, INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(CloseHandle(m_thread));
    }
    HANDLE Handle() const { return m_thread; }

  private:
    static DWORD WINAPI Body(LPVOID work) {
        (*static_cast<std::function<void()>*>(work))();
        return 0;
    }
    std::function<void()> m_work;
    HANDLE m_thread;
};

// How the action ends the machine.
MachineEnded EndOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const MachineEnded& end) {
        return end;
    }
    return {0, "the machine goes on"};
}

// Two threads that take two mutexes, in the same order or not; how it ends.
std::string EndOfMutexes(std::uint64_t seed, bool sameOrder) {
    Machine machine(seed);
    const HANDLE a = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE b = CreateMutexW(nullptr, FALSE, nullptr);
    const auto take = [](HANDLE first, HANDLE second) {
        return [=] {
            WaitForSingleObject(first, INFINITE);
            WaitForSingleObject(second, INFINITE);
            ReleaseMutex(second);
            ReleaseMutex(first);
        };
    };
    MachineEnded end = {};
    {
        const Worker one(take(a, b));
        const Worker two(sameOrder ? take(a, b) : take(b, a));
        const HANDLE threads[] = {one.Handle(), two.Handle()};
        end = EndOf([&] { WaitForMultipleObjects(2, threads, TRUE, INFINITE); });
    }
    if (machine.Ended()) return end.reason;
    CloseHandle(a);
    CloseHandle(b);
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
