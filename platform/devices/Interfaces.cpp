#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
#include <iphlpapi.h>
#include <objbase.h>

#include "Interfaces.h"

#include <algorithm>
#include <map>
#include <memory>

#include "Call.h"
#include "Facts.h"
#include "MiniportInterfaces.h"
#include "RegistryGeneration.h"

namespace platform {
namespace {

constexpr std::size_t kHexDigits = 2;

// 00-02-C9-11-22-33, of up to 32 bytes. Nothing when it isn't that.
std::optional<std::vector<BYTE>> ParseAddress(const std::basic_string<WCHAR>& text) {
    std::vector<BYTE> address;
    for (const std::basic_string<WCHAR>& field : SplitFields(text, TEXT('-'))) {
        const auto byte = ParseNumber(TEXT("0x") + field);
        if (!byte || field.size() != kHexDigits || address.size() == IF_MAX_PHYS_ADDRESS_LENGTH)
            return std::nullopt;
        address.push_back(static_cast<BYTE>(*byte));
    }
    return address;
}

NetworkInterface Loopback() {
    NetworkInterface loopback;
    loopback.name = TEXT("{00000000-0000-0000-0000-000000000000}");
    loopback.alias = TEXT("Loopback Pseudo-Interface 1");
    loopback.description = TEXT("Software Loopback Interface 1");
    loopback.isLoopback = true;
    loopback.isUp = true;
    loopback.unicastAddresses = {TEXT("::1"), TEXT("127.0.0.1")};
    return loopback;
}

// False when an address can't be read.
bool ReadInterface(const std::basic_string<WCHAR>& name, NetworkInterface& adapter) {
    const std::basic_string<WCHAR> key = TEXT("Interfaces\\") + name;
    const auto alias = FactText(key, TEXT("Alias"));
    adapter.alias = alias ? *alias : ConnectionText(name, TEXT("Name")).value_or(TEXT(""));
    adapter.description = FactText(key, TEXT("Description")).value_or(TEXT(""));
    adapter.isUp = FactNumber(key, TEXT("Up")).value_or(1) != 0;
    adapter.isHidden = FactNumber(key, TEXT("Hidden")).value_or(0) != 0;
    adapter.unicastAddresses =
        SplitFields(FactText(key, TEXT("Addresses")).value_or(TEXT("")), TEXT(';'));
    const auto permanent = ParseAddress(FactText(key, TEXT("PermanentAddress")).value_or(TEXT("")));
    if (!permanent) return false;
    adapter.permanentAddress = adapter.currentAddress = *permanent;
    if (const auto text = FactText(key, TEXT("CurrentAddress"))) {
        const auto current = ParseAddress(*text);
        if (!current) return false;
        adapter.currentAddress = *current;
    }
    return true;
}

template <std::size_t N>
void CopyText(WCHAR (&field)[N], const std::basic_string<WCHAR>& text) {
    field[text.copy(field, N - 1)] = TEXT('\0');
}

MIB_IF_ROW2 MakeRow(const NetworkInterface& adapter, NET_IFINDEX index) {
    MIB_IF_ROW2 row = {};
    row.Type = adapter.isLoopback ? IF_TYPE_SOFTWARE_LOOPBACK : IF_TYPE_ETHERNET_CSMACD;
    row.InterfaceLuid.Info.IfType = static_cast<WORD>(row.Type);
    row.InterfaceLuid.Info.NetLuidIndex = index & 0xFFFFFF;
    row.InterfaceIndex = index;
    row.InterfaceGuid = adapter.guid;
    CopyText(row.Alias, adapter.alias);
    CopyText(row.Description, adapter.description);
    row.PhysicalAddressLength = static_cast<ULONG>(adapter.currentAddress.size());
    std::copy(adapter.currentAddress.begin(), adapter.currentAddress.end(), row.PhysicalAddress);
    std::copy(adapter.permanentAddress.begin(), adapter.permanentAddress.end(),
              row.PermanentPhysicalAddress);
    row.Mtu = adapter.isLoopback ? 0xFFFFFFFF : 1500;
    row.MediaType = adapter.isLoopback ? NdisMediumLoopback : NdisMedium802_3;
    row.AccessType = adapter.isLoopback ? NET_IF_ACCESS_LOOPBACK : NET_IF_ACCESS_BROADCAST;
    row.InterfaceAndOperStatusFlags.HardwareInterface = !adapter.isLoopback;
    row.InterfaceAndOperStatusFlags.ConnectorPresent = !adapter.isLoopback;
    row.InterfaceAndOperStatusFlags.NotMediaConnected = !adapter.isUp;
    row.OperStatus = adapter.isUp ? IfOperStatusUp : IfOperStatusDown;
    row.AdminStatus = NET_IF_ADMIN_STATUS_UP;
    row.MediaConnectState =
        adapter.isUp ? MediaConnectStateConnected : MediaConnectStateDisconnected;
    row.ConnectionType = NET_IF_CONNECTION_DEDICATED;
    return row;
}

constexpr const char* kKind = "interface table";

// Tables handed out, as blocks that hold the count and the rows.
struct InterfaceTables : Part {
    std::map<const void*, std::unique_ptr<BYTE[]>> open;
};

// What was read at one state of the registry: callers ask for a table's size and then for the
// table.
struct InterfaceSnapshot {
    std::uint64_t generation;
    std::vector<NetworkInterface> interfaces;
};

struct KnownInterfaces : Part {
    std::optional<InterfaceSnapshot> snapshot;
};

}  // namespace

std::optional<std::vector<NetworkInterface>> ReadInterfaces() {
    std::optional<InterfaceSnapshot>& known = Machine::Current().Get<KnownInterfaces>().snapshot;
    const std::uint64_t generation = RegistryGeneration();
    if (known && known->generation == generation) return known->interfaces;
    std::vector<NetworkInterface> interfaces = {Loopback()};
    for (const std::basic_string<WCHAR>& name : MachineSubkeys(FactPath(TEXT("Interfaces")))) {
        NetworkInterface adapter;
        if (CLSIDFromString(name.c_str(), &adapter.guid) != S_OK) continue;
        adapter.name = name;
        if (!ReadInterface(name, adapter)) return std::nullopt;
        interfaces.push_back(std::move(adapter));
    }
    AddMiniportInterfaces(interfaces);
    known = {generation, interfaces};
    return interfaces;
}

std::optional<std::basic_string<WCHAR>> ConnectionText(const std::basic_string<WCHAR>& guid,
                                                       const WCHAR* value) {
    const std::basic_string<WCHAR> key = TEXT(
        "SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\");
    return MachineText(key + guid + TEXT("\\Connection"), value);
}

}  // namespace platform

using namespace platform;

NETIO_STATUS WINAPI GetIfTable2(PMIB_IF_TABLE2* table) {
    Call call("GetIfTable2", nullptr, ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.Error();
    if (!table) return ERROR_INVALID_PARAMETER;
    const auto interfaces = ReadInterfaces();
    if (!interfaces) return ERROR_INVALID_DATA;
    const std::size_t size =
        offsetof(MIB_IF_TABLE2, Table) + interfaces->size() * sizeof(MIB_IF_ROW2);
    auto block = std::make_unique<BYTE[]>(size);
    auto* const made = reinterpret_cast<PMIB_IF_TABLE2>(block.get());
    made->NumEntries = static_cast<ULONG>(interfaces->size());
    // The rows of a table number more than the one that its type declares.
    auto* const rows = reinterpret_cast<MIB_IF_ROW2*>(block.get() + offsetof(MIB_IF_TABLE2, Table));
    for (std::size_t i = 0; i < interfaces->size(); ++i)
        rows[i] = MakeRow((*interfaces)[i], static_cast<NET_IFINDEX>(i + 1));
    call.machine.ledger.Enter(kKind, made, call.Name());
    call.machine.Get<InterfaceTables>().open.emplace(made, std::move(block));
    *table = made;
    return NO_ERROR;
}

void WINAPI FreeMibTable(PVOID table) {
    Call call("FreeMibTable");
    if (call.machine.ledger.Strike(kKind, table))
        call.machine.Get<InterfaceTables>().open.erase(table);
}
