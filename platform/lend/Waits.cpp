// The library's threads and what they wait for. While the program that lends holds the clock, time
// passes only when every thread waits, and then up to the next time that a wait ends, as in the
// stand-in itself: what a script sees doesn't depend on the speed of the computer.
//
// A thread waits here by looking at its objects again and again, with the lock held, so that a wait
// never ends unnoticed between two looks.

#include "Waits.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>

#include <windows.h>

#include "Call.h"
#include "Clock.h"
#include "Unlocked.h"

using platform::Call;
using platform::Clock;

namespace {

constexpr std::chrono::milliseconds kLookEvery(2);

struct LibraryThread {
    HANDLE thread = nullptr;  // a duplicate, closed when the thread has ended
    bool waits = false;
    std::uint64_t round = 0;  // in which it last looked
    std::optional<ULONGLONG> due;
};

struct Waits {
    std::mutex lock;
    std::condition_variable asked;
    std::condition_variable answered;
    std::list<LibraryThread> threads;
    std::uint64_t round = 0;
    std::uint64_t ended = 0;  // waits
    DWORD holder = 0;         // the thread that holds the clock, or 0
};

// It lives as long as the process, as the machine does.
Waits& TheWaits() {
    static Waits& waits = *new Waits;
    return waits;
}

thread_local LibraryThread* t_self = nullptr;

ULONGLONG Now() {
    const Call call("GetTickCount");
    return call.machine.Get<Clock>().now;
}

bool IsOver(const std::optional<ULONGLONG>& due) {
    return due && Now() >= *due;
}

bool HasEnded(const LibraryThread& thread) {
    if (thread.waits || WaitForSingleObject(thread.thread, 0) != WAIT_OBJECT_0) return false;
    CloseHandle(thread.thread);
    return true;
}

// Every thread of the library has looked in this call at what it waits for, and none goes on.
bool AllWait() {
    Waits& waits = TheWaits();
    std::unique_lock lock(waits.lock);
    std::erase_if(waits.threads, HasEnded);
    const std::uint64_t ended = waits.ended;
    const std::uint64_t round = ++waits.round;
    const auto goesOn = [&waits, ended] {
        const auto isBusy = [](const LibraryThread& thread) { return !thread.waits; };
        return waits.ended != ended || std::ranges::any_of(waits.threads, isBusy);
    };
    const auto hasLooked = [round](const LibraryThread& thread) { return thread.round == round; };
    waits.asked.notify_all();
    waits.answered.wait(lock,
                        [&] { return goesOn() || std::ranges::all_of(waits.threads, hasLooked); });
    return !goesOn();
}

// To the next time that a wait of the library ends, or to the given one. False when there is none.
bool MoveTo(std::optional<ULONGLONG> due) {
    {
        Waits& waits = TheWaits();
        const std::lock_guard lock(waits.lock);
        for (const LibraryThread& thread : waits.threads) {
            if (thread.due) due = std::min(due.value_or(*thread.due), *thread.due);
        }
    }
    if (!due) return false;
    const Call call("GetTickCount");
    Clock& clock = call.machine.Get<Clock>();
    clock.now = std::max(clock.now, *due);
    return true;
}

// look: waits for so long in the system.
template <class Look>
DWORD WaitAsThread(const std::optional<ULONGLONG>& due, const Look& look) {
    Waits& waits = TheWaits();
    std::unique_lock lock(waits.lock);
    DWORD result = WAIT_TIMEOUT;
    while ((result = look(0)) == WAIT_TIMEOUT && !IsOver(due)) {
        t_self->waits = true;
        t_self->due = due;
        t_self->round = waits.round;
        waits.answered.notify_all();
        waits.asked.wait_for(lock, kLookEvery);
    }
    if (t_self->waits) ++waits.ended;
    t_self->waits = false;
    t_self->due.reset();
    waits.answered.notify_all();
    return result;
}

// Nobody else moves the clock while its holder waits.
template <class Look>
DWORD WaitAsHolder(const std::optional<ULONGLONG>& due, const Look& look) {
    for (;;) {
        const bool allWait = AllWait();
        const DWORD result = look(0);
        if (result != WAIT_TIMEOUT || IsOver(due)) return result;
        if (!allWait || !MoveTo(due)) Sleep(1);
    }
}

template <class Look>
DWORD Wait(DWORD milliseconds, const Look& look) {
    const DWORD holder = TheWaits().holder;
    const bool isHolder = holder == GetCurrentThreadId();
    if (milliseconds == 0 || holder == 0 || (!isHolder && t_self == nullptr))
        return look(milliseconds);
    std::optional<ULONGLONG> due;
    if (milliseconds != INFINITE) due = Now() + milliseconds;
    return isHolder ? WaitAsHolder(due, look) : WaitAsThread(due, look);
}

// Asks again and again for so long in the system.
DWORD Ask(const std::function<bool()>& isOver, DWORD milliseconds) {
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        {
            const platform::QuietScope quiet;
            if (isOver()) return WAIT_OBJECT_0;
        }
        if (milliseconds != INFINITE && GetTickCount64() - start >= milliseconds)
            return WAIT_TIMEOUT;
        Sleep(static_cast<DWORD>(kLookEvery.count()));
    }
}

struct Start {
    LPTHREAD_START_ROUTINE routine;
    LPVOID parameter;
    LibraryThread* self;
};

DWORD WINAPI RunThread(LPVOID start) {
    const Start begun = *std::unique_ptr<Start>(static_cast<Start*>(start));
    t_self = begun.self;
    return begun.routine(begun.parameter);
}

}  // namespace

bool platform::WaitUntil(const std::function<bool()>& isOver, DWORD milliseconds) {
    const UnlockedScope unlocked;
    return Wait(milliseconds, [&isOver](DWORD time) { return Ask(isOver, time); }) == WAIT_OBJECT_0;
}

extern "C" HANDLE WINAPI LentCreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stack,
                                          LPTHREAD_START_ROUTINE routine, LPVOID parameter,
                                          DWORD flags, LPDWORD id) {
    Waits& waits = TheWaits();
    if (waits.holder == 0) return CreateThread(attributes, stack, routine, parameter, flags, id);
    const std::lock_guard lock(waits.lock);
    auto start = std::make_unique<Start>(Start{routine, parameter, &waits.threads.emplace_back()});
    const HANDLE thread =
        CreateThread(attributes, stack, RunThread, start.get(), flags | CREATE_SUSPENDED, id);
    if (thread == nullptr) {
        waits.threads.pop_back();
        return nullptr;
    }
    // Without its handle the thread counts as busy for ever.
    DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &start->self->thread,
                    SYNCHRONIZE, FALSE, 0);
    start.release();
    if ((flags & CREATE_SUSPENDED) == 0) ResumeThread(thread);
    return thread;
}

extern "C" DWORD WINAPI LentWaitForSingleObject(HANDLE object, DWORD milliseconds) {
    return Wait(milliseconds, [=](DWORD time) { return WaitForSingleObject(object, time); });
}

extern "C" DWORD WINAPI LentWaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL all,
                                                   DWORD milliseconds) {
    return Wait(milliseconds,
                [=](DWORD time) { return WaitForMultipleObjects(count, objects, all, time); });
}

extern "C" DWORD WINAPI LentMsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* objects,
                                                        DWORD milliseconds, DWORD wake,
                                                        DWORD flags) {
    return Wait(milliseconds, [=](DWORD time) {
        return MsgWaitForMultipleObjectsEx(count, objects, time, wake, flags);
    });
}

extern "C" void WINAPI LentSleep(DWORD milliseconds) {
    Wait(milliseconds, [](DWORD time) {
        if (time != 0) Sleep(time);
        return DWORD{WAIT_TIMEOUT};
    });
}

// The calling thread, which is the sheet's, holds the clock from now on.
extern "C" void WINAPI HoldClock() {
    const Call call("GetTickCount");
    call.machine.Get<Clock>().Look();
    call.machine.Get<Clock>().isHeld = true;
    TheWaits().holder = GetCurrentThreadId();
}

extern "C" ULONGLONG WINAPI ClockTime() {
    const Call call("GetTickCount");
    Clock& clock = call.machine.Get<Clock>();
    return clock.Look() - clock.start;
}

extern "C" BOOL WINAPI AllThreadsWait() {
    return AllWait();
}

// Moves the clock, when all threads wait, up to a ClockTime: less far when a wait ends before.
extern "C" void WINAPI MoveClock(ULONGLONG time) {
    ULONGLONG start = 0;
    {
        const Call call("GetTickCount");
        start = call.machine.Get<Clock>().start;
    }
    MoveTo(start + time);
}
