#include "Waiting.h"

#include <algorithm>

#include <minwinbase.h>
#include <winerror.h>

#include "Announce.h"
#include "Call.h"

namespace platform {
namespace {

constexpr const char* kOwnership = "mutex ownership";

struct OwnedMutexes : Part {
    std::vector<std::weak_ptr<KernelMutex>> mutexes;
};

}  // namespace

void KernelEvent::Take(unsigned) {
    AnnounceAcquire(this);
    m_set = m_set && m_manualReset;
}

void KernelEvent::Set() {
    AnnounceRelease(this);
    m_set = true;
}

void KernelMutex::Take(unsigned thread) {
    if (m_count++ > 0) return;
    AnnounceAcquire(this);
    m_owner = thread;
    m_abandoned = false;
    Machine& machine = Machine::Current();
    machine.Get<OwnedMutexes>().mutexes.push_back(weak_from_this());
    machine.ledger.Enter(kOwnership, this, "a wait");
}

bool KernelMutex::Release(unsigned thread) {
    if (m_owner != thread) return false;
    if (--m_count > 0) return true;
    AnnounceRelease(this);
    m_owner.reset();
    Machine& machine = Machine::Current();
    std::erase_if(machine.Get<OwnedMutexes>().mutexes, [this](const std::weak_ptr<KernelMutex>& m) {
        const auto mutex = m.lock();
        return !mutex || mutex.get() == this;
    });
    machine.ledger.Strike(kOwnership, this);
    return true;
}

void KernelMutex::AbandonAll(unsigned thread) {
    const auto owned = Machine::Current().Get<OwnedMutexes>().mutexes;
    for (const auto& weak : owned) {
        const auto mutex = weak.lock();
        if (!mutex || mutex->m_owner != thread) continue;
        mutex->m_count = 1;
        mutex->Release(thread);
        mutex->m_abandoned = true;
    }
}

void KernelThread::Take(unsigned) {
    AnnounceAcquire(this);
}

void KernelThread::End() {
    AnnounceRelease(this);
    m_ended = true;
}

DWORD KernelThread::ExitCode() const {
    if (!m_ended) return STILL_ACTIVE;
    AnnounceAcquire(this);
    return exitCode;
}

std::optional<WaitSet> WaitSet::Open(const HANDLE* handles, DWORD count) {
    Machine& machine = Machine::Current();
    WaitSet set;
    set.m_thread = machine.scheduler.CurrentThread();
    for (DWORD i = 0; i < count; ++i) {
        auto object = machine.Get<Handles>().Find(handles[i]);
        if (!object) {
            Call::SetLast(ERROR_INVALID_HANDLE);
            return std::nullopt;
        }
        set.m_objects.push_back(std::move(object));
    }
    return set;
}

bool WaitSet::Ready(bool all) const {
    const auto signalled = [this](const auto& object) { return object->Signalled(m_thread); };
    return all ? std::all_of(m_objects.begin(), m_objects.end(), signalled)
               : std::any_of(m_objects.begin(), m_objects.end(), signalled);
}

DWORD WaitSet::TakeOne(DWORD index) {
    KernelObject& object = *m_objects[index];
    const auto* mutex = dynamic_cast<KernelMutex*>(&object);
    const bool abandoned = mutex != nullptr && mutex->IsAbandoned();
    object.Take(m_thread);
    return abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
}

DWORD WaitSet::Take(bool all) {
    DWORD result = WAIT_OBJECT_0;
    for (DWORD i = 0; i < m_objects.size(); ++i) {
        if (!m_objects[i]->Signalled(m_thread)) continue;
        const DWORD taken = TakeOne(i);
        if (!all) return taken + i;
        result = std::max(result, taken);
    }
    return result;
}

std::optional<Scheduler::Milliseconds> DueAfter(DWORD milliseconds) {
    if (milliseconds == INFINITE) return std::nullopt;
    return Machine::Current().scheduler.Now() + milliseconds;
}

}  // namespace platform
