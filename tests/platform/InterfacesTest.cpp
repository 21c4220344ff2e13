// The table of network interfaces.

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

// The rows of the machine's table.
std::vector<MIB_IF_ROW2> Rows() {
    PMIB_IF_TABLE2 table = nullptr;
    EXPECT_EQ(GetIfTable2(&table), DWORD{NO_ERROR});
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

TEST(Interfaces, FollowTheLoopbackInTheOrderOfTheirKeys) {
    FactsMachine machine(Interface("\"Alias\"=\"b\"", "{B0000000-0000-0000-0000-000000000000}") +
                         Interface("\"Alias\"=\"a\"", "{a0000000-0000-0000-0000-000000000000}") +
                         Interface("\"Alias\"=\"no GUID\"", "lan"));
    const auto rows = Rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].Type, ULONG{IF_TYPE_SOFTWARE_LOOPBACK});
    EXPECT_EQ(rows[1].Alias, std::u16string(u"a"));
    EXPECT_EQ(rows[2].Alias, std::u16string(u"b"));
    EXPECT_EQ(rows[2].InterfaceGuid.Data1, 0xB0000000u);
    EXPECT_NE(rows[1].InterfaceIndex, rows[2].InterfaceIndex);
}

TEST(Interfaces, ShowTheirFacts) {
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
    for (const std::string address : {"00-02-C9-11-22-3", "00:02", "00-", "x"}) {
        SCOPED_TRACE(address);
        FactsMachine machine(Interface("\"CurrentAddress\"=\"" + address + "\""));
        PMIB_IF_TABLE2 table = nullptr;
        EXPECT_EQ(GetIfTable2(&table), DWORD{ERROR_INVALID_DATA});
        EXPECT_EQ(table, nullptr);
    }
}

}  // namespace
