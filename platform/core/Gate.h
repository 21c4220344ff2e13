#pragma once
// Where a thread waits for the baton. Made of an atomic and the kernel's futex alone, which the
// thread sanitizer doesn't watch; a mutex or a condition variable it would take for an order that
// the library's threads don't have. For this the platform must be compiled without the sanitizer.

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <atomic>

namespace platform {

class Gate {
  public:
    // Lets the thread pass that waits here, or the next one.
    void Open() {
        m_open.store(1, std::memory_order_release);
        syscall(SYS_futex, Word(), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }
    // Waits until it is open, and closes it again.
    void Pass() {
        while (m_open.exchange(0, std::memory_order_acquire) == 0)
            syscall(SYS_futex, Word(), FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
    }

  private:
    int* Word() { return reinterpret_cast<int*>(&m_open); }

    std::atomic<int> m_open{0};
    static_assert(sizeof(std::atomic<int>) == sizeof(int) && std::atomic<int>::is_always_lock_free);
};

}  // namespace platform
