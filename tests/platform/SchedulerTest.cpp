// Threads, the clock, the user's turns, and what ends a machine.

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"
#include "Seeds.h"

namespace {

using platform::Machine;
using platform::MachineEnded;
using platform::Scheduler;
using Times = std::vector<Scheduler::Milliseconds>;

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

// How the deed ends the machine.
MachineEnded EndOf(const std::function<void()>& deed) {
    try {
        deed();
    } catch (const MachineEnded& end) {
        return end;
    }
    return {0, "the machine goes on"};
}

TEST(SchedulerTest, TheClockMovesToWhatIsDueAndNoFurther) {
    for (const std::uint64_t seed : Seeds(6)) {
        SCOPED_TRACE(seed);
        FactsMachine facts({}, seed);
        Scheduler& scheduler = facts.machine.scheduler;
        const std::uint64_t start = scheduler.LocalFileTime();
        Times woke;
        {
            const Worker worker([&] {
                for (const DWORD pause : {2'000U, 9'000U, 5'000U}) {
                    Sleep(pause);
                    woke.push_back(scheduler.Now());
                }
            });
            Sleep(5'000);
            woke.push_back(scheduler.Now());
            EXPECT_EQ(WaitForSingleObject(worker.Handle(), 1'000), WAIT_TIMEOUT);
            EXPECT_EQ(scheduler.Now(), 6'000U);
            Sleep(6'000);
            scheduler.Advance(8'000);  // makes the last sleep, until 16 s, due
        }
        EXPECT_EQ(woke, (Times{2'000, 5'000, 11'000, 20'000}));
        EXPECT_EQ(scheduler.LocalFileTime() - start, 200'000'000U);
    }
}

TEST(SchedulerTest, AMachineThatNobodyWouldStopEnds) {
    Machine machine;
    const Worker worker([] {
        for (;;)
            Sleep(5'000);
    });
    const MachineEnded end = EndOf([&] {
        for (bool asked = false;; asked = true)
            machine.scheduler.BlockIdle(
                "GetMessageW", [] { return false; }, std::nullopt, asked);
    });
    EXPECT_EQ(end.reason,
              "the user is done, and it goes on: thread 0 in GetMessageW, thread 1 in Sleep");
}

TEST(SchedulerTest, ABoxThatNobodyAnswersEndsTheMachine) {
    Machine machine;
    EXPECT_EQ(EndOf([] { MessageBoxW(nullptr, TEXT("Text"), nullptr, MB_OK); }).reason,
              "a message box without a user: Error: Text");
}

TEST(SchedulerTest, AnExceptionThatLeavesAThreadEndsTheMachine) {
    const struct {
        std::function<void()> work;
        DWORD code;
        std::string reason;
    } cases[] = {
        {[] { RaiseException(STATUS_NO_MEMORY, EXCEPTION_NONCONTINUABLE, 0, nullptr); },
         STATUS_NO_MEMORY, "exception 0xC0000017"},
        {[] { throw std::length_error("too long"); }, 0xE06D7363,
         "an exception left thread 1: too long"},
    };
    for (const auto& row : cases) {
        Machine machine;
        const Worker worker(row.work);
        const MachineEnded end = EndOf([] { Sleep(1'000); });
        EXPECT_EQ(end.code, row.code);
        EXPECT_EQ(end.reason, row.reason);
        EXPECT_EQ(machine.scheduler.Now(), 0U);
    }
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
