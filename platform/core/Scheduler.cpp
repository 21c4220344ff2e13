#include "Scheduler.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <thread>
#include <utility>
#include <vector>

#include "Announce.h"
#include "Gate.h"
#include "Machine.h"

namespace platform {
namespace {

using Milliseconds = Scheduler::Milliseconds;
using Wake = Scheduler::Wake;

constexpr DWORD kPossibleDeadlock = 1131;
constexpr DWORD kForeignException = 0xE06D7363;  // what C++ exceptions are to the system
// A machine whose user has nothing left to do, and that goes on for so long, won't stop by itself.
constexpr Milliseconds kPatience = Milliseconds{24} * 60 * 60 * 1000;
// Ended threads are joined when so many have come together.
constexpr std::size_t kManyEnded = 16;

struct Thread {
    enum class Is { Runnable, Blocked, Idle, Ended };

    unsigned number = 0;
    Gate gate;
    std::thread real;  // none for thread 0
    std::function<void()> body;
    std::function<void()> onEnd;

    Is is = Is::Runnable;
    // While it is blocked or idle:
    const char* call = "";
    const std::function<bool()>* ready = nullptr;
    std::optional<Milliseconds> due;
    bool userAsked = false;
    std::uint64_t askedAt = 0;    // the count of events then
    std::uint64_t idleSince = 0;  // a serial number: the higher, the later
    // What ended that.
    Wake wake = Wake::Ready;
    bool hadTurn = false;  // the last idling ended in a user's turn

    bool Waits() const { return is == Is::Blocked || is == Is::Idle; }
};

// The calling thread's record in the living machine.
thread_local Thread* t_self = nullptr;

// Seconds that local time is ahead of universal time.
std::int64_t LocalOffset(std::time_t now) {
    std::tm local{};
    localtime_r(&now, &local);
    return local.tm_gmtoff;
}

std::uint64_t RealLocalFileTime() {
    constexpr std::int64_t epoch = 11644473600;  // seconds from 1601 to 1970
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t seconds = now.tv_sec + LocalOffset(now.tv_sec) + epoch;
    return static_cast<std::uint64_t>(seconds * 10'000'000 + now.tv_nsec / 100);
}

// The same numbers from the same seed on every host (SplitMix64).
class Random {
  public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t Below(std::uint64_t bound) {
        m_state += 0x9E3779B97F4A7C15;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return (z ^ (z >> 31)) % bound;
    }

  private:
    std::uint64_t m_state;
};

}  // namespace

// All of it is used by the baton's holder only.
struct Scheduler::State {
    const bool seeded;
    Random random;
    std::uint64_t yieldRate;  // one call in so many passes the baton on

    std::vector<std::unique_ptr<Thread>> threads;  // thread 0 first
    unsigned nextNumber = 0;
    std::size_t living = 0;

    Milliseconds now = 0;
    std::uint64_t start = RealLocalFileTime();

    bool userWaits = false;
    Milliseconds userWaitsUntil = 0;
    std::vector<Milliseconds> userWakes;
    Milliseconds lastDeed = 0;   // when the user last did or asked for something
    std::uint64_t events = 0;    // what happened but for turns in which the user did nothing
    std::uint64_t idleings = 0;  // for Thread::idleSince

    std::optional<MachineEnded> end;
    bool joining = false;    // the user is gone
    bool abandoned = false;  // threads were left over when the machine went

    explicit State(std::uint64_t seed) : seeded(seed != 0), random(seed) {
        constexpr std::uint64_t rates[] = {2, 4, 8, 32};
        yieldRate = rates[random.Below(std::size(rates))];
        Add();
    }

    Thread& Add() {
        threads.push_back(std::make_unique<Thread>());
        threads.back()->number = nextNumber++;
        ++living;
        return *threads.back();
    }
    Thread& Main() { return *threads.front(); }
    Thread& Self() { return t_self != nullptr ? *t_self : Main(); }

    void EndWith(MachineEnded how);
    bool Runs(Thread& thread);
    std::vector<Thread*> Runnable(const Thread& after);
    Thread* UsersThread(bool quiet);
    bool MoveClock();
    MachineEnded Deadlock() const;
    Thread& Grant(Thread& idle);
    Thread& Resume(Thread& thread);
    Thread& Pick(const Thread& self);
    void Switch(Thread& self);
    bool Block(Thread& self);
    void Run(Thread& self);
    void RunBody(Thread& self);
    void JoinEnded();
};

void Scheduler::State::EndWith(MachineEnded how) {
    if (end) return;
    end = std::move(how);
    Machine* machine = Machine::CurrentOrNull();
    if (machine != nullptr && !machine->Ended()) machine->End(end->reason);
}

// Whether the thread can go on; notes why.
bool Scheduler::State::Runs(Thread& thread) {
    if (!thread.Waits()) return thread.is == Thread::Is::Runnable;
    if ((*thread.ready)()) {
        thread.wake = Wake::Ready;
        return true;
    }
    thread.wake = Wake::TimedOut;
    return thread.due && *thread.due <= now;
}

// The threads that can go on, in turn: those after the given one first, itself last.
std::vector<Thread*> Scheduler::State::Runnable(const Thread& after) {
    std::vector<Thread*> before;
    std::vector<Thread*> found;
    for (const auto& thread : threads) {
        if (Runs(*thread)) (thread->number > after.number ? found : before).push_back(thread.get());
    }
    found.insert(found.end(), before.begin(), before.end());
    return found;
}

// The thread whose loop may ask the user now: the innermost, which is the one that idles last.
// quiet: no thread can go on by itself.
Thread* Scheduler::State::UsersThread(bool quiet) {
    if (joining) return nullptr;
    const bool woken = std::any_of(userWakes.begin(), userWakes.end(),
                                   [&](Milliseconds due) { return due <= now; });
    const bool waited = userWaits && quiet && now >= userWaitsUntil;
    if (userWaits && !waited && !woken) return nullptr;
    Thread* innermost = nullptr;
    for (const auto& thread : threads) {
        if (thread->is != Thread::Is::Idle) continue;
        if (thread->userAsked && thread->askedAt == events && !woken && !waited) continue;
        if (!innermost || thread->idleSince > innermost->idleSince) innermost = thread.get();
    }
    return innermost;
}

Thread& Scheduler::State::Grant(Thread& idle) {
    const auto wake = std::find_if(userWakes.begin(), userWakes.end(),
                                   [&](Milliseconds due) { return due <= now; });
    if (wake != userWakes.end())
        userWakes.erase(wake);
    else
        userWaits = false;
    idle.is = Thread::Is::Runnable;
    idle.wake = Wake::UserTurn;
    idle.hadTurn = true;
    return idle;
}

Thread& Scheduler::State::Resume(Thread& thread) {
    thread.is = Thread::Is::Runnable;
    ++events;
    return thread;
}

// To the next time at which anything is due. False when nothing is, or when only the threads'
// own time-outs go on and on after the user has done everything.
bool Scheduler::State::MoveClock() {
    std::optional<Milliseconds> next;
    const auto consider = [&](Milliseconds due) {
        if (due > now && (!next || due < *next)) next = due;
    };
    bool userIsDone = false;
    for (const auto& thread : threads) {
        if (thread->Waits() && thread->due) consider(*thread->due);
        userIsDone = userIsDone || (thread->is == Thread::Is::Idle && thread->userAsked);
    }
    if (userWaits) consider(userWaitsUntil);
    for (const Milliseconds due : userWakes)
        consider(due);
    if (!next || (userIsDone && *next > lastDeed + kPatience)) return false;
    now = *next;
    ++events;
    return true;
}

MachineEnded Scheduler::State::Deadlock() const {
    const bool goesOn = std::any_of(threads.begin(), threads.end(), [](const auto& thread) {
        return thread->Waits() && thread->due;
    });
    std::string reason = goesOn ? "the user is done, and it goes on:" : "deadlock:";
    const char* separator = " ";
    for (const auto& thread : threads) {
        if (!thread->Waits()) continue;
        reason += separator + ("thread " + std::to_string(thread->number)) + " in " + thread->call;
        separator = ", ";
    }
    return {kPossibleDeadlock, reason};
}

// The next holder. self: the holder so far.
Thread& Scheduler::State::Pick(const Thread& self) {
    while (!end) {
        std::vector<Thread*> runnable = Runnable(self);
        if (seeded && !runnable.empty()) {
            Thread* early = random.Below(8) == 0 ? UsersThread(false) : nullptr;
            return early ? Grant(*early) : Resume(*runnable[random.Below(runnable.size())]);
        }
        if (!runnable.empty()) return Resume(*runnable.front());
        if (Thread* idle = UsersThread(true)) return Grant(*idle);
        if (!MoveClock()) EndWith(Deadlock());
    }
    // The machine has ended: the other threads are unwound before the first one.
    for (const auto& thread : threads) {
        if (thread->number != 0 && thread->is != Thread::Is::Ended) return *thread;
    }
    return Main();
}

// Hands the baton on. Comes back with it, unless the thread has ended.
void Scheduler::State::Switch(Thread& self) {
    const bool comesBack = self.is != Thread::Is::Ended;
    Thread& next = Pick(self);
    if (&next == &self) return;
    next.gate.Open();
    if (comesBack) self.gate.Pass();
}

// Waits as the thread's record says. True when the wait ended in its wake, false when the machine
// has ended and the thread is already being unwound. A machine's end throws; but thread 0 may still
// wait for what has come to pass, such as the end of a thread, unless it takes part in the
// deadlock.
bool Scheduler::State::Block(Thread& self) {
    const bool endedBefore = end.has_value();
    if (!endedBefore) Switch(self);
    self.is = Thread::Is::Runnable;
    if (!end) return true;
    const bool inDeadlock = !endedBefore && end->code == kPossibleDeadlock;
    if (self.number == 0 && !inDeadlock && (*self.ready)()) {
        self.wake = Wake::Ready;
        return true;
    }
    if (std::uncaught_exceptions() > 0) return false;
    throw MachineEnded(*end);
}

// The part of a thread that isn't the stand-in's.
void Scheduler::State::RunBody(Thread& self) {
    const std::string name = "thread " + std::to_string(self.number);
    try {
        if (!end) self.body();
    } catch (const MachineEnded& how) {
        EndWith(how);
    } catch (const std::exception& exception) {
        EndWith({kForeignException, "an exception left " + name + ": " + exception.what()});
    } catch (...) {
        EndWith({kForeignException, "an exception left " + name});
    }
}

void Scheduler::State::Run(Thread& self) {
    t_self = &self;
    self.gate.Pass();
    RunBody(self);
    const StandInScope scope;
    if (!abandoned) self.onEnd();
    self.body = nullptr;
    self.onEnd = nullptr;
    self.is = Thread::Is::Ended;
    --living;
    Switch(self);
}

void Scheduler::State::JoinEnded() {
    std::erase_if(threads, [](const std::unique_ptr<Thread>& thread) {
        if (thread->is != Thread::Is::Ended) return false;
        thread->real.join();
        return true;
    });
}

Scheduler::Scheduler(std::uint64_t seed) : m_state(std::make_unique<State>(seed)) {
    t_self = &m_state->Main();
}

// Joining can only throw for a thread that isn't joinable, which would be a fault of ours.
Scheduler::~Scheduler() {  // NOLINT(bugprone-exception-escape)
    JoinAll();
    t_self = nullptr;
}

unsigned Scheduler::CurrentThread() const {
    return m_state->Self().number;
}

unsigned Scheduler::Start(std::function<void()> body, std::function<void()> onEnd) {
    State& state = *m_state;
    if (state.threads.size() - state.living >= kManyEnded) state.JoinEnded();
    Thread& thread = state.Add();
    thread.body = std::move(body);
    thread.onEnd = std::move(onEnd);
    thread.real = std::thread([&state, &thread] { state.Run(thread); });
    return thread.number;
}

void Scheduler::JoinAll() {
    State& state = *m_state;
    Thread& self = state.Main();
    const auto othersStand = [&] {
        return std::none_of(state.threads.begin() + 1, state.threads.end(),
                            [&](const auto& thread) { return state.Runs(*thread); });
    };
    state.joining = true;
    if (!state.end) BlockUntil("the machine's end", othersStand);

    if (state.living > 1) {
        const Machine* machine = Machine::CurrentOrNull();
        if (!state.end && (machine == nullptr || !machine->Ended())) {
            state.abandoned = true;
            for (const auto& thread : state.threads) {
                if (thread->Waits())
                    std::fprintf(stderr, "thread %u is left at the machine's end, in %s\n",
                                 thread->number, thread->call);
            }
        }
        if (!state.end) state.end = MachineEnded{0, "the machine is gone"};
        state.Switch(self);
    }
    state.JoinEnded();
    state.joining = false;
}

void Scheduler::PassOn() {
    State& state = *m_state;
    if (!state.seeded || state.end || state.living == 1) return;
    if (state.random.Below(state.yieldRate) == 0) state.Switch(state.Self());
}

bool Scheduler::BlockUntil(const char* call, const std::function<bool()>& ready,
                           std::optional<Milliseconds> due) {
    State& state = *m_state;
    if (!state.seeded && ready()) return true;
    Thread& self = state.Self();
    self.is = Thread::Is::Blocked;
    self.call = call;
    self.ready = &ready;
    self.due = due;
    return state.Block(self) && self.wake == Wake::Ready;
}

Scheduler::Wake Scheduler::BlockIdle(const char* call, const std::function<bool()>& ready,
                                     std::optional<Milliseconds> due, bool userAsked) {
    State& state = *m_state;
    Thread& self = state.Self();
    if (std::exchange(self.hadTurn, false) && !userAsked) {
        ++state.events;
        state.lastDeed = std::max(state.lastDeed, state.now);
    }
    if (!state.seeded && ready()) return Wake::Ready;
    self.is = Thread::Is::Idle;
    self.call = call;
    self.ready = &ready;
    self.due = due;
    self.userAsked = userAsked;
    self.askedAt = state.events;
    self.idleSince = ++state.idleings;
    return state.Block(self) ? self.wake : Wake::TimedOut;
}

Scheduler::Milliseconds Scheduler::Now() const {
    return m_state->now;
}

void Scheduler::SetStart(std::uint64_t localFileTime) {
    m_state->start = localFileTime;
}

std::uint64_t Scheduler::LocalFileTime() const {
    return m_state->start + m_state->now * 10'000;
}

void Scheduler::Advance(Milliseconds duration) {
    m_state->now += duration;
    ++m_state->events;
}

void Scheduler::UserWaits(Milliseconds duration) {
    m_state->userWaits = true;
    m_state->userWaitsUntil = m_state->now + duration;
    m_state->lastDeed = m_state->userWaitsUntil;
}

void Scheduler::UserWakesAt(Milliseconds due) {
    m_state->userWakes.push_back(due);
    m_state->lastDeed = std::max(m_state->lastDeed, due);
}

}  // namespace platform
