// The table of network interfaces.

#include <gtest/gtest.h>

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
    return "[" + FactsMachine::kStandIn + "\\Interfaces\\" + guid + "]\n" + values + "\n";
}

std::string Connection(const std::string& name) {
    return std::string("[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Network\\") +
           "{4D36E972-E325-11CE-BFC1-08002BE10318}\\" + kGuid + "\\Connection]\n\"Name\"=\"" +
           name + "\"\n";
}

// The rows of the machine's table.
std::vector<MIB_IF_ROW2> Rows() {
    PMIB_IF_TABLE2 table = nullptr;
    const DWORD error = GetIfTable2(&table);
    EXPECT_EQ(error, DWORD{NO_ERROR});
    if (error != NO_ERROR) return {};
    const std::vector<MIB_IF_ROW2> rows(table->Table, table->Table + table->NumEntries);
    FreeMibTable(table);
    return rows;
}

std::string Hex(const UCHAR* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

TEST(Interfaces, TheLoopbackIsAlwaysThereAndFirst) {
    FactsMachine bare;
    const auto alone = Rows();
    ASSERT_EQ(alone.size(), 1u);
    EXPECT_EQ(alone[0].Type, ULONG{IF_TYPE_SOFTWARE_LOOPBACK});
    EXPECT_EQ(alone[0].PhysicalAddressLength, 0u);
}

TEST(Interfaces, FollowInTheOrderOfTheirKeys) {
    FactsMachine machine(Interface("\"Alias\"=\"b\"", "{B0000000-0000-0000-0000-000000000000}") +
                         Interface("\"Alias\"=\"a\"", "{a0000000-0000-0000-0000-000000000000}") +
                         Interface("\"Alias\"=\"no GUID\"", "lan"));
    const auto rows = Rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].Alias, std::u16string(u"a"));
    EXPECT_EQ(rows[2].Alias, std::u16string(u"b"));
    EXPECT_EQ(rows[2].InterfaceGuid.Data1, 0xB0000000u);
    EXPECT_NE(rows[1].InterfaceIndex, rows[2].InterfaceIndex);
}

TEST(Interfaces, ShowTheirFacts) {
    const std::string long32 =
        "00-01-02-03-04-05-06-07-08-09-0a-0b-0c-0d-0e-0f-10-11-12-13-14-15-16-17-18-19-1a-1b-1c-"
        "1d-1e-1f";
    const struct {
        const char* why;
        std::string facts;
        std::string alias;
        std::string permanent;
        std::string current;
        IF_OPER_STATUS status;
    } kCases[] = {
        {"all told",
         Interface("\"Alias\"=\"LAN\"\n\"PermanentAddress\"=\"00-02-C9-11-22-33\"\n"
                   "\"CurrentAddress\"=\"02-00-00-00-00-01\"\n\"Up\"=dword:0") +
             Connection("other"),
         "LAN", "0002C9112233", "020000000001", IfOperStatusDown},
        {"the name of the connection, the permanent address, up",
         Interface("\"PermanentAddress\"=\"00-02-c9-11-22-33\"") + Connection("Local Area"),
         "Local Area", "0002C9112233", "0002C9112233", IfOperStatusUp},
        {"nothing but the key", Interface(""), "", "", "", IfOperStatusUp},
        {"a name with case", Interface("\"Alias\"=\"\xC3\x84thernet\""), "\xC3\x84thernet", "", "",
         IfOperStatusUp},
        {"the longest address", Interface("\"PermanentAddress\"=\"" + long32 + "\""), "",
         "000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F",
         "000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F", IfOperStatusUp},
        {"the longest name", Interface("\"Alias\"=\"" + std::string(300, 'x') + "\""),
         std::string(256, 'x'), "", "", IfOperStatusUp},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(test.facts);
        const auto rows = Rows();
        ASSERT_EQ(rows.size(), 2u);
        const MIB_IF_ROW2& row = rows[1];
        EXPECT_EQ(platform::ToUtf8(row.Alias), test.alias);
        EXPECT_EQ(Hex(row.PermanentPhysicalAddress, test.permanent.size() / 2), test.permanent);
        EXPECT_EQ(Hex(row.PhysicalAddress, row.PhysicalAddressLength), test.current);
        EXPECT_EQ(row.OperStatus, test.status);
        EXPECT_EQ(row.Type, ULONG{IF_TYPE_ETHERNET_CSMACD});
    }
}

TEST(Interfaces, BrokenAddressesFailTheQuery) {
    for (const char* address :
         {"00-02-C9-11-22-3", "00:02", "00-", "x", "00-02-C9-11-22-333", "-"}) {
        for (const char* value : {"PermanentAddress", "CurrentAddress"}) {
            SCOPED_TRACE(std::string(value) + "=" + address);
            FactsMachine machine(Interface(std::string("\"") + value + "\"=\"" + address + "\""));
            PMIB_IF_TABLE2 table = nullptr;
            EXPECT_EQ(GetIfTable2(&table), DWORD{ERROR_INVALID_DATA});
            EXPECT_EQ(table, nullptr);
        }
    }
}

TEST(Interfaces, ATableThatIsNotFreedIsALeak) {
    std::vector<std::string> leaks;
    {
        FactsMachine machine;
        machine.machine.onLeak = [&leaks](const auto& entry) { leaks.push_back(entry.call); };
        PMIB_IF_TABLE2 freed = nullptr;
        PMIB_IF_TABLE2 kept = nullptr;
        GetIfTable2(&freed);
        GetIfTable2(&kept);
        FreeMibTable(freed);
    }
    EXPECT_EQ(leaks, std::vector<std::string>{"GetIfTable2"});
}

}  // namespace
