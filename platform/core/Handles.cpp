#include "Handles.h"

#include <cstdint>

namespace platform {
namespace {

constexpr const char* kHandleKind = "handle";

}  // namespace

HANDLE Handles::Open(std::shared_ptr<KernelObject> object, const char* call) {
    const HANDLE handle = reinterpret_cast<HANDLE>(m_next++ * 4);
    m_open.emplace(handle, std::move(object));
    Machine::Current().ledger.Enter(kHandleKind, handle, call);
    return handle;
}

std::shared_ptr<KernelObject> Handles::Find(HANDLE handle) const {
    const auto found = m_open.find(handle);
    return found == m_open.end() ? nullptr : found->second;
}

bool Handles::Close(HANDLE handle) {
    if (m_open.erase(handle) == 0) return false;
    Machine::Current().ledger.Strike(kHandleKind, handle);
    return true;
}

}  // namespace platform
