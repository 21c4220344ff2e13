#include <winsock2.h>
#include <ws2tcpip.h>

#include "NetworkRows.h"

#include <iphlpapi.h>

#include "../resources/resource.h"
#include "AutoClasses.h"
#include "Messages.h"

#include <strsafe.h>

namespace {

// A table that still outgrows its buffer then is given up.
constexpr int kMostQueries = 5;

using AdapterTable = ScopedLocal<IP_ADAPTER_ADDRESSES>;

// The table, or null after a report.
AdapterTable QueryAdapters(RefreshObserver& observer) {
    AdapterTable table;
    ULONG size = 0;
    for (int query = 1;; ++query) {
        const ULONG error = GetAdaptersAddresses(AF_INET, 0, nullptr, table.Get(), &size);
        if (error == ERROR_SUCCESS) return table;
        table.Reset();
        if (error != ERROR_BUFFER_OVERFLOW || query == kMostQueries) {
            observer.Report(IDS_VLAN_REFRESH_FAILED, error);
            return table;
        }
        table.Reset(static_cast<IP_ADAPTER_ADDRESSES*>(LocalAlloc(LMEM_FIXED, size)));
        if (!table) {
            observer.Report(IDS_COMMAND_FAILED, GetLastError());
            return table;
        }
    }
}

// The text as a counted string; null when it is empty or can't be converted.
ScopedBstr WideText(LPCSTR text) {
    const int length = MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, nullptr, 0);
    if (length <= 1) return {};
    ScopedBstr wide(SysAllocStringLen(nullptr, static_cast<UINT>(length - 1)));
    if (!wide || MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, wide.Get(), length) != length)
        return {};
    return wide;
}

// The entry of that name, or null.
const IP_ADAPTER_ADDRESSES* FindAdapter(const IP_ADAPTER_ADDRESSES* table,
                                        LPCWSTR netCfgInstanceId) {
    const ScopedBstr wanted(SysAllocString(netCfgInstanceId));
    if (!wanted) return nullptr;
    for (const IP_ADAPTER_ADDRESSES* entry = table; entry; entry = entry->Next) {
        const ScopedBstr name = WideText(entry->AdapterName);
        if (name && EqualText(name.Get(), wanted.Get())) return entry;
    }
    return nullptr;
}

void ShowFirstAddress(const IP_ADAPTER_ADDRESSES& adapter, InformationText& value) {
    const IP_ADAPTER_UNICAST_ADDRESS* first = adapter.FirstUnicastAddress;
    if (!first || first->Address.lpSockaddr->sa_family != AF_INET) return;
    const auto* address = reinterpret_cast<const sockaddr_in*>(first->Address.lpSockaddr);
    const auto& bytes = address->sin_addr.S_un.S_un_b;
    InformationText text;
    if (SUCCEEDED(StringCchPrintfW(text, ARRAYSIZE(text), TEXT("%d.%d.%d.%d"), bytes.s_b1,
                                   bytes.s_b2, bytes.s_b3, bytes.s_b4)))
        SetInformationText(value, text);
}

}  // namespace

void ReadNetworkRows(LPCWSTR netCfgInstanceId, RefreshObserver& observer, InformationRows& rows) {
    SetInformationText(rows[ROW_NETWORK_STATUS].value, TEXT("Disabled"));
    SetInformationText(rows[ROW_FRIENDLY_NAME].value, kNotAvailable);
    SetInformationText(rows[ROW_IPV4_ADDRESS].value, kNotAvailable);
    const AdapterTable table = QueryAdapters(observer);
    const IP_ADAPTER_ADDRESSES* adapter = FindAdapter(table.Get(), netCfgInstanceId);
    if (!adapter) return;
    SetInformationText(rows[ROW_NETWORK_STATUS].value,
                       adapter->OperStatus == IfOperStatusUp ? TEXT("Connected") : kDisconnected);
    if (adapter->FriendlyName && adapter->FriendlyName[0] != 0)
        SetInformationText(rows[ROW_FRIENDLY_NAME].value, adapter->FriendlyName);
    ShowFirstAddress(*adapter, rows[ROW_IPV4_ADDRESS].value);
}
