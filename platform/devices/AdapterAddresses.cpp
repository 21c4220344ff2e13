// The table of IP adapters.

#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
#include <iphlpapi.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Call.h"
#include "Interfaces.h"
#include "IpAddresses.h"
#include "Text.h"

namespace platform {
namespace {

struct Adapter {
    NetworkInterface facts;
    std::vector<std::vector<std::uint8_t>> addresses;
};

// The adapters that the table lists. Nothing when an address can't be read.
std::optional<std::vector<Adapter>> ReadAdapters() {
    auto interfaces = ReadInterfaces();
    if (!interfaces) return std::nullopt;
    std::vector<Adapter> adapters;
    for (NetworkInterface& facts : *interfaces) {
        if (facts.isHidden) continue;
        Adapter adapter;
        for (const std::basic_string<WCHAR>& text : facts.unicastAddresses) {
            auto address = ParseIpAddress(ToUtf8(text));
            if (!address) return std::nullopt;
            adapter.addresses.push_back(std::move(*address));
        }
        adapter.facts = std::move(facts);
        adapters.push_back(std::move(adapter));
    }
    return adapters;
}

// Lays the table out in a block, each thing behind the last one. Without a block it only counts.
class Layout {
  public:
    explicit Layout(void* block) : m_block(static_cast<BYTE*>(block)) {}

    std::size_t Used() const { return m_used; }
    void Add(const std::vector<Adapter>& adapters) {
        IP_ADAPTER_ADDRESSES* last = nullptr;
        for (const Adapter& adapter : adapters) {
            IP_ADAPTER_ADDRESSES* const entry = AddAdapter(adapter);
            if (last) last->Next = entry;
            last = entry;
        }
    }

  private:
    static constexpr std::size_t kAlignment = alignof(ULONGLONG);

    // Room for so many; null when there is no block.
    template <class T>
    T* Take(std::size_t count) {
        T* const place = m_block ? reinterpret_cast<T*>(m_block + m_used) : nullptr;
        const std::size_t size = count * sizeof(T);
        m_used += (size + kAlignment - 1) / kAlignment * kAlignment;
        if (place) std::memset(static_cast<void*>(place), 0, size);
        return place;
    }

    template <class C>
    C* AddText(std::basic_string_view<C> text) {
        C* const place = Take<C>(text.size() + 1);
        if (place) text.copy(place, text.size());
        return place;
    }

    template <class Address>
    LPSOCKADDR AddSocketAddress(SHORT family, const std::vector<std::uint8_t>& bytes,
                                std::size_t offset) {
        Address* const address = Take<Address>(1);
        if (!address) return nullptr;
        std::memcpy(address, &family, sizeof(family));
        std::memcpy(reinterpret_cast<BYTE*>(address) + offset, bytes.data(), bytes.size());
        return reinterpret_cast<LPSOCKADDR>(address);
    }

    IP_ADAPTER_UNICAST_ADDRESS* AddAddress(const std::vector<std::uint8_t>& bytes) {
        const bool isIpv4 = bytes.size() == sizeof(in_addr);
        auto* const entry = Take<IP_ADAPTER_UNICAST_ADDRESS>(1);
        const LPSOCKADDR address =
            isIpv4 ? AddSocketAddress<sockaddr_in>(AF_INET, bytes, offsetof(sockaddr_in, sin_addr))
                   : AddSocketAddress<sockaddr_in6>(AF_INET6, bytes,
                                                    offsetof(sockaddr_in6, sin6_addr));
        if (!entry) return nullptr;
        entry->Length = sizeof(*entry);
        entry->Address = {address,
                          static_cast<INT>(isIpv4 ? sizeof(sockaddr_in) : sizeof(sockaddr_in6))};
        return entry;
    }

    IP_ADAPTER_ADDRESSES* AddAdapter(const Adapter& adapter) {
        const NetworkInterface& facts = adapter.facts;
        auto* const entry = Take<IP_ADAPTER_ADDRESSES>(1);
        PSTR const name = AddText<char>(ToUtf8(facts.name));
        PWCHAR const description = AddText<WCHAR>(facts.description);
        PWCHAR const friendlyName = AddText<WCHAR>(facts.alias);
        IP_ADAPTER_UNICAST_ADDRESS* first = nullptr;
        IP_ADAPTER_UNICAST_ADDRESS* last = nullptr;
        for (const auto& bytes : adapter.addresses) {
            IP_ADAPTER_UNICAST_ADDRESS* const address = AddAddress(bytes);
            if (last) last->Next = address;
            if (!first) first = address;
            last = address;
        }
        if (!entry) return nullptr;
        entry->Length = sizeof(*entry);
        entry->IfIndex = ++m_index;
        entry->AdapterName = name;
        entry->FirstUnicastAddress = first;
        entry->Description = description;
        entry->FriendlyName = friendlyName;
        entry->PhysicalAddressLength = static_cast<ULONG>(
            std::min<std::size_t>(facts.currentAddress.size(), MAX_ADAPTER_ADDRESS_LENGTH));
        std::copy_n(facts.currentAddress.begin(), entry->PhysicalAddressLength,
                    entry->PhysicalAddress);
        entry->IfType = facts.isLoopback ? IF_TYPE_SOFTWARE_LOOPBACK : IF_TYPE_ETHERNET_CSMACD;
        entry->OperStatus = facts.isUp ? IfOperStatusUp : IfOperStatusDown;
        return entry;
    }

    BYTE* m_block;
    std::size_t m_used = 0;
    NET_IFINDEX m_index = 0;
};

}  // namespace
}  // namespace platform

using namespace platform;

// A fault of ERROR_BUFFER_OVERFLOW stands for a table that has grown since its size was told.
ULONG WINAPI GetAdaptersAddresses(ULONG family, ULONG flags, PVOID reserved,
                                  PIP_ADAPTER_ADDRESSES addresses, PULONG size) {
    Call call("GetAdaptersAddresses", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed() && call.Error() != ERROR_BUFFER_OVERFLOW) return call.Error();
    const bool isFamily = family == AF_UNSPEC || family == AF_INET || family == AF_INET6;
    if (!isFamily || flags != 0 || reserved || !size) return ERROR_INVALID_PARAMETER;
    const auto adapters = ReadAdapters();
    if (!adapters) return ERROR_INVALID_DATA;
    Layout counted(nullptr);
    counted.Add(*adapters);
    const ULONG capacity = addresses ? *size : 0;
    *size = static_cast<ULONG>(counted.Used());
    if (call.Failed() || capacity < counted.Used()) return ERROR_BUFFER_OVERFLOW;
    Layout(addresses).Add(*adapters);
    return NO_ERROR;
}
