#pragma once
// The link status of the VLANs, and the thread that keeps it up to date while the tab is active.

#include <windows.h>

#include "AutoClasses.h"
#include "StoppableWorker.h"
#include "UserFailure.h"
#include "VlanList.h"

struct VlanRefresh {
    bool changed = false;  // some VLAN has another status than before
    UserFailure failure;   // the list stays as it was
};

// Asks the system once, or not at all for an empty list. Any thread, which owns the list meanwhile.
VlanRefresh RefreshVlanStatus(const VlanList& vlans);

// What the thread posts to the tab's window. The list has changed and can be read:
inline constexpr UINT kVlanStatusChanged = WM_APP + 1;
// A pass has a failure to report. wParam: id of the message table, lParam: the system's error.
inline constexpr UINT kVlanRefreshFailed = WM_APP + 2;

// The thread owns the list by a mutex for each of its passes, in which it touches no window. All
// operations are the sheet's thread's.
class VlanStatusPoll {
  public:
    // The list outlives this object.
    explicit VlanStatusPoll(const VlanList& vlans) : m_vlans(vlans) {}
    VlanStatusPoll(const VlanStatusPoll&) = delete;
    VlanStatusPoll& operator=(const VlanStatusPoll&) = delete;

    // Makes the mutex. False when the system can't.
    bool Create();
    // Starts the thread unless it runs. Its first pass comes at once. False when the system can't
    // give what it takes. Only after Create.
    bool Start(HWND window);
    // Ends the thread, behind the pass at which it is.
    void Stop() { m_worker.Stop(); }
    bool Runs() const { return m_worker.Runs(); }
    // Waits for the list, which no pass touches then. None, with the last error set, when the wait
    // fails.
    ScopedMutexOwnership AcquireList() const { return AcquireMutex(m_mutex.Get()); }

  private:
    void Poll();

    const VlanList& m_vlans;
    HWND m_window = nullptr;
    bool m_isTold = true;  // the page, of what has changed; the thread's alone while that runs
    ScopedHandle m_mutex;
    StoppableWorker m_worker;  // the last member, since the thread uses the others
};
