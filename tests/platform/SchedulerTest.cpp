// Threads, waiting, the clock and the user's turns.

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>

#include "Machine.h"
#include "Seeds.h"

namespace {

using platform::Machine;
using platform::MachineEnded;
using platform::Scheduler;
using Times = std::vector<Scheduler::Milliseconds>;

DWORD WINAPI Body(LPVOID work) {
    (*static_cast<std::function<void()>*>(work))();
    return 7;
}

HANDLE Start(std::function<void()>& work) {
    return CreateThread(nullptr, 0, &Body, &work, 0, nullptr);
}

void Join(HANDLE thread) {
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
}

// A message loop without messages: gives the user his turns until he has left it.
void Loop(Machine& machine, const std::function<bool()>& deed) {
    bool asked = false;
    bool left = false;
    while (!left) {
        const auto wake = machine.scheduler.BlockIdle(
            "GetMessageW", [] { return false; }, std::nullopt, asked);
        if (wake == Scheduler::Wake::UserTurn) asked = left = !deed();
    }
}

// The numbers of three threads in the order in which they got to run between calls.
std::string Interleaving(std::uint64_t seed) {
    Machine machine(seed);
    std::string order;
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::vector<std::function<void()>> work(3);
    std::vector<HANDLE> threads;
    for (std::size_t i = 0; i < work.size(); ++i) {
        work[i] = [&order, event, i] {
            for (int step = 0; step < 12; ++step) {
                order += static_cast<char>('a' + i);
                ResetEvent(event);
            }
        };
        threads.push_back(Start(work[i]));
    }
    for (const HANDLE thread : threads)
        Join(thread);
    CloseHandle(event);
    return order;
}

TEST(Scheduler, ASeedRepeatsItsOrderAndSeedsDiffer) {
    EXPECT_EQ(Interleaving(0), "aaaaaaaaaaaabbbbbbbbbbbbcccccccccccc");
    std::set<std::string> orders;
    for (const std::uint64_t seed : Seeds(12)) {
        const std::string order = Interleaving(seed);
        EXPECT_EQ(Interleaving(seed), order) << "seed " << seed;
        orders.insert(order);
    }
    EXPECT_GE(orders.size(), Seeds(12).size() * 3 / 4);
}

TEST(Scheduler, TheClockMovesToWhatIsDueAndNoFurther) {
    for (const std::uint64_t seed : Seeds(6)) {
        SCOPED_TRACE(seed);
        Machine machine(seed);
        const std::uint64_t start = machine.scheduler.LocalFileTime();
        Times woke;
        std::function<void()> work = [&] {
            for (const DWORD pause : {2'000U, 9'000U}) {
                Sleep(pause);
                woke.push_back(machine.scheduler.Now());
            }
        };
        const HANDLE thread = Start(work);
        Sleep(5'000);
        woke.push_back(machine.scheduler.Now());
        EXPECT_EQ(WaitForSingleObject(thread, 1'000), WAIT_TIMEOUT);
        EXPECT_EQ(machine.scheduler.Now(), 6'000U);
        Join(thread);
        Sleep(7'000);
        EXPECT_EQ(woke, (Times{2'000, 5'000, 11'000}));
        EXPECT_EQ(machine.scheduler.LocalFileTime() - start, 180'000'000U);
    }
}

TEST(Scheduler, AdvancingMakesWaitsDue) {
    Machine machine;
    Scheduler::Milliseconds woke = 0;
    std::function<void()> work = [&] {
        Sleep(5'000);
        woke = machine.scheduler.Now();
    };
    const HANDLE thread = Start(work);
    Sleep(0);
    machine.scheduler.Advance(18'000);
    Join(thread);
    EXPECT_EQ(woke, 18'000U);
}

// The user's view: what he does happens before the clock moves, and while he waits the others run.
TEST(Scheduler, TheUserActsBetweenWhatTheThreadsDo) {
    Machine machine;
    bool stop = false;
    Times polls;
    std::function<void()> work = [&] {
        while (!stop) {
            polls.push_back(machine.scheduler.Now());
            Sleep(5'000);
        }
    };
    const HANDLE thread = Start(work);

    struct Turn {
        Scheduler::Milliseconds expected;
        std::function<void()> deed;
    };
    Scheduler& scheduler = machine.scheduler;
    const std::vector<Turn> turns = {
        {0, [] {}},
        {0, [&] { scheduler.UserWaits(12'000); }},
        {12'000, [] {}},
        {12'000,
         [&] {
             scheduler.UserWakesAt(13'500);
             scheduler.UserWaits(3'000);
         }},
        {13'500, [] {}},
        {15'000, [&] { stop = true; }},
    };
    std::size_t done = 0;
    Loop(machine, [&] {
        if (done == turns.size()) return false;
        const Turn& turn = turns[done++];
        EXPECT_EQ(scheduler.Now(), turn.expected) << "turn " << done;
        turn.deed();
        return true;
    });
    EXPECT_EQ(done, turns.size());
    EXPECT_EQ(polls, (Times{0, 5'000, 10'000, 15'000}));
    Join(thread);
}

// A loop whose user had nothing to do is asked again when something has happened, and only then.
TEST(Scheduler, TheUserIsAskedAgainAfterSomethingHappened) {
    Machine machine;
    bool ended = false;
    std::function<void()> work = [&] {
        Sleep(1'000);
        Sleep(1'000);
        ended = true;
    };
    const HANDLE thread = Start(work);
    Times asked;
    bool done = false;
    while (!done) {
        const auto wake = machine.scheduler.BlockIdle(
            "GetMessageW", [&] { return ended; }, std::nullopt, !asked.empty());
        done = wake == Scheduler::Wake::Ready;
        if (!done) asked.push_back(machine.scheduler.Now());
    }
    EXPECT_EQ(asked, (Times{0, 1'000}));
    Join(thread);
}

TEST(Scheduler, AMachineThatNobodyWouldStopEnds) {
    Machine machine;
    std::function<void()> work = [] {
        for (;;)
            Sleep(5'000);
    };
    const HANDLE thread = Start(work);
    std::string reason;
    bool asked = false;
    while (reason.empty()) {
        try {
            machine.scheduler.BlockIdle(
                "GetMessageW", [] { return false; }, std::nullopt, asked);
        } catch (const MachineEnded& end) {
            reason = end.reason;
        }
        asked = true;
    }
    EXPECT_EQ(reason,
              "the user is done, and it goes on: thread 0 in GetMessageW, thread 1 in Sleep");
    EXPECT_TRUE(CloseHandle(thread));
}

TEST(Scheduler, ADeadlockNamesEachThreadsCall) {
    for (const std::uint64_t seed : {0, 3, 8}) {
        SCOPED_TRACE(seed);
        Machine machine(seed);
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
        const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        bool unwound = false;
        struct OnUnwind {
            bool& flag;
            ~OnUnwind() { flag = true; }
        };
        std::function<void()> work = [&] {
            const OnUnwind guard{unwound};
            const HANDLE both[] = {mutex, event};
            WaitForMultipleObjects(2, both, TRUE, INFINITE);
        };
        const HANDLE thread = Start(work);
        std::string reason;
        try {
            WaitForSingleObject(thread, INFINITE);
        } catch (const MachineEnded& end) {
            reason = end.reason;
        }
        EXPECT_EQ(reason,
                  "deadlock: thread 0 in WaitForSingleObject, thread 1 in WaitForMultipleObjects");
        EXPECT_TRUE(unwound);
        EXPECT_TRUE(machine.Ended());
        // What the first thread still has to clean up finds the other one gone.
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    }
}

TEST(Scheduler, AnExceptionThatLeavesAThreadEndsTheMachine) {
    struct Case {
        std::function<void()> work;
        DWORD code;
        std::string reason;
    };
    const Case cases[] = {
        {[] { RaiseException(STATUS_NO_MEMORY, EXCEPTION_NONCONTINUABLE, 0, nullptr); },
         STATUS_NO_MEMORY, "exception 0xC0000017"},
        {[] { throw std::length_error("too long"); }, 0xE06D7363,
         "an exception left thread 1: too long"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.reason);
        Machine machine;
        std::function<void()> work = row.work;
        Start(work);
        try {
            Sleep(1'000);
            ADD_FAILURE() << "the machine goes on";
        } catch (const MachineEnded& end) {
            EXPECT_EQ(end.code, row.code);
            EXPECT_EQ(end.reason, row.reason);
        }
        EXPECT_EQ(machine.scheduler.Now(), 0U);
    }
}

TEST(Scheduler, AThreadThatIsLeftOverIsALeak) {
    std::vector<std::string> leaks;
    {
        Machine machine;
        machine.onLeak = [&](const platform::Ledger::Entry& entry) {
            leaks.push_back(std::string(entry.kind) + " of " + entry.call);
        };
        static HANDLE event;
        event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        static std::function<void()> waits = [] { WaitForSingleObject(event, INFINITE); };
        static std::function<void()> ends = [] { ResetEvent(event); };
        for (auto* work : {&waits, &ends})
            CloseHandle(Start(*work));
        Sleep(10);
        CloseHandle(event);
    }
    EXPECT_EQ(leaks, std::vector<std::string>{"running thread of CreateThread"});
}

TEST(Scheduler, ManyThreadsComeAndGo) {
    Machine machine;
    int ran = 0;
    std::function<void()> work = [&] { ++ran; };
    for (int i = 0; i < 100; ++i)
        Join(Start(work));
    EXPECT_EQ(ran, 100);
}

TEST(Threads, ExitCodesAndIds) {
    Machine machine;
    DWORD seen = 0;
    std::function<void()> work = [&] {
        SetLastError(99);
        seen = GetCurrentThreadId();
        Sleep(10);
    };
    SetLastError(5);
    DWORD id = 0;
    const HANDLE thread = CreateThread(nullptr, 0, &Body, &work, 0, &id);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, DWORD{STILL_ACTIVE});
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, 7U);
    EXPECT_EQ(seen, id);
    EXPECT_NE(id, GetCurrentThreadId());
    EXPECT_EQ(GetLastError(), 5U);  // each thread has its own
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_FALSE(CloseHandle(thread));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST(Waiting, WhichHandleEndsTheWait) {
    struct Case {
        std::vector<int> set;  // the events that are set, of three; the last one resets itself
        BOOL all;
        DWORD result;
        std::vector<int> left;  // set afterwards
        const char* why;
    };
    const Case cases[] = {
        {{}, FALSE, WAIT_TIMEOUT, {}, "none is set"},
        {{1, 2}, FALSE, WAIT_OBJECT_0 + 1, {1, 2}, "the first in order, and only that one"},
        {{2}, FALSE, WAIT_OBJECT_0 + 2, {}, "it resets itself"},
        {{0, 2}, TRUE, WAIT_TIMEOUT, {0, 2}, "one is missing, and nothing is taken"},
        {{0, 1, 2}, TRUE, WAIT_OBJECT_0, {0, 1}, "all are taken"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine;
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

TEST(Waiting, WrongHandlesAndCounts) {
    Machine machine;
    HANDLE handles[] = {CreateEventW(nullptr, TRUE, TRUE, nullptr), nullptr};
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE twice[] = {handles[0], handles[0]};
    const std::pair<std::function<DWORD()>, DWORD> cases[] = {
        {[&] { return WaitForSingleObject(nullptr, 0); }, ERROR_INVALID_HANDLE},
        {[&] { return WaitForMultipleObjects(2, handles, FALSE, 0); }, ERROR_INVALID_HANDLE},
        {[&] { return WaitForMultipleObjects(0, handles, FALSE, 0); }, ERROR_INVALID_PARAMETER},
        {[&] { return WaitForMultipleObjects(65, handles, FALSE, 0); }, ERROR_INVALID_PARAMETER},
        {[&] { return WaitForMultipleObjects(2, twice, TRUE, 0); }, ERROR_INVALID_PARAMETER},
        {[&] { return SetEvent(mutex) ? 0 : WAIT_FAILED; }, ERROR_INVALID_HANDLE},
        {[&] { return ReleaseMutex(handles[0]) ? 0 : WAIT_FAILED; }, ERROR_INVALID_HANDLE},
        {[&] { return ReleaseMutex(mutex) ? 0 : WAIT_FAILED; }, ERROR_NOT_OWNER},
    };
    for (const auto& [call, error] : cases) {
        SetLastError(0);
        EXPECT_EQ(call(), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), error);
    }
    EXPECT_TRUE(CloseHandle(handles[0]));
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(Waiting, AMutexIsItsOwnersUntilTheLastRelease) {
    for (const std::uint64_t seed : Seeds(4)) {
        SCOPED_TRACE(seed);
        Machine machine(seed);
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
        std::vector<DWORD> results;
        std::function<void()> work = [&] {
            results.push_back(WaitForSingleObject(mutex, 100));
            results.push_back(WaitForSingleObject(mutex, INFINITE));
            ReleaseMutex(mutex);
        };
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
        const HANDLE thread = Start(work);
        Sleep(50);
        EXPECT_TRUE(ReleaseMutex(mutex));
        Sleep(450);
        EXPECT_EQ(results, std::vector<DWORD>{WAIT_TIMEOUT});
        EXPECT_TRUE(ReleaseMutex(mutex));
        Join(thread);
        EXPECT_EQ(results, (std::vector<DWORD>{WAIT_TIMEOUT, WAIT_OBJECT_0}));
        EXPECT_TRUE(CloseHandle(mutex));
    }
}

TEST(Waiting, AnOwnerThatEndsAbandonsItsMutex) {
    Machine machine;
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::function<void()> work = [&] {
        WaitForSingleObject(mutex, INFINITE);
        WaitForSingleObject(mutex, INFINITE);
        Sleep(10);
    };
    const HANDLE thread = Start(work);
    Sleep(5);
    const HANDLE handles[] = {event, mutex};
    EXPECT_EQ(WaitForMultipleObjects(2, handles, FALSE, INFINITE), WAIT_ABANDONED_0 + 1);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);  // only the next owner hears of it
    EXPECT_TRUE(ReleaseMutex(mutex));
    Join(thread);
    EXPECT_TRUE(CloseHandle(mutex));
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Waiting, AMutexThatIsNeverReleasedIsALeak) {
    std::string leak;
    {
        Machine machine;
        machine.onLeak = [&](const platform::Ledger::Entry& entry) { leak += entry.kind; };
        CloseHandle(CreateMutexW(nullptr, TRUE, nullptr));
    }
    EXPECT_EQ(leak, "mutex ownership");
}

}  // namespace
