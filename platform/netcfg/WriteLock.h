#pragma once
// The engine's write lock. It belongs to one of this process's sessions, or to another program, as
// the fact key NetCfg says:
//   LockedBy, LockedFor   held from the machine's start, for so many milliseconds or for good
//   TakenFor, TakenAt     taken whenever a session gives the lock up, or only the n-th time
// Who holds it isn't saved: the lock ends with the process.

#include <cstdint>
#include <optional>
#include <string>

#include <windows.h>

#include "Machine.h"

namespace platform {

class WriteLock : public Part {
  public:
    using Client = const void*;

    // Waits for the lock for up to `timeout` milliseconds. Gives nothing when the client has it
    // now, else the name of its holder. call: the method that waits. name: shown to others.
    std::optional<std::basic_string<WCHAR>> Acquire(const char* call, Client client,
                                                    const std::basic_string<WCHAR>& name,
                                                    DWORD timeout);
    // Without effect for a client that doesn't have the lock.
    void Release(Client client);
    bool IsHeldBy(Client client) const { return client == m_owner; }
    void OnExit() override { m_owner = nullptr; }

  private:
    // The name of the holder that keeps the client from the lock, or nothing.
    std::optional<std::basic_string<WCHAR>> HolderAgainst(Client client) const;
    bool IsWithOtherProgram() const;
    // When the other program gives it up; nothing when it doesn't, or hasn't got it.
    std::optional<std::uint64_t> OtherProgramEnds() const;

    Client m_owner = nullptr;
    std::basic_string<WCHAR> m_ownerName;
    std::uint64_t m_takenUntil = 0;
    DWORD m_releases = 0;
};

}  // namespace platform
