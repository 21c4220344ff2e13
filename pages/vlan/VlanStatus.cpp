#include "VlanStatus.h"

#include "InterfaceTable.h"

namespace {

constexpr DWORD kPollInterval = 15000;  // milliseconds from the end of a pass to the next

}  // namespace

VlanRefresh RefreshVlanStatus(const VlanList& vlans) {
    VlanRefresh refresh;
    if (!vlans.First()) return refresh;
    InterfaceTable table;
    refresh.failure = table.Read(AddressFamily::Any);
    if (refresh.failure) return refresh;
    for (VlanEntry* vlan = vlans.First(); vlan; vlan = vlan->next.get()) {
        InterfaceFacts facts;
        const bool isUp = table.Find(vlan->guid, facts) && facts.isUp;
        refresh.changed = refresh.changed || isUp != vlan->isUp;
        vlan->isUp = isUp;
    }
    return refresh;
}

bool VlanStatusPoll::Create() {
    m_mutex.Reset(CreateMutexW(nullptr, FALSE, nullptr));
    return static_cast<bool>(m_mutex);
}

bool VlanStatusPoll::Start(HWND window) {
    if (Runs()) return true;
    m_window = window;
    return m_worker.Start([](void* poll) { static_cast<VlanStatusPoll*>(poll)->Poll(); }, this);
}

void VlanStatusPoll::Poll() {
    do {
        VlanRefresh refresh;
        {
            const ScopedMutexOwnership ownership = m_worker.Acquire(m_mutex.Get());
            if (!ownership) return;
            refresh = RefreshVlanStatus(m_vlans);
        }
        if (refresh.changed) m_isTold = false;
        if (!m_isTold) m_isTold = PostMessageW(m_window, kVlanStatusChanged, 0, 0) != FALSE;
        if (refresh.failure)
            PostMessageW(m_window, kVlanRefreshFailed, refresh.failure.message,
                         static_cast<LPARAM>(refresh.failure.error));
    } while (!m_worker.WaitForStop(kPollInterval));
}
