#include "InformationPoll.h"

#include <cstring>

namespace {

constexpr DWORD kPollInterval = 5000;  // milliseconds from the end of a pass to the next

}  // namespace

void InformationPoll::Fill(RefreshObserver& observer) {
    RefreshRows(m_source, observer, m_rows);
}

bool InformationPoll::Start(HWND window) {
    if (Runs()) return true;
    if (!m_rowsMutex) m_rowsMutex.Reset(CreateMutexW(nullptr, FALSE, nullptr));
    if (!m_rowsMutex) return false;
    m_window = window;
    return m_worker.Start([](void* poll) { static_cast<InformationPoll*>(poll)->Poll(); }, this);
}

bool InformationPoll::Copy(InformationRows& rows) const {
    ScopedMutexOwnership ownership;
    if (m_rowsMutex) {
        ownership = AcquireMutex(m_rowsMutex.Get());
        if (!ownership) return false;
    }
    rows = m_rows;
    return true;
}

void InformationPoll::Poll() {
    InformationRows rows = m_rows;  // nobody else writes them
    do {
        if (!RefreshRows(m_source, *this, rows)) return;
        if (Publish(rows)) m_isTold = false;
        if (!m_isTold) m_isTold = PostMessageW(m_window, kRowsChanged, 0, 0) != FALSE;
    } while (!m_worker.WaitForStop(kPollInterval));
}

// Makes the rows of a pass those to be seen. True when they differ from what was to be seen before.
bool InformationPoll::Publish(const InformationRows& rows) {
    const ScopedMutexOwnership ownership = m_worker.Acquire(m_rowsMutex.Get());
    if (!ownership || std::memcmp(&m_rows, &rows, sizeof(rows)) == 0) return false;
    m_rows = rows;
    return true;
}

bool InformationPoll::StopRequested() {
    return m_worker.StopRequested();
}

void InformationPoll::Report(const UserFailure& failure) {
    PostMessageW(m_window, kRefreshFailed, failure.message, static_cast<LPARAM>(failure.error));
}
