#pragma once
// A page's thread that is asked to stop and waited for. It reaches the page through posted messages
// alone: it sends to no window, so nothing that the window's thread does can hold it up, and what
// it posts may come after it has ended. Waits for a mutex end with its stop as well.

#include <windows.h>

#include "AutoClasses.h"

class StoppableWorker {
  public:
    // What the thread does, until it notices that it is to stop.
    using Body = void (*)(void* owner);

    StoppableWorker() = default;
    StoppableWorker(const StoppableWorker&) = delete;
    StoppableWorker& operator=(const StoppableWorker&) = delete;
    ~StoppableWorker() { Stop(); }

    // For the window's thread. Starts the thread unless it runs; `owner` outlives it. False when
    // the system can't give what it takes.
    bool Start(Body body, void* owner);
    // Asks the thread to stop and waits for its end. Meanwhile the calling thread answers messages
    // that other threads send to its windows.
    void Stop();
    bool Runs() const { return static_cast<bool>(m_thread); }

    // For the worker's own thread.
    bool StopRequested() const;
    // Waits at most so many milliseconds. True when the thread is to stop, also when it can't wait.
    bool WaitForStop(DWORD milliseconds) const;
    // Waits for a mutex. None when the thread is to stop, or the wait fails.
    ScopedMutexOwnership Acquire(HANDLE mutex) const;

  private:
    static DWORD WINAPI Run(LPVOID worker);

    Body m_body = nullptr;
    void* m_owner = nullptr;
    ScopedHandle m_stopEvent;
    ScopedHandle m_thread;
};

// Waits for a mutex without a limit, on any thread. None, with the last error set, when that fails.
ScopedMutexOwnership AcquireMutex(HANDLE mutex);
