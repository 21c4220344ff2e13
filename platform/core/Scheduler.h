#pragma once
// The machine's threads and its clock.
//
// Threads are real, but only the holder of the one baton runs. Every counted platform call may pass
// it on, by the machine's seed; a blocking call does. The clock moves only when all threads are
// blocked, to the next due time, never past what a wait with a time-out, a sleep or the user's
// waiting asked for. All threads blocked with nothing due is a deadlock: each thread's call is
// reported, and the machine ends.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <minwindef.h>

namespace platform {

class Scheduler {
  public:
    using Milliseconds = std::uint64_t;  // since the machine's start

    explicit Scheduler(std::uint64_t seed);
    ~Scheduler();  // NOLINT(bugprone-exception-escape)
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    // The number of the running thread; 0 is the one that made the machine.
    unsigned CurrentThread() const;

    // Starts a thread, which runs when it gets the baton. Gives its number. onEnd runs on the new
    // thread, as its last act with the baton. An exception that leaves body ends the machine.
    unsigned Start(std::function<void()> body, std::function<void()> onEnd);
    // Waits, in real terms, for all threads that have ended; none may still be blocked.
    void JoinAll();

    // A counted call's chance to pass the baton on.
    void PassOn();

    // Gives up the baton until ready() holds (asked with the baton held, by whichever thread runs)
    // or the clock reaches due. call: the stand-in function, for the report of a deadlock. False at
    // the time-out.
    bool BlockUntil(const char* call, const std::function<bool()>& ready,
                    std::optional<Milliseconds> due = std::nullopt);

    // The same for a message loop: UserTurn when all other threads are blocked and nothing is ready
    // (with a seed: at times also earlier), so that the user may do a deed, unless the user is
    // waiting. A loop whose user had nothing to do passes userAsked, and is then only given the
    // turn again after something else has happened.
    enum class Wake { Ready, TimedOut, UserTurn };
    Wake BlockIdle(const char* call, const std::function<bool()>& ready,
                   std::optional<Milliseconds> due, bool userAsked);

    Milliseconds Now() const;
    // Local time at which the clock starts, in 100 ns units since 1601 (FILETIME). Default: the
    // real local time.
    void SetStart(std::uint64_t localFileTime);
    std::uint64_t LocalFileTime() const;

    // Moves the clock by hand; due threads become ready.
    void Advance(Milliseconds duration);
    // The user lets the clock run: no UserTurn until that much time has passed and all is quiet.
    void UserWaits(Milliseconds duration);
    // Asks for a UserTurn when the clock gets there, also while the user is waiting.
    void UserWakesAt(Milliseconds due);

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace platform
