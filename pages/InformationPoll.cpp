#include "InformationPoll.h"

#include <cstring>

namespace {

constexpr DWORD kPollInterval = 5000;  // milliseconds from the end of a pass to the next

struct MutexOwnershipTraits {
    using Handle = HANDLE;
    static constexpr Handle none = nullptr;
    static void Close(Handle mutex) {
        CheckClosed(ReleaseMutex(mutex) ? ERROR_SUCCESS : static_cast<LONG>(GetLastError()));
    }
};
using ScopedOwnership = Scoped<MutexOwnershipTraits>;

// Whether a wait gave the object at that place; a mutex also when its last owner ended with it.
bool Gave(DWORD wait, DWORD place) {
    return wait == WAIT_OBJECT_0 + place || wait == WAIT_ABANDONED_0 + place;
}

}  // namespace

void InformationPoll::Fill(RefreshObserver& observer) {
    RefreshRows(m_source, observer, m_rows);
}

bool InformationPoll::Start(HWND window) {
    if (m_thread) return true;
    if (!m_rowsMutex) m_rowsMutex.Reset(CreateMutexW(nullptr, FALSE, nullptr));
    m_stopEvent.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!m_rowsMutex || !m_stopEvent) return false;
    m_window = window;
    m_thread.Reset(CreateThread(nullptr, 0, Run, this, 0, nullptr));
    return Runs();
}

void InformationPoll::Stop() {
    if (!m_thread) return;
    SetEvent(m_stopEvent.Get());
    const HANDLE thread = m_thread.Get();
    DWORD wait = WAIT_FAILED;
    while ((wait = MsgWaitForMultipleObjectsEx(1, &thread, INFINITE, QS_SENDMESSAGE,
                                               MWMO_INPUTAVAILABLE)) == WAIT_OBJECT_0 + 1) {
        MSG message;  // looking for one answers what was sent
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    }
    if (wait != WAIT_OBJECT_0) WaitForSingleObject(thread, INFINITE);
    m_thread.Reset();
}

bool InformationPoll::Copy(InformationRows& rows) const {
    ScopedOwnership ownership;
    if (m_rowsMutex) {
        if (!Gave(WaitForSingleObject(m_rowsMutex.Get(), INFINITE), 0)) return false;
        ownership.Reset(m_rowsMutex.Get());
    }
    rows = m_rows;
    return true;
}

DWORD WINAPI InformationPoll::Run(LPVOID poll) {
    static_cast<InformationPoll*>(poll)->Poll();
    return 0;
}

void InformationPoll::Poll() {
    InformationRows rows = m_rows;  // nobody else writes them
    do {
        if (!RefreshRows(m_source, *this, rows)) return;
        if (Publish(rows)) m_isTold = false;
        if (!m_isTold) m_isTold = PostMessageW(m_window, kRowsChanged, 0, 0) != FALSE;
    } while (WaitForSingleObject(m_stopEvent.Get(), kPollInterval) == WAIT_TIMEOUT);
}

// Makes the rows of a pass those to be seen. True when they differ from what was to be seen before.
bool InformationPoll::Publish(const InformationRows& rows) {
    const HANDLE handles[] = {m_stopEvent.Get(), m_rowsMutex.Get()};
    if (!Gave(WaitForMultipleObjects(ARRAYSIZE(handles), handles, FALSE, INFINITE), 1))
        return false;
    const ScopedOwnership ownership(m_rowsMutex.Get());
    if (std::memcmp(&m_rows, &rows, sizeof(rows)) == 0) return false;
    m_rows = rows;
    return true;
}

bool InformationPoll::StopRequested() {
    return WaitForSingleObject(m_stopEvent.Get(), 0) == WAIT_OBJECT_0;
}

void InformationPoll::Report(UINT message, DWORD error) {
    PostMessageW(m_window, kRefreshFailed, message, static_cast<LPARAM>(error));
}
