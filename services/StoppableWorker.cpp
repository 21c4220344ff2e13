#include "StoppableWorker.h"

namespace {

// Whether a wait gave the mutex at that place, also when its last owner ended with it.
bool Gave(DWORD wait, DWORD place) {
    return wait == WAIT_OBJECT_0 + place || wait == WAIT_ABANDONED_0 + place;
}

}  // namespace

bool StoppableWorker::Start(Body body, void* owner) {
    if (m_thread) return true;
    m_stopEvent.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!m_stopEvent) return false;
    m_body = body;
    m_owner = owner;
    m_thread.Reset(CreateThread(nullptr, 0, Run, this, 0, nullptr));
    return Runs();
}

void StoppableWorker::Stop() {
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

bool StoppableWorker::StopRequested() const {
    return WaitForSingleObject(m_stopEvent.Get(), 0) == WAIT_OBJECT_0;
}

bool StoppableWorker::WaitForStop(DWORD milliseconds) const {
    return WaitForSingleObject(m_stopEvent.Get(), milliseconds) != WAIT_TIMEOUT;
}

ScopedMutexOwnership StoppableWorker::Acquire(HANDLE mutex) const {
    const HANDLE handles[] = {m_stopEvent.Get(), mutex};
    const bool gave = Gave(WaitForMultipleObjects(ARRAYSIZE(handles), handles, FALSE, INFINITE), 1);
    return ScopedMutexOwnership(gave ? mutex : nullptr);
}

DWORD WINAPI StoppableWorker::Run(LPVOID worker) {
    const auto* self = static_cast<StoppableWorker*>(worker);
    self->m_body(self->m_owner);
    return 0;
}

ScopedMutexOwnership AcquireMutex(HANDLE mutex) {
    const bool gave = Gave(WaitForSingleObject(mutex, INFINITE), 0);
    return ScopedMutexOwnership(gave ? mutex : nullptr);
}
