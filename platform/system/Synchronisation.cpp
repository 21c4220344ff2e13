// Events, mutexes and waiting (synchapi.h). What lets others go on (setting an event, releasing a
// mutex) fails only for a handle that isn't what it should be: laid-over faults are for what a
// caller can act upon.

#include <synchapi.h>
#include <winerror.h>

#include <algorithm>

#include "Call.h"
#include "Waiting.h"

using namespace platform;

namespace {

template <class T>
std::shared_ptr<T> Find(const Call& call, HANDLE handle) {
    auto object = call.machine.Get<Handles>().Find<T>(handle);
    if (!object) Call::SetLast(ERROR_INVALID_HANDLE);
    return object;
}

DWORD Wait(const Call& call, const HANDLE* objects, DWORD count, bool all, DWORD milliseconds) {
    auto set = WaitSet::Open(objects, count);
    if (!set) return WAIT_FAILED;
    const bool ready = call.machine.scheduler.BlockUntil(
        call.Name(), [&] { return set->Ready(all); }, DueAfter(milliseconds));
    return ready ? set->Take(all) : WAIT_TIMEOUT;
}

}  // namespace

HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState,
                           LPCWSTR name) {
    Call call("CreateEventW", name, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<HANDLE>(nullptr);
    if (name != nullptr) {
        Call::SetLast(ERROR_CALL_NOT_IMPLEMENTED);
        return nullptr;
    }
    return call.machine.Get<Handles>().Open(
        std::make_shared<KernelEvent>(manualReset != FALSE, initialState != FALSE), call.Name());
}

BOOL WINAPI SetEvent(HANDLE event) {
    Call call("SetEvent");
    const auto object = Find<KernelEvent>(call, event);
    if (!object) return FALSE;
    object->Set();
    return TRUE;
}

BOOL WINAPI ResetEvent(HANDLE event) {
    Call call("ResetEvent");
    const auto object = Find<KernelEvent>(call, event);
    if (!object) return FALSE;
    object->Reset();
    return TRUE;
}

HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) {
    Call call("CreateMutexW", name, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<HANDLE>(nullptr);
    if (name != nullptr) {
        Call::SetLast(ERROR_CALL_NOT_IMPLEMENTED);
        return nullptr;
    }
    const HANDLE handle =
        call.machine.Get<Handles>().Open(std::make_shared<KernelMutex>(), call.Name());
    if (initialOwner) WaitSet::Open(&handle, 1)->Take(false);
    return handle;
}

BOOL WINAPI ReleaseMutex(HANDLE mutex) {
    Call call("ReleaseMutex");
    const auto object = Find<KernelMutex>(call, mutex);
    if (!object) return FALSE;
    if (!object->Release(call.machine.scheduler.CurrentThread())) {
        Call::SetLast(ERROR_NOT_OWNER);
        return FALSE;
    }
    return TRUE;
}

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    Call call("WaitForSingleObject", nullptr, ERROR_INVALID_HANDLE);
    if (call.Failed()) return call.With(WAIT_FAILED);
    return Wait(call, &object, 1, false, milliseconds);
}

DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                    DWORD milliseconds) {
    Call call("WaitForMultipleObjects", nullptr, ERROR_INVALID_HANDLE);
    if (call.Failed()) return call.With(WAIT_FAILED);
    bool valid = count > 0 && count <= MAXIMUM_WAIT_OBJECTS;
    for (DWORD i = 0; valid && waitAll && i < count; ++i)
        valid = std::find(objects, objects + i, objects[i]) == objects + i;
    if (!valid) {
        Call::SetLast(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    return Wait(call, objects, count, waitAll != FALSE, milliseconds);
}

void WINAPI Sleep(DWORD milliseconds) {
    Call call("Sleep");
    call.machine.scheduler.BlockUntil(
        call.Name(), [] { return false; }, DueAfter(milliseconds));
}
