#include <winsock2.h>
#include <ws2tcpip.h>

#include "InterfaceTable.h"

#include <iphlpapi.h>

#include <cstring>

#include "../resources/resource.h"
#include "Messages.h"

namespace {

// A table that still outgrows its buffer then is given up.
constexpr int kMostQueries = 5;

// The text as a counted string; null when it is empty or can't be converted.
ScopedBstr WideText(LPCSTR text) {
    const int length = MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, nullptr, 0);
    if (length <= 1) return {};
    ScopedBstr wide(SysAllocStringLen(nullptr, static_cast<UINT>(length - 1)));
    if (!wide || MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, wide.Get(), length) != length)
        return {};
    return wide;
}

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

bool InterfaceTable::Find(LPCWSTR netCfgInstanceId, InterfaceFacts& facts) const {
    const ScopedBstr wanted(SysAllocString(netCfgInstanceId));
    if (!wanted) return false;
    const auto* entry = static_cast<const IP_ADAPTER_ADDRESSES*>(m_entries.Get());
    for (; entry; entry = entry->Next) {
        const ScopedBstr name = WideText(entry->AdapterName);
        if (!name || !EqualText(name.Get(), wanted.Get())) continue;
        facts = {};
        facts.isUp = entry->OperStatus == IfOperStatusUp;
        facts.friendlyName = entry->FriendlyName;
        ReadFirstAddress(*entry, facts);
        return true;
    }
    return false;
}
