#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <netioapi.h>

#include "AdapterMacAddress.h"

#include <algorithm>
#include <cstring>

#include "AutoClasses.h"
#include "MuxRegistry.h"

namespace {

struct MibTableTraits {
    using Handle = PMIB_IF_TABLE2;
    static constexpr Handle none = nullptr;
    static void Close(Handle table) { FreeMibTable(table); }
};

}  // namespace

HRESULT GetAdapterMacAddress(DWORD* length, BYTE* buffer, REFGUID guid) {
    Scoped<MibTableTraits> table;
    const NETIO_STATUS status = GetIfTable2(table.Receive());
    if (status != NO_ERROR) return HRESULT_FROM_WIN32(status);
    const MIB_IF_ROW2* const rows = table.Get()->Table;
    const MIB_IF_ROW2* const end = rows + table.Get()->NumEntries;
    const MIB_IF_ROW2* const row = std::find_if(
        rows, end, [&](const auto& each) { return IsEqualGUID(each.InterfaceGuid, guid); });
    if (row == end) return ToResult(ERROR_NOT_FOUND);
    const bool fits = *length >= row->PhysicalAddressLength;
    if (fits) std::memcpy(buffer, row->PhysicalAddress, row->PhysicalAddressLength);
    *length = row->PhysicalAddressLength;
    return fits ? S_OK : ToResult(ERROR_INSUFFICIENT_BUFFER);
}
