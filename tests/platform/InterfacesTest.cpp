// The tables of network interfaces and of IP adapters, as the facts give them.

#include <string>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
#include <iphlpapi.h>

#include "FactsMachine.h"
#include "Text.h"

namespace {

constexpr char kGuid[] = "{11111111-2222-3333-4444-555555555555}";

std::string Interface(const std::string& values, const std::string& guid = kGuid) {
    return FactLines("Interfaces\\" + guid, values);
}

std::string Connection(const std::string& name) {
    return KeyLines(std::string("SYSTEM\\CurrentControlSet\\Control\\Network\\") +
                        "{4D36E972-E325-11CE-BFC1-08002BE10318}\\" + kGuid + "\\Connection",
                    "\"Name\"=\"" + name + "\"");
}

std::string Hex(const UCHAR* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += "0123456789ABCDEF"[bytes[i] >> 4];
        text += "0123456789ABCDEF"[bytes[i] & 15];
    }
    return text;
}

// The rows behind the loopback: alias, permanent and current address, status.
std::vector<std::string> Rows() {
    PMIB_IF_TABLE2 table = nullptr;
    EXPECT_EQ(GetIfTable2(&table), DWORD{NO_ERROR});
    EXPECT_EQ(table->Table[0].Type, ULONG{IF_TYPE_SOFTWARE_LOOPBACK});
    std::vector<std::string> rows;
    for (ULONG i = 1; i < table->NumEntries; ++i) {
        const MIB_IF_ROW2& row = table->Table[i];
        rows.push_back(platform::ToUtf8(row.Alias) + " " +
                       Hex(row.PermanentPhysicalAddress, row.PhysicalAddressLength) + " " +
                       Hex(row.PhysicalAddress, row.PhysicalAddressLength) + " " +
                       std::to_string(row.OperStatus));
    }
    FreeMibTable(table);
    return rows;
}

// The adapters behind the loopback: name, friendly name, status and addresses.
std::vector<std::string> Adapters() {
    ULONG size = 0;
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, nullptr, &size),
              ULONG{ERROR_BUFFER_OVERFLOW});
    std::vector<ULONGLONG> block(size / sizeof(ULONGLONG), 5);
    auto* entry = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data());
    ULONG less = size - 1;
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, entry, &less),
              ULONG{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(less, size);
    EXPECT_EQ(block, std::vector<ULONGLONG>(block.size(), 5)) << "a short buffer is left alone";
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, entry, &size), ULONG{NO_ERROR});
    std::vector<std::string> entries;
    while ((entry = entry->Next) != nullptr) {
        std::string text = std::string(entry->AdapterName) + " " +
                           platform::ToUtf8(entry->FriendlyName) + " " +
                           std::to_string(entry->OperStatus);
        for (auto* address = entry->FirstUnicastAddress; address; address = address->Next) {
            const auto* bytes = reinterpret_cast<const UCHAR*>(address->Address.lpSockaddr);
            const bool isIpv4 = address->Address.lpSockaddr->sa_family == AF_INET;
            text += " " + Hex(bytes + (isIpv4 ? 4 : 8), isIpv4 ? 4 : 16);
        }
        entries.push_back(text);
    }
    return entries;
}

TEST(Interfaces, StandInBothTablesAsTheirFactsSay) {
    const std::string guid = kGuid;
    const struct {
        const char* why;
        std::string facts;
        std::vector<std::string> rows, adapters;
    } cases[] = {
        {"no adapter", "", {}, {}},
        {"all told, addresses in their order, whatever family is asked for",
         Interface("\"Alias\"=\"LAN\"\n\"PermanentAddress\"=\"00-02-C9-11-22-33\"\n"
                   "\"CurrentAddress\"=\"02-00-00-00-00-01\"\n\"Up\"=dword:0\n"
                   "\"Addresses\"=\"fe80::1%3; 192.168.7.10\"") +
             Connection("other"),
         {"LAN 0002C9112233 020000000001 2"},
         {guid + " LAN 2 FE800000000000000000000000000001 C0A8070A"}},
        {"the name of the connection, the permanent address, up",
         Interface("\"PermanentAddress\"=\"00-02-c9-11-22-33\"") + Connection("Local Area"),
         {"Local Area 0002C9112233 0002C9112233 1"},
         {guid + " Local Area 1"}},
        {"hidden, with the longest name",
         Interface("\"Hidden\"=dword:1\n\"Alias\"=\"" + std::string(300, 'x') + "\""),
         {std::string(256, 'x') + "   1"},
         {}},
        {"in the order of their keys, spelled as these, and no others",
         Interface("\"Alias\"=\"b\"", "{B0000000-0000-0000-0000-000000000000}") +
             Interface("\"Alias\"=\"a\"", "{a0000000-0000-0000-0000-000000000000}") +
             Interface("\"Alias\"=\"no GUID\"", "lan"),
         {"a   1", "b   1"},
         {"{a0000000-0000-0000-0000-000000000000} a 1",
          "{B0000000-0000-0000-0000-000000000000} b 1"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const FactsMachine machine(row.facts);
        EXPECT_EQ(Rows(), row.rows);
        EXPECT_EQ(Adapters(), row.adapters);
    }
}

TEST(Interfaces, AnAddressThatCannotBeReadFailsTheQuery) {
    for (const std::string address : {"00-02-C9-11-22-3", "00:02", "00-", "x"}) {
        const FactsMachine machine(Interface("\"CurrentAddress\"=\"" + address + "\""));
        PMIB_IF_TABLE2 table = nullptr;
        EXPECT_EQ(GetIfTable2(&table), DWORD{ERROR_INVALID_DATA}) << address;
    }
    for (const std::string address : {"192.168.7", "192.168.7.256", "fe80::x", "1.2.3.4;;"}) {
        const FactsMachine machine(Interface("\"Addresses\"=\"" + address + "\""));
        ULONG size = 0;
        EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, nullptr, &size),
                  ULONG{ERROR_INVALID_DATA})
            << address;
    }
}

TEST(Interfaces, AnOverflowThatIsLaidOverTellsTheSizeAsWell) {
    FactsMachine machine;
    ULONG needed = 0;
    GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, nullptr, &needed);
    std::vector<ULONGLONG> block(needed / sizeof(ULONGLONG));
    ULONG size = needed;
    machine.machine.faults.FailCalls("GetAdaptersAddresses", u"", ERROR_BUFFER_OVERFLOW, 1, 1);
    EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr,
                                   reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data()), &size),
              ULONG{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(size, needed);
}

}  // namespace
