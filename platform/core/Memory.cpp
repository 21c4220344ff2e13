// The allocations that can fail in an orderly way: local memory, task memory and the new operator
// that reports by a null.

#include "Memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <objbase.h>
#include <winbase.h>
#include <winerror.h>

#include "Call.h"

namespace platform {
namespace {

constexpr char localKind[] = "LocalAlloc";
constexpr char taskKind[] = "CoTaskMem";
constexpr int unsetByte = 0xCD;  // so that nobody counts on zeros that weren't asked for

void* NewBlock(std::size_t bytes, int fill) {
    const std::size_t size = std::max<std::size_t>(bytes, 1);
    void* block = std::malloc(size);
    if (block != nullptr) std::memset(block, fill, size);
    return block;
}

// operator new can't throw what a machine that has ended throws at its calls.
bool MayAllocate() noexcept {
    if (Machine::CurrentOrNull() == nullptr || IsQuiet()) return true;
    try {
        const Call call("operator new", nullptr, ERROR_NOT_ENOUGH_MEMORY);
        return call.Failed() ? call.With(false) : true;  // as the heap of Windows
    } catch (const MachineEnded&) {
        return false;
    }
}

// array: the block will be freed by delete[].
void* NewOrNull(std::size_t size, bool array) noexcept {
    if (!MayAllocate()) return nullptr;
    try {
        return array ? ::operator new[](size) : ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

void* NewLocalBlock(std::size_t bytes, const char* call) {
    void* block = NewBlock(bytes, 0);
    if (block != nullptr) Machine::Current().ledger.Enter(localKind, block, call);
    return block;
}

}  // namespace platform

using platform::Call;

HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes) {
    Call call("LocalAlloc", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With<HLOCAL>(nullptr);
    void* block = platform::NewBlock(bytes, (flags & LMEM_ZEROINIT) ? 0 : platform::unsetByte);
    if (block == nullptr) {
        Call::SetLast(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    call.machine.ledger.Enter(platform::localKind, block, call.Name());
    return block;
}

HLOCAL WINAPI LocalFree(HLOCAL block) {
    Call call("LocalFree");
    if (block == nullptr) return nullptr;
    if (!call.machine.ledger.Strike(platform::localKind, block)) {
        Call::SetLast(ERROR_INVALID_HANDLE);
        return block;
    }
    std::free(block);
    return nullptr;
}

LPVOID WINAPI CoTaskMemAlloc(SIZE_T bytes) {
    Call call("CoTaskMemAlloc", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return nullptr;
    void* block = platform::NewBlock(bytes, platform::unsetByte);
    if (block != nullptr) call.machine.ledger.Enter(platform::taskKind, block, call.Name());
    return block;
}

void WINAPI CoTaskMemFree(LPVOID block) {
    Call call("CoTaskMemFree");
    if (block == nullptr) return;
    if (!call.machine.ledger.Strike(platform::taskKind, block)) {
        std::fputs("CoTaskMemFree: not a block of task memory, or freed before\n", stderr);
        std::abort();
    }
    std::free(block);
}

// The operators that a program may put in the place of the library's. What they give is freed by
// the ordinary delete.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return platform::NewOrNull(size, false);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return platform::NewOrNull(size, true);
}
