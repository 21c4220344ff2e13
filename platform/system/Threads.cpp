// Threads, the last error, exceptions and handles (processthreadsapi.h, errhandlingapi.h,
// handleapi.h). What names the running thread or process, and the last error, isn't a system call
// and so opens no Call.

#include <errhandlingapi.h>
#include <handleapi.h>
#include <processthreadsapi.h>
#include <winerror.h>

#include <cstdio>

#include "Call.h"
#include "Waiting.h"

using namespace platform;

namespace {

constexpr const char* kRunning = "running thread";
constexpr DWORD kProcessId = 0x1000;

DWORD ThreadId(unsigned number) {
    return kProcessId + 4 * (number + 1);
}

HANDLE PseudoHandle(int number) {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(number));
}

}  // namespace

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD threadId) {
    Call call("CreateThread", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<HANDLE>(nullptr);
    if (start == nullptr || flags != 0) {
        Call::SetLast(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    Machine& machine = call.machine;
    const auto thread = std::make_shared<KernelThread>();
    const auto body = [thread, start, parameter] {
        CallbackScope scope;
        thread->exitCode = start(parameter);
    };
    const auto onEnd = [thread, &machine] {
        KernelMutex::AbandonAll(machine.scheduler.CurrentThread());
        thread->End();
        machine.ledger.Strike(kRunning, thread.get());
    };
    machine.ledger.Enter(kRunning, thread.get(), call.Name());
    const HANDLE handle = machine.Get<Handles>().Open(thread, call.Name());
    const unsigned number = machine.scheduler.Start(body, onEnd);
    if (threadId != nullptr) *threadId = ThreadId(number);
    return handle;
}

BOOL WINAPI GetExitCodeThread(HANDLE thread, LPDWORD exitCode) {
    Call call("GetExitCodeThread", nullptr, ERROR_INVALID_HANDLE);
    if (call.Failed()) return call.With(FALSE);
    const auto object = call.machine.Get<Handles>().Find<KernelThread>(thread);
    if (!object) {
        Call::SetLast(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    *exitCode = object->ExitCode();
    return TRUE;
}

HANDLE WINAPI GetCurrentThread() {
    return PseudoHandle(-2);
}

DWORD WINAPI GetCurrentThreadId() {
    return ThreadId(Machine::Current().scheduler.CurrentThread());
}

HANDLE WINAPI GetCurrentProcess() {
    return PseudoHandle(-1);
}

DWORD WINAPI GetCurrentProcessId() {
    return kProcessId;
}

DWORD WINAPI GetLastError() {
    return Call::GetLast();
}

void WINAPI SetLastError(DWORD error) {
    Call::SetLast(error);
}

void WINAPI RaiseException(DWORD code, DWORD, DWORD, const ULONG_PTR*) {
    Call call("RaiseException");
    char reason[32];
    std::snprintf(reason, sizeof reason, "exception 0x%08X", code);
    call.machine.End(reason);
    throw MachineEnded{code, reason};
}

BOOL WINAPI CloseHandle(HANDLE object) {
    Call call("CloseHandle");
    if (call.machine.Get<Handles>().Close(object)) return TRUE;
    Call::SetLast(ERROR_INVALID_HANDLE);
    return FALSE;
}
