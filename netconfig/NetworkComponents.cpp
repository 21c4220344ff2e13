#include "NetworkComponents.h"

#include <devguid.h>
#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr DWORD kFirstCapacity = 64;

DWORD HashOf(REFGUID guid) {
    DWORD words[sizeof(GUID) / sizeof(DWORD)];
    std::memcpy(words, &guid, sizeof(words));
    DWORD hash = 0;
    for (const DWORD word : words)
        hash = (hash ^ word) * 0x9E3779B1U;
    return hash ^ hash >> 16;
}

}  // namespace

HRESULT NetworkComponents::HrFindInstance(REFGUID guid,
                                          ScopedReference<INetCfgComponent>& component) {
    const Passed* match = FindPassed(guid);
    while (!match) {
        const HRESULT result = PassNext();
        if (result != S_OK) return result;
        const Passed& last = m_passed[m_count - 1];
        if (IsEqualGUID(last.guid, guid)) match = &last;
    }
    component = match->component;
    return S_OK;
}

void NetworkComponents::Forget(REFGUID guid) {
    if (Passed* const passed = FindPassed(guid)) passed->component.Reset();
}

HRESULT NetworkComponents::Apply() {
    m_enumerator.Reset();
    m_reached.Reset();
    m_passed.reset();
    m_buckets.reset();
    m_count = 0;
    m_capacity = 0;
    return m_netCfg.Apply();
}

HRESULT NetworkComponents::QueryClass(ScopedReference<INetCfgClass>& netClass) const {
    return m_netCfg.QueryNetCfgClass(&GUID_DEVCLASS_NET, IID_INetCfgClass,
                                     reinterpret_cast<void**>(netClass.Receive()));
}

HRESULT NetworkComponents::QueryClassSetup(ScopedReference<INetCfgClassSetup>& setup) const {
    ScopedReference<INetCfgClass> netClass;
    const HRESULT result = QueryClass(netClass);
    return result != S_OK ? result : netClass.Query(IID_INetCfgClassSetup, setup);
}

// A bucket lists the places from the last one on, so the first match is the last in it.
NetworkComponents::Passed* NetworkComponents::FindPassed(REFGUID guid) const {
    Passed* first = nullptr;
    if (m_capacity == 0) return first;
    DWORD place = m_buckets[HashOf(guid) & (m_capacity - 1)];
    for (; place != kNone; place = m_passed[place].next) {
        Passed& passed = m_passed[place];
        if (passed.component && IsEqualGUID(passed.guid, guid)) first = &passed;
    }
    return first;
}

// Takes one component more. Where it fails, the next call goes on.
HRESULT NetworkComponents::PassNext() {
    HRESULT result = S_OK;
    if (!m_enumerator) result = m_netCfg.EnumComponents(&GUID_DEVCLASS_NET, m_enumerator.Receive());
    if (result != S_OK) return result;
    if (!m_reached) {
        ULONG fetched = 0;
        result = m_enumerator->Next(1, m_reached.Receive(), &fetched);
    }
    if (result != S_OK) return result;
    if (!m_reached) return S_FALSE;
    GUID guid = {};
    result = m_reached->GetInstanceGuid(&guid);
    if (result != S_OK) return result;
    if (!MakeRoom()) return E_OUTOFMEMORY;
    m_passed[m_count].guid = guid;
    m_passed[m_count].component = std::move(m_reached);
    Enter(m_count++);
    return S_OK;
}

bool NetworkComponents::MakeRoom() {
    if (m_count < m_capacity) return true;
    const DWORD capacity = std::max(kFirstCapacity, 2 * m_capacity);
    std::unique_ptr<Passed[]> passed(new (std::nothrow) Passed[capacity]);
    std::unique_ptr<DWORD[]> buckets(new (std::nothrow) DWORD[capacity]);
    if (!passed || !buckets) return false;
    std::move(m_passed.get(), m_passed.get() + m_count, passed.get());
    std::fill_n(buckets.get(), capacity, kNone);
    m_passed = std::move(passed);
    m_buckets = std::move(buckets);
    m_capacity = capacity;
    for (DWORD place = 0; place < m_count; ++place)
        Enter(place);
    return true;
}

void NetworkComponents::Enter(DWORD place) {
    DWORD& bucket = m_buckets[HashOf(m_passed[place].guid) & (m_capacity - 1)];
    m_passed[place].next = bucket;
    bucket = place;
}
