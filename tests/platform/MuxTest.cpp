// The interfaces of teams and VLANs, and what the MUX driver answers for a team.

#include <string>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
#include <iphlpapi.h>
#include <ioapiset.h>

#include "FactsMachine.h"
#include "Text.h"

namespace {

// Of a name, which is a letter or a digit. Adapters are named 7 to F, teams and VLANs T to Y.
std::string Guid(char name) {
    const char digit = name >= 'T' ? static_cast<char>(name - 'T' + '1') : name;
    return std::string("{") + digit + "0000000-0000-0000-0000-00000000000" + digit + "}";
}

std::string DeviceName(char name) {
    return "\\Device\\" + Guid(name);
}

// A multi-string as bytes, without its end unless the last entry is empty.
std::string MultiString(const std::vector<std::string>& entries) {
    const char digits[] = "0123456789abcdef";
    std::string text = "hex(7):";
    for (const std::string& entry : entries) {
        for (const char unit : entry + '\0')
            text += {digits[unit / 16], digits[unit % 16], ',', '0', '0', ','};
    }
    if (text.ends_with(',')) text.pop_back();
    return text;
}

std::string Lower(char name, const std::string& above, const std::string& values = {}) {
    std::vector<std::string> entries;
    for (const char miniport : above)
        entries.push_back(DeviceName(miniport));
    return KeyLines(
        "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\" + Guid(name),
        "\"UpperBindings\"=" + MultiString(entries) + "\n" + values);
}

std::string MemberOf(char team) {
    return R"("TeamDeviceName"="\\Device\\)" + Guid(team) + "\"\n";
}

std::string TypeAndPrimary(char type, char primary = 0) {
    const std::string value = primary == 0 ? "-" : "\"" + Guid(primary) + "\"";
    return std::string("\"TeamType\"=dword:") + type + "\n\"PrimaryAdapterGuid\"=" + value + "\n";
}

std::string Adapter(char name, bool isUp) {
    return FactLines("Interfaces\\" + Guid(name),
                     std::string("\"Alias\"=\"") + name + "\"\n\"PermanentAddress\"=\"0" +
                         (name > 'F' ? '0' : name) + "\"\n\"Up\"=dword:" + (isUp ? "1" : "0") +
                         "\n");
}

std::string Installed(char name, const std::string& number) {
    const std::string net = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
    return KeyLines(
               "SYSTEM\\CurrentControlSet\\Control\\Class\\" + net + "\\" + number,
               "\"ComponentId\"=\"CVTA_muxmp\"\n\"NetCfgInstanceId\"=\"" + Guid(name) + "\"\n") +
           KeyLines("SYSTEM\\CurrentControlSet\\Control\\Network\\" + net + "\\" + Guid(name) +
                        "\\Connection",
                    std::string("\"Name\"=\"") + name +
                        "\"\n\"PnpInstanceID\"=\"ROOT\\\\CVTA_MUXMP\\\\" + number + "\"\n") +
           KeyLines("SYSTEM\\CurrentControlSet\\Enum\\ROOT\\CVTA_MUXMP\\" + number,
                    "\"DeviceDesc\"=\"@oem1.inf,%mp%;Miniport " + number + "\"\n");
}

// The interfaces behind the loopback: name, address and whether it is up.
std::string Interfaces() {
    PMIB_IF_TABLE2 table = nullptr;
    if (GetIfTable2(&table) != NO_ERROR) return "none";
    std::string rows;
    for (ULONG i = 1; i < table->NumEntries; ++i) {
        const MIB_IF_ROW2& row = (&table->Table[0])[i];
        rows += rows.empty() ? "" : " ";
        rows += platform::ToUtf8(row.Alias) + "=";
        if (row.PhysicalAddressLength != 0) rows += "0123456789ABCDEF"[row.PhysicalAddress[0]];
        rows += row.OperStatus == IfOperStatusUp ? "+" : "-";
    }
    FreeMibTable(table);
    return rows;
}

// A, B and C are adapters, T is a team of A and B, V a VLAN over it, W one over C, X one over
// nothing, and Y one with a row of its own.
const std::string kMachine =
    Lower('A', "T", MemberOf('T')) + Lower('B', "T", MemberOf('T')) + Lower('C', "WY") +
    Lower('T', "V", TypeAndPrimary('1', 'B')) + Installed('X', "0004") + Installed('V', "0005") +
    Installed('T', "0006") + Installed('W', "0007") + Installed('Y', "0008") + Adapter('Y', true);

TEST(MiniportInterfaces, AreUpWhileAnAdapterBelowIs) {
    const struct {
        bool a, b, c;
        const char* rows;
    } cases[] = {
        {true, true, true, "Y=0+ A=A+ B=B+ C=C+ X=- V=A+ T=A+ W=C+"},
        {false, true, false, "Y=0+ A=A- B=B+ C=C- X=- V=B+ T=B+ W=C-"},
        {false, false, true, "Y=0+ A=A- B=B- C=C+ X=- V=A- T=A- W=C+"},
    };
    for (const auto& row : cases) {
        const FactsMachine facts(kMachine + Adapter('A', row.a) + Adapter('B', row.b) +
                                 Adapter('C', row.c));
        EXPECT_EQ(Interfaces(), row.rows);
    }
}

TEST(MiniportInterfaces, AreInTheTableOfAdapters) {
    const FactsMachine facts(kMachine + Adapter('A', true));
    ULONG size = 0;
    ASSERT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, nullptr, &size), ERROR_BUFFER_OVERFLOW);
    std::vector<ULONGLONG> block(size / sizeof(ULONGLONG) + 1);
    auto* adapter = reinterpret_cast<PIP_ADAPTER_ADDRESSES>(block.data());
    ASSERT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, adapter, &size), NO_ERROR);
    while (adapter->AdapterName != Guid('T'))
        ASSERT_NE(adapter = adapter->Next, nullptr);
    EXPECT_EQ(platform::ToUtf8(adapter->FriendlyName), "T");
    EXPECT_EQ(platform::ToUtf8(adapter->Description), "Miniport 0006");
    EXPECT_EQ(adapter->OperStatus, IfOperStatusUp);
}

TEST(MiniportInterfaces, DamagedTreesEnd) {
    const struct {
        std::string file;
        const char* rows;
    } cases[] = {
        {Lower('T', "TV") + Lower('V', "T"), "V=- T=-"},
        {Lower('T', "TV") + Lower('V', "T") + Lower('A', "V") + Adapter('A', true),
         "A=A+ V=A+ T=A+"},
        {Lower('A', "BT") + Lower('B', "V") + Adapter('A', true) + Adapter('B', false),
         "A=A+ B=B- V=B- T=A+"},
        {KeyLines("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\" + Guid('A'),
                  "\"UpperBindings\"=hex(7):5c\n") +
             Adapter('A', true),
         "A=A+ V=- T=-"},
    };
    for (const auto& row : cases) {
        const FactsMachine facts(row.file + Installed('V', "0001") + Installed('T', "0002") +
                                 Installed('T', "0003"));
        EXPECT_EQ(Interfaces(), row.rows) << &row - cases;
    }
}

TEST(MiniportInterfaces, ManyEntriesAreReadOnce) {
    const FactsMachine facts(Lower('A', "") + Lower('T', "T") + Adapter('A', true) +
                             Installed('T', "0001"));
    std::u16string entries;
    for (int i = 0; i < 100'000; ++i)
        entries += platform::FromUtf8(DeviceName('T')) + u'\0';
    HKEY key = nullptr;
    const std::string path = "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\";
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, platform::FromUtf8(path + Guid('A')).c_str(), 0,
                  KEY_SET_VALUE, &key);
    RegSetValueExW(key, u"UpperBindings", 0, REG_MULTI_SZ,
                   reinterpret_cast<const BYTE*>(entries.data()),
                   static_cast<DWORD>(entries.size() * sizeof(char16_t)));
    RegCloseKey(key);
    EXPECT_EQ(Interfaces(), "A=A+ T=A+");
}

// What a query leaves in the buffer: the error, or all bytes as hexadecimal digits.
std::string Ask(char device, DWORD oid, std::vector<BYTE> buffer) {
    const std::u16string path = platform::FromUtf8("\\\\.\\" + Guid(device));
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return "closed " + std::to_string(GetLastError());
    DWORD size = 0;
    const BOOL isAnswered = DeviceIoControl(file, 0x170002, &oid, sizeof(oid), buffer.data(),
                                            static_cast<DWORD>(buffer.size()), &size, nullptr);
    const DWORD error = isAnswered ? 0 : GetLastError();
    CloseHandle(file);
    if (error != 0) return "error " + std::to_string(error);
    std::string digits;
    for (DWORD i = 0; i < size; ++i)
        digits += {"0123456789abcdef"[buffer[i] / 16], "0123456789abcdef"[buffer[i] % 16]};
    return digits;
}

// The members of a team's answer: name, `*` when active, link.
std::string Members(const std::string& answer) {
    if (answer.size() != 2 * 168 || answer.substr(0, 8) != "01000000") return answer;
    const std::size_t count = static_cast<std::size_t>(answer[9] - '0');
    std::string members;
    for (std::size_t at = 16; at < 16 + count * 40; at += 40) {
        members += static_cast<char>(answer[at + 6] - 'a' + 'A');
        if (answer.substr(at + 32, 2) == "01") members += '*';
        members += answer.substr(at + 34, 2) == "01" ? '+' : '-';
    }
    const bool isRestZero = answer.find_first_not_of('0', 16 + count * 40) == answer.npos;
    return members + (isRestZero ? "" : " and more");
}

TEST(MuxDriver, AnswersForTeamsFromTheTree) {
    const struct {
        std::string file;
        const char* members;
        const char* why;
    } cases[] = {
        {Adapter('A', true) + Adapter('B', true), "A+B*+", "the primary"},
        {Adapter('A', true) + Adapter('B', false), "A*+B-", "the primary has no link"},
        {Adapter('A', true), "A*+B-", "an adapter that isn't in the tables has none"},
        {"", "A-B-", "no member has one"},
        {Adapter('A', true) + Adapter('B', true) + Lower('T', "", TypeAndPrimary('1', 'C')),
         "A*+B+", "the primary is no member"},
        {Adapter('A', true) + Adapter('B', false) + Lower('T', "", TypeAndPrimary('4', 'B')),
         "A*+B-", "every member with a link"},
        {Adapter('A', true) + Adapter('B', true) + Lower('T', "", TypeAndPrimary('4', 'B')),
         "A*+B*+", "both"},
        {Lower('A', "", R"("TeamDeviceName"="x\\)" + Guid('T') + "\"\n") +
             Lower('B', "", "\"TeamDeviceName\"=dword:1\n"),
         "A-", "what stands behind the last backslash"},
        {FactLines("Miniports\\" + Guid('T'), "\"0xFFA0C909\"=hex:07\n"), "07",
         "the machine file's own answer"},
        {FactLines("Miniports\\" + Guid('T'), "\"0xFFA0C915\"=hex:07\n"), "A-B-",
         "an answer to something else"},
    };
    for (const auto& row : cases) {
        const FactsMachine facts(kMachine + row.file);
        EXPECT_EQ(Members(Ask('T', 0xFFA0C909, std::vector<BYTE>(168))), row.members) << row.why;
    }
    const FactsMachine facts(kMachine);
    EXPECT_EQ(Ask('T', 0xFFA0C909, std::vector<BYTE>(167)), "error 122");
    EXPECT_EQ(Ask('T', 0xFFA0C915, std::vector<BYTE>(8)), "error 50");
    EXPECT_EQ(Ask('V', 0xFFA0C909, std::vector<BYTE>(168)), "closed 2") << "a VLAN";
    EXPECT_EQ(Ask('A', 0xFFA0C909, std::vector<BYTE>(168)), "closed 2") << "a member";
}

TEST(MuxDriver, NamesEightMembers) {
    std::string file = Installed('T', "0001") + Lower('T', "", TypeAndPrimary('1', 'F'));
    for (const char name : std::string("789ABCDEF"))
        file += Lower(name, "", MemberOf('T')) + Adapter(name, true);
    const FactsMachine facts(file);
    const std::string answer = Ask('T', 0xFFA0C909, std::vector<BYTE>(168));
    EXPECT_EQ(answer.substr(0, 16), "0100000008000000");
    EXPECT_EQ(answer.substr(16 + 7 * 40),
              "000000e000000000000000000000000e"
              "00010000");
}

TEST(Miniports, ANumberInTheBufferIsAsked) {
    const FactsMachine facts(FactLines("Miniports\\" + Guid('A'),
                                       "\"0xFFA0C930\"=hex:01\n"
                                       "\"0xffa0c930/0x3\"=hex:03\n"
                                       "\"0xFFA0C931/4\"=hex:04\n"));
    EXPECT_EQ(Ask('A', 0xFFA0C930, {3, 0, 0, 0, 9, 9, 9, 9}), "03");
    EXPECT_EQ(Ask('A', 0xFFA0C930, {4, 0, 0, 0}), "01");
    EXPECT_EQ(Ask('A', 0xFFA0C930, {3, 0, 0}), "01") << "no number";
    EXPECT_EQ(Ask('A', 0xFFA0C931, {5, 0, 0, 0}), "error 50");
}

}  // namespace
