#pragma once
// The rows of the Information tab and the thread that keeps them up to date while the tab is
// active. All operations are the sheet's thread's. The thread reaches the tab through posted
// messages alone, so nothing that the sheet's thread does or waits for can hold it up.

#include "AutoClasses.h"
#include "InformationRows.h"
#include "StoppableWorker.h"

// What the thread posts to the tab's window. New rows are there to be copied:
inline constexpr UINT kRowsChanged = WM_APP + 1;
// A refresh has a failure to report. wParam: id of the message table, lParam: the system's error.
inline constexpr UINT kRefreshFailed = WM_APP + 2;

class InformationPoll final : private RefreshObserver {
  public:
    // The source's texts outlive this object and don't change while the thread runs.
    explicit InformationPoll(const InformationSource& source) : m_source(source) {}
    InformationPoll(const InformationPoll&) = delete;
    InformationPoll& operator=(const InformationPoll&) = delete;

    // Reads the rows on the calling thread. Only before the first Start.
    void Fill(RefreshObserver& observer);
    // Starts the thread unless it runs. Its first pass comes at once. False when the system can't
    // give what it takes.
    bool Start(HWND window);
    // Ends the thread, which may still finish the row at which it is.
    void Stop() { m_worker.Stop(); }
    bool Runs() const { return m_worker.Runs(); }
    // Copies the rows, all of one pass. False, with the last error set, when that can't be had.
    bool Copy(InformationRows& rows) const;

  private:
    void Poll();
    bool Publish(const InformationRows& rows);
    bool StopRequested() override;
    void Report(const UserFailure& failure) override;

    const InformationSource m_source;
    HWND m_window = nullptr;
    InformationRows m_rows = {};  // of the last whole pass; under the mutex once the thread runs
    bool m_isTold = true;         // of the rows; the thread's alone
    ScopedHandle m_rowsMutex;
    StoppableWorker m_worker;  // the last member, since the thread uses the others
};
