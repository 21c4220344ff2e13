#include <winsock2.h>
#include <ws2tcpip.h>

#include "InterfaceTable.h"

#include <iphlpapi.h>

#include <cstring>
#include <new>

#include "../resources/resource.h"

namespace {

// A table that still outgrows its buffer then is given up.
constexpr int kMostQueries = 5;

void ReadFirstAddress(const IP_ADAPTER_ADDRESSES& adapter, InterfaceFacts& facts) {
    const IP_ADAPTER_UNICAST_ADDRESS* first = adapter.FirstUnicastAddress;
    if (!first || first->Address.lpSockaddr->sa_family != AF_INET) return;
    const auto* address = reinterpret_cast<const sockaddr_in*>(first->Address.lpSockaddr);
    static_assert(sizeof(facts.ipv4Address) == sizeof(address->sin_addr));
    std::memcpy(facts.ipv4Address, &address->sin_addr, sizeof(facts.ipv4Address));
    facts.hasIpv4Address = true;
}

}  // namespace

UserFailure InterfaceTable::Read(AddressFamily family) {
    m_index = {};
    const UserFailure failure = ReadEntries(family);
    return failure ? failure : IndexNames();
}

UserFailure InterfaceTable::ReadEntries(AddressFamily family) {
    ULONG size = 0;
    m_entries.Reset();
    for (int query = 1;; ++query) {
        auto* entries = static_cast<IP_ADAPTER_ADDRESSES*>(m_entries.Get());
        const ULONG error =
            GetAdaptersAddresses(static_cast<ULONG>(family), 0, nullptr, entries, &size);
        if (error == ERROR_SUCCESS) return {};
        m_entries.Reset();
        if (error != ERROR_BUFFER_OVERFLOW || query == kMostQueries)
            return {IDS_VLAN_REFRESH_FAILED, error};
        m_entries.Reset(LocalAlloc(LMEM_FIXED, size));
        if (!m_entries) return {IDS_COMMAND_FAILED, GetLastError()};
    }
}

UserFailure InterfaceTable::IndexNames() {
    const auto* first = static_cast<const IP_ADAPTER_ADDRESSES*>(m_entries.Get());
    size_t count = 0;
    for (const auto* entry = first; entry; entry = entry->Next)
        ++count;
    m_interfaces.reset(new (std::nothrow) Interface[count]);
    if (!m_interfaces || !m_index.Reserve(count)) return {IDS_COMMAND_FAILED, GetLastError()};
    size_t place = 0;
    for (const auto* entry = first; entry; entry = entry->Next) {
        Interface& known = m_interfaces[place];
        known.entry = entry;
        if (MultiByteToWideChar(CP_THREAD_ACP, 0, entry->AdapterName, -1, known.name,
                                ARRAYSIZE(known.name)) > 1)
            m_index.Add(known.name, place++);
    }
    return {};
}

bool InterfaceTable::Find(LPCWSTR netCfgInstanceId, InterfaceFacts& facts) const {
    size_t place = 0;
    if (!m_index.Find(netCfgInstanceId, place)) return false;
    const auto& entry = *static_cast<const IP_ADAPTER_ADDRESSES*>(m_interfaces[place].entry);
    facts = {};
    facts.isUp = entry.OperStatus == IfOperStatusUp;
    facts.friendlyName = entry.FriendlyName;
    ReadFirstAddress(entry, facts);
    return true;
}
