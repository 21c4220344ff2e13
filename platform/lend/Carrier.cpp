// What a real Windows carries of the stand-in; for its clock see Clock.cpp.

#include "Carrier.h"

namespace platform {
namespace {

thread_local std::optional<GROUP_AFFINITY> t_affinity;

// Nobody pins a thread but itself.
bool IsCurrent(HANDLE thread) {
    return thread == GetCurrentThread();
}

}  // namespace

// The affinity is only remembered: the processors are those of another machine.
DWORD PinThread(HANDLE thread, const GROUP_AFFINITY& affinity) {
    if (!IsCurrent(thread)) return ERROR_INVALID_HANDLE;
    t_affinity = affinity;
    return ERROR_SUCCESS;
}

std::optional<GROUP_AFFINITY> PinnedTo(HANDLE thread) {
    return IsCurrent(thread) ? t_affinity : std::nullopt;
}

// The system numbers the devices of its own lists.
std::basic_string<WCHAR> ForeignNodeId(DEVINST node) {
    WCHAR id[MAX_DEVICE_ID_LEN] = {};
    return CM_Get_Device_IDW(node, id, MAX_DEVICE_ID_LEN, 0) == CR_SUCCESS ? id : TEXT("");
}

}  // namespace platform
