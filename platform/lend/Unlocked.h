#pragma once

namespace platform {

// Gives up the lock that the calling thread's Calls hold, and takes it again at its end.
class UnlockedScope {
  public:
    UnlockedScope();
    ~UnlockedScope();
    UnlockedScope(const UnlockedScope&) = delete;
    UnlockedScope& operator=(const UnlockedScope&) = delete;

  private:
    int m_depth;
};

}  // namespace platform
