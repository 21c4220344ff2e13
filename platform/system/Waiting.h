#pragma once
// Events, mutexes and threads as kernel objects, and what all functions that wait share.

#include <optional>
#include <vector>

#include <synchapi.h>

#include "Handles.h"
#include "Scheduler.h"

namespace platform {

class KernelEvent : public KernelObject {
  public:
    KernelEvent(bool manualReset, bool set) : m_manualReset(manualReset), m_set(set) {}
    bool Signalled(unsigned) const override { return m_set; }
    void Take(unsigned) override;
    void Set();
    void Reset() { m_set = false; }

  private:
    const bool m_manualReset;
    bool m_set;
};

// Owned by a thread, any number of times. A thread that ends as its owner leaves it abandoned.
class KernelMutex : public KernelObject, public std::enable_shared_from_this<KernelMutex> {
  public:
    bool Signalled(unsigned thread) const override { return !m_owner || *m_owner == thread; }
    void Take(unsigned thread) override;
    // False when the thread isn't the owner.
    bool Release(unsigned thread);
    bool IsAbandoned() const { return m_abandoned; }

    // Abandons all that the thread owns.
    static void AbandonAll(unsigned thread);

  private:
    std::optional<unsigned> m_owner;
    DWORD m_count = 0;
    bool m_abandoned = false;  // until the next owner has taken it
};

class KernelThread : public KernelObject {
  public:
    bool Signalled(unsigned) const override { return m_ended; }
    void Take(unsigned) override;
    void End();
    // STILL_ACTIVE until it has ended.
    DWORD ExitCode() const;

    DWORD exitCode = 0;  // set by the thread itself

  private:
    bool m_ended = false;
};

// The objects for which the calling thread waits, by their handles. None of them goes while they
// stand here.
class WaitSet {
  public:
    // Nothing, and the last error set, when a handle isn't open. count may be 0.
    static std::optional<WaitSet> Open(const HANDLE* handles, DWORD count);

    // Whether the wait would end; on any thread. all: only when all are signalled.
    bool Ready(bool all) const;
    // Takes what Ready found: the first signalled object, or all of them. WAIT_OBJECT_0 or
    // WAIT_ABANDONED_0 plus the object's index, which is 0 for all.
    DWORD Take(bool all);

  private:
    DWORD TakeOne(DWORD index);

    unsigned m_thread = 0;
    std::vector<std::shared_ptr<KernelObject>> m_objects;
};

// When a wait of so many milliseconds ends; nothing for INFINITE.
std::optional<Scheduler::Milliseconds> DueAfter(DWORD milliseconds);

}  // namespace platform
