// Threads, waiting, the clock and the user's turns.

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

// What the user does happens before the clock moves, and while he waits the others run.
TEST(SchedulerTest, TheUserActsBetweenWhatTheThreadsDo) {
    FactsMachine facts;
    Scheduler& scheduler = facts.machine.scheduler;
    bool stop = false;
    Times polls;
    const Worker worker([&] {
        while (!stop) {
            polls.push_back(scheduler.Now());
            Sleep(5'000);
        }
    });
    const struct {
        Scheduler::Milliseconds expected;
        std::function<void()> deed;
    } turns[] = {
        {0, [] {}},
        {0, [&] { scheduler.UserWaits(12'000); }},
        {12'000,
         [&] {
             scheduler.UserWakesAt(13'500);
             scheduler.UserWaits(3'000);
         }},
        {13'500, [] {}},
        {15'000, [&] { stop = true; }},
    };
    for (const auto& turn : turns) {
        while (scheduler.BlockIdle(
                   "GetMessageW", [] { return false; }, std::nullopt, false) !=
               Scheduler::Wake::UserTurn) {
        }
        EXPECT_EQ(scheduler.Now(), turn.expected);
        turn.deed();
    }
    EXPECT_EQ(polls, (Times{0, 5'000, 10'000, 15'000}));
}

TEST(SchedulerTest, AnIdleUserIsAskedAgainOnlyAfterSomethingHappened) {
    FactsMachine facts;
    Scheduler& scheduler = facts.machine.scheduler;
    bool ended = false;
    const Worker worker([&] {
        Sleep(1'000);
        Sleep(1'000);
        ended = true;
    });
    Times asked;
    while (scheduler.BlockIdle(
               "GetMessageW", [&] { return ended; }, std::nullopt, !asked.empty()) !=
           Scheduler::Wake::Ready)
        asked.push_back(scheduler.Now());
    EXPECT_EQ(asked, (Times{0, 1'000}));
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

TEST(WaitingTest, WhichHandleEndsTheWait) {
    const struct {
        std::vector<int> set;  // the events that are set, of three; the last one resets itself
        BOOL all;
        DWORD result;
        std::vector<int> left;  // set afterwards
        const char* why;
    } cases[] = {
        {{}, FALSE, WAIT_TIMEOUT, {}, "none is set"},
        {{1, 2}, FALSE, WAIT_OBJECT_0 + 1, {1, 2}, "the first in order, and only that one"},
        {{2}, FALSE, WAIT_OBJECT_0 + 2, {}, "it resets itself"},
        {{0, 2}, TRUE, WAIT_TIMEOUT, {0, 2}, "one is missing, and nothing is taken"},
        {{0, 1, 2}, TRUE, WAIT_OBJECT_0, {0, 1}, "all are taken"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        FactsMachine machine;
        HANDLE events[3];
        for (int i = 0; i < 3; ++i)
            events[i] = CreateEventW(nullptr, i < 2, FALSE, nullptr);
        for (const int i : row.set)
            EXPECT_TRUE(SetEvent(events[i]));
        EXPECT_EQ(WaitForMultipleObjects(3, events, row.all, 20), row.result);
        std::vector<int> left;
        for (int i = 0; i < 3; ++i) {
            if (WaitForSingleObject(events[i], 0) == WAIT_OBJECT_0) left.push_back(i);
            EXPECT_TRUE(CloseHandle(events[i]));
        }
        EXPECT_EQ(left, row.left);
    }
}

TEST(WaitingTest, WrongHandlesAreRefused) {
    FactsMachine machine;
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    EXPECT_EQ(ErrorOf(SetEvent(mutex)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(ErrorOf(ReleaseMutex(mutex)), ERROR_NOT_OWNER);
    const Worker worker([] { SetLastError(99); });
    Sleep(1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_OWNER}) << "each thread has its own";
    EXPECT_TRUE(CloseHandle(mutex));
    EXPECT_EQ(ErrorOf(CloseHandle(mutex)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_FAILED);
}

TEST(WaitingTest, AMutexIsItsOwnersUntilTheLastRelease) {
    for (const std::uint64_t seed : Seeds(4)) {
        SCOPED_TRACE(seed);
        FactsMachine machine({}, seed);
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
        std::vector<DWORD> results;
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
        {
            const Worker worker([&] {
                results.push_back(WaitForSingleObject(mutex, 100));
                results.push_back(WaitForSingleObject(mutex, INFINITE));
                ReleaseMutex(mutex);
            });
            Sleep(50);
            EXPECT_TRUE(ReleaseMutex(mutex));
            Sleep(450);
            EXPECT_EQ(results, std::vector<DWORD>{WAIT_TIMEOUT});
            EXPECT_TRUE(ReleaseMutex(mutex));
        }
        EXPECT_EQ(results, (std::vector<DWORD>{WAIT_TIMEOUT, WAIT_OBJECT_0}));
        EXPECT_TRUE(CloseHandle(mutex));
    }
}

TEST(WaitingTest, AnOwnerThatEndsAbandonsItsMutex) {
    FactsMachine machine;
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const Worker worker([&] {
        WaitForSingleObject(mutex, INFINITE);
        WaitForSingleObject(mutex, INFINITE);
        Sleep(10);
    });
    Sleep(5);
    const HANDLE handles[] = {event, mutex};
    EXPECT_EQ(WaitForMultipleObjects(2, handles, FALSE, INFINITE), WAIT_ABANDONED_0 + 1);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "only the next owner hears of it";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
    EXPECT_TRUE(CloseHandle(event));
}

}  // namespace
