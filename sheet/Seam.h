#pragma once
// The few things that differ between the builds: on the host the machine is one that was loaded
// from a file and has a clock of its own, on Windows it is the computer.

#include <cstdint>
#include <string>

#include <windows.h>

namespace sheet {

// Stands around a call into the library.
class LibraryCall {
  public:
    LibraryCall();
    ~LibraryCall();
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

  private:
    void* m_scope;
};

// A library was loaded for its page provider, and none of its functions was called yet.
void LibraryLoaded(HMODULE library);

// A sheet with tabs has been shown.
void SheetShown();

// Milliseconds that the machine has run.
std::uint64_t MachineTime();
// The user does nothing until that much time has passed and all is quiet.
void LetTimePass(std::uint64_t milliseconds);
// The user is asked for a deed at that time, also while time is passing.
void WakeAt(std::uint64_t time);
// Whether a message box that a command needs may still come up, after so many looks for it. On the
// host there is nothing to wait for: the user is asked when all is quiet.
bool MayBoxComeYet(int looks);

// Imports a machine file into the running machine. Refusal: "FILE:LINE: what is wrong"; a Windows
// only tells when its import fails as a whole.
void MergeFile(const std::string& path);

// Keeps the registry as it is, for a later comparison. Called once, when a session begins.
void RememberRegistry();
// Which way changes lead: to the registry as it is, or back to what it was.
enum class Changes { Made, Undone };
// The text of a machine file that takes the registry there when it is merged. What the machine
// counts of restarts is left out. Refusal: it can't be told, or not be written in such a file.
std::string RegistryChanges(Changes changes);

// What the library has written to its standard output and error so far, in UTF-8.
std::string LibraryOutput();

}  // namespace sheet
