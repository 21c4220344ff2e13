#pragma once
// What the thread sanitizer is told. It can't see the baton change hands, or it would take every
// two steps of the machine for ordered and find no race. It is told of the order that the system's
// own synchronisation gives: events, mutexes, ended threads, sent messages. Threads that start and
// are joined it sees itself. It is told to overlook what the stand-in does to its own state, which
// the baton guards; so the library must be compiled for the sanitizer, and the platform not.
// Without the sanitizer nothing happens.

namespace platform {

// What this thread did so far comes before whatever follows an acquire of the same thing.
void AnnounceRelease(const void* sync);
void AnnounceAcquire(const void* sync);

// From the one to the other the thread works for the stand-in. They nest.
void AnnounceEntry();
void AnnounceExit();

// The thread works for the stand-in while this lives.
class StandInScope {
  public:
    StandInScope() { AnnounceEntry(); }
    ~StandInScope() { AnnounceExit(); }
    StandInScope(const StandInScope&) = delete;
    StandInScope& operator=(const StandInScope&) = delete;
};

}  // namespace platform
