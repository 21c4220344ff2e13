// The fifteen facts and their sources.

#include "InformationTest.h"

namespace {

constexpr char16_t kNone[] = u"     -     ";

struct Observer final : RefreshObserver {
    bool StopRequested() override { return asked++ == stopAt; }
    void Report(UINT message, DWORD error) override { reports.emplace_back(message, error); }

    int stopAt = -1;
    int asked = 0;
    std::vector<std::pair<UINT, DWORD>> reports;
};

bool Refresh(TestMachine& test, Observer& observer, InformationRows& rows,
             const std::u16string& name = Wide(Sample::Guid(1))) {
    test.Attach();
    const std::u16string key = Wide(Sample::ClassKey(1));
    return RefreshRows({key.c_str(), name.c_str()}, observer, rows);
}

Texts Values(const InformationRows& rows) {
    Texts values;
    for (const InformationRow& row : rows)
        values.emplace_back(row.value);
    return values;
}

// The values of a fresh adapter, of whom nothing was known before.
Texts ValuesOf(const Sample& sample, const std::u16string& name = Wide(Sample::Guid(1))) {
    TestMachine test(sample);
    Observer observer;
    InformationRows rows = {};
    EXPECT_TRUE(Refresh(test, observer, rows, name));
    EXPECT_TRUE(observer.reports.empty());
    return Values(rows);
}

TEST(InformationRows, OfAnAdapterThatAnswersEverything) {
    TestMachine test(FullSample());
    Observer observer;
    InformationRows rows = {};
    ASSERT_TRUE(Refresh(test, observer, rows));
    EXPECT_EQ(Values(rows), FullValues());
    Texts labels;
    for (const InformationRow& row : rows)
        labels.emplace_back(row.label);
    EXPECT_EQ(labels, (Texts{u"Driver Version", u"Firmware Version", u"Port Number", u"Bus Type",
                             u"Link Speed", u"Part Number", u"Device Id", u"Revision Id",
                             u"Current MAC Address", u"Permanent MAC Address", u"Network Status",
                             u"Adapter Friendly Name", u"IPv4 Address", u"Adapter User Name",
                             u"Adapter PKey"}));
}

std::string Bytes(std::size_t count, const std::string& hex) {
    std::string text = hex;
    while (--count > 0)
        text += "," + hex;
    return text;
}

std::string Link(const std::string& speed, std::size_t more) {
    return Bytes(8, "00") + "," + speed + (more == 0 ? "" : "," + Bytes(more, "00"));
}

TEST(InformationRows, AnswersAreShownAsTheirRowsSay) {
    const struct {
        InformationRowIndex row;
        const char* oid;
        std::string hex;
        std::u16string shown;
        const char* reason;
    } cases[] = {
        {ROW_FIRMWARE_VERSION, "0xFFA0C915", "ff,ff,00,80,ff,ff,ff,ff", u"-1.32768.65535",
         "the first number is signed, the others have 16 bits"},
        {ROW_FIRMWARE_VERSION, "0xFFA0C915", Bytes(7, "01"), kNone, "short"},
        {ROW_FIRMWARE_VERSION, "0xFFA0C915", Bytes(9, "01"), kNone, "long"},
        {ROW_FIRMWARE_VERSION, "0xFFA0C915", "", kNone, "empty"},
        {ROW_PORT_NUMBER, "0xFFA0C923", "0b", u"b", "hexadecimal, lower case"},
        {ROW_PORT_NUMBER, "0xFFA0C923", "", kNone, "empty"},
        {ROW_PORT_NUMBER, "0xFFA0C923", "01,00", kNone, "long"},
        {ROW_BUS_TYPE, "0xFFA0C911", "01", u"PCI 5.0 Gbps x8", "PCI"},
        {ROW_BUS_TYPE, "0xFFA0C911", "02", u"PCI-X 5.0 Gbps x8", "PCI-X"},
        {ROW_BUS_TYPE, "0xFFA0C911", "09", u"Unknown", "a kind that isn't listed"},
        {ROW_BUS_TYPE, "0xFFA0C911", "00", u"Unknown", "no kind"},
        {ROW_BUS_TYPE, "0xFFA0C911", "", kNone, "a kind without bytes"},
        {ROW_BUS_TYPE, "0xFFA0C912", "01", u"PCI-E 2.5 Gbps x8", "first speed"},
        {ROW_BUS_TYPE, "0xFFA0C912", "03", u"PCI-E 8.0 Gbps x8", "third speed"},
        {ROW_BUS_TYPE, "0xFFA0C912", "04", u"PCI-E  x8", "a speed that isn't listed"},
        {ROW_BUS_TYPE, "0xFFA0C913", "ff", u"PCI-E 5.0 Gbps x255", "widest"},
        {ROW_BUS_TYPE, "0xFFA0C913", "08,00", kNone, "one of three is long"},
        {ROW_LINK_SPEED, "0x00010208", Link("00,e4,0b,54,02,00,00,00", 16),
         u"10.0 Gbps/Full Duplex", "whole answer"},
        {ROW_LINK_SPEED, "0x00010208", Link("80,b2,e6,0e,00,00,00,00", 0), u"0.3 Gbps/Full Duplex",
         "up to the speed; a quarter is rounded up"},
        {ROW_LINK_SPEED, "0x00010208", Link("00,00,00,00,00,00,00,80", 16),
         u"9223372036.9 Gbps/Full Duplex", "2 to the power of 63"},
        {ROW_LINK_SPEED, "0x00010208", Link(Bytes(8, "ff"), 16), u"18446744073.7 Gbps/Full Duplex",
         "highest"},
        {ROW_LINK_SPEED, "0x00010208", Bytes(15, "01"), kNone, "less than the speed"},
        {ROW_LINK_SPEED, "0x00010208", Bytes(33, "01"), kNone, "long"},
        {ROW_PART_NUMBER, "0xFFA0C916", "41,42,20,43", u"AB", "a blank ends it"},
        {ROW_PART_NUMBER, "0xFFA0C916", "41,42,00,43", u"AB", "a zero ends it"},
        {ROW_PART_NUMBER, "0xFFA0C916", "41,42,43", u"ABC", "neither of them"},
        {ROW_PART_NUMBER, "0xFFA0C916", "20,41", u"", "a blank at once"},
        {ROW_PART_NUMBER, "0xFFA0C916", "", u"", "empty"},
        {ROW_PART_NUMBER, "0xFFA0C916", "e4,80", u"\u00E4\u20AC", "of the code page"},
        {ROW_PART_NUMBER, "0xFFA0C916", Bytes(250, "41"), std::u16string(249, u'A'),
         "longest, cut to the row"},
        {ROW_PART_NUMBER, "0xFFA0C916", Bytes(251, "41"), kNone, "long"},
        {ROW_DEVICE_ID, "0xFFA0C924", "ff,ff", u"65535", "highest"},
        {ROW_DEVICE_ID, "0xFFA0C924", "ff", kNone, "short"},
        {ROW_REVISION_ID, "0xFFA0C919", "0f", u"F", "one digit"},
        {ROW_CURRENT_MAC_ADDRESS, "0x01010102", Bytes(5, "ee"), kNone, "short"},
        {ROW_CURRENT_MAC_ADDRESS, "0x01010102", Bytes(20, "ee"), kNone, "long"},
        {ROW_PERMANENT_MAC_ADDRESS, "0x01010101", Bytes(6, "0a"), u"0A-0A-0A-0A-0A-0A", "own OID"},
        {ROW_USER_NAME, "0xFFA0C925", Bytes(24, "62"), std::u16string(24, u'b'),
         "longest, without terminator"},
        {ROW_USER_NAME, "0xFFA0C925", Bytes(25, "62"), kNone, "long"},
        {ROW_USER_NAME, "0xFFA0C925", "00,62", u"", "empty text"},
        {ROW_PKEY, "0xFFA0C933", "31,20,32", u"1 2", "a blank belongs to it"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.oid) + ", " + c.reason);
        Texts expected = FullValues();
        expected[c.row] = c.shown;
        EXPECT_EQ(ValuesOf(FullSample().With(MiniportKey(), Answer(c.oid, c.hex))), expected);
    }
}

TEST(InformationRows, TheDriverVersionIsAnyTextThatFits) {
    const struct {
        std::string value;
        std::u16string shown;
        const char* reason;
    } cases[] = {
        {"\"\"", u"", "empty, as stored"},
        {"\"" + std::string(249, '4') + "\"", std::u16string(249, u'4'), "500 bytes"},
        {"\"" + std::string(250, '4') + "\"", kNone, "more"},
        {"hex(1):34,00,2e,00,31,00", u"4.1", "no terminator"},
        {"hex(1):34,00,2e,00,31", u"4.", "an odd number of bytes"},
        {"dword:00000004", kNone, "a number"},
        {"-", kNone, "absent"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const Texts values = ValuesOf(FullSample().PortValue(1, "\"DriverVersion\"=" + c.value));
        EXPECT_EQ(values[ROW_DRIVER_VERSION], c.shown);
    }
}

TEST(InformationRows, TheNetworkRowsComeFromTheAdaptersEntry) {
    const std::string guid = Sample::Guid(1);
    const struct {
        std::string facts;
        std::u16string name;  // NetCfgInstanceId
        Texts shown;          // status, name, address
        const char* reason;
    } cases[] = {
        {"\"Up\"=dword:0",
         Wide(guid),
         {u"Disconnected", u"Local Area Connection 3", u"192.168.7.10"},
         "no link"},
        {"\"Hidden\"=dword:1", Wide(guid), {u"Disabled", kNone, kNone}, "disabled"},
        {"\"Addresses\"=\"fe80::1%12;192.168.7.10\"",
         Wide(guid),
         {u"Connected", u"Local Area Connection 3", kNone},
         "the first address is IPv6"},
        {"\"Addresses\"=\"\"",
         Wide(guid),
         {u"Connected", u"Local Area Connection 3", kNone},
         "no address"},
        {"\"Addresses\"=\"255.254.0.1\"",
         Wide(guid),
         {u"Connected", u"Local Area Connection 3", u"255.254.0.1"},
         "bytes in their order"},
        {"\"Alias\"=\"\xD0\xA1\xD0\xB5\xD1\x82\xD1\x8C\"",
         Wide(guid),
         {u"Connected", u"\u0421\u0435\u0442\u044C", u"192.168.7.10"},
         "a name in Cyrillic"},
        {"\"Alias\"=\"\"", Wide(guid), {u"Connected", kNone, u"192.168.7.10"}, "no name"},
        {"\"Alias\"=\"" + std::string(256, 'n') + "\"",
         Wide(guid),
         {u"Connected", std::u16string(249, u'n'), u"192.168.7.10"},
         "a long name is cut"},
        {"",
         u"{6b29fc40-ca47-4067-b31d-00dd010662da}",
         {u"Disabled", kNone, kNone},
         "names that differ in case are different"},
        {"", u"no GUID", {u"Disabled", kNone, kNone}, "a name that is no GUID"},
        {"", u"", {u"Disabled", kNone, kNone}, "no name in the class key"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const Texts values = ValuesOf(FullSample().With(InterfaceKey(), c.facts), c.name);
        EXPECT_EQ(Texts(values.begin() + ROW_NETWORK_STATUS, values.begin() + ROW_USER_NAME),
                  c.shown);
    }
}

TEST(InformationRows, WithoutADeviceItsRowsShowNone) {
    for (const char16_t* name : {u"", u"no GUID", u"{6B29FC40-CA47-4067-B31D-00DD010662DA}\\x"}) {
        const Texts values = ValuesOf(FullSample(), name);
        EXPECT_EQ(values[ROW_DRIVER_VERSION], u"4.2.9.1");
        for (const int row : {ROW_FIRMWARE_VERSION, ROW_PORT_NUMBER, ROW_BUS_TYPE, ROW_LINK_SPEED,
                              ROW_PART_NUMBER, ROW_DEVICE_ID, ROW_REVISION_ID, ROW_PKEY,
                              ROW_CURRENT_MAC_ADDRESS, ROW_PERMANENT_MAC_ADDRESS, ROW_USER_NAME})
            EXPECT_EQ(values[static_cast<std::size_t>(row)], kNone) << row;
    }
}

TEST(InformationRows, ADisconnectedAdapterIsNotAskedForItsSpeed) {
    TestMachine test(FullSample().With(InterfaceKey(), "\"Up\"=dword:0"));
    Observer observer;
    InformationRows rows = {};
    test.machine.trace.Start();
    ASSERT_TRUE(Refresh(test, observer, rows));
    EXPECT_EQ(rows[ROW_LINK_SPEED].value, std::u16string(u"----"));
    for (const auto& call : test.machine.trace.Records())
        EXPECT_NE(call.argument, u"0x00010208");
}

TEST(InformationRows, SourcesThatFailLaterKeepTheLastValueOrShowNone) {
    TestMachine test(FullSample());
    Observer observer;
    InformationRows rows = {};
    ASSERT_TRUE(Refresh(test, observer, rows));
    const InformationRows full = rows;
    Merge(test, Changes({{InterfaceKey(), "\"Hidden\"=dword:1"},
                         {Sample::ClassKey(1), "\"DriverVersion\"=-"}}) +
                    "\n[-HKEY_LOCAL_MACHINE\\" + MiniportKey() + "]\n");
    ASSERT_TRUE(Refresh(test, observer, rows));
    Texts expected = FullValues();
    for (const int row :
         {ROW_PORT_NUMBER, ROW_FRIENDLY_NAME, ROW_IPV4_ADDRESS, ROW_USER_NAME, ROW_PKEY})
        expected[static_cast<std::size_t>(row)] = kNone;
    expected[ROW_NETWORK_STATUS] = u"Disabled";
    EXPECT_EQ(Values(rows), expected);

    // What comes back is as it was, to the last byte behind the texts.
    Merge(test, FullSample().With(InterfaceKey(), "\"Hidden\"=dword:0").Text());
    ASSERT_TRUE(Refresh(test, observer, rows));
    EXPECT_EQ(std::memcmp(&rows, &full, sizeof(rows)), 0);
}

TEST(InformationRows, AreReadInTheirOrderAndEachSourceOnce) {
    TestMachine test(FullSample());
    test.Attach();
    test.machine.trace.Start();
    Observer observer;
    InformationRows rows = {};
    ASSERT_TRUE(Refresh(test, observer, rows));
    Texts order;
    for (const auto& call : test.machine.trace.Records()) {
        const std::string name = call.name;
        if (name == "GetAdaptersAddresses") order.push_back(u"table");
        if (name == "DeviceIoControl") order.push_back(call.argument);
        if (call.argument == u"DriverVersion") order.push_back(u"driver");
    }
    EXPECT_EQ(order,
              (Texts{u"table", u"table", u"driver", u"0xFFA0C915", u"0xFFA0C911", u"0xFFA0C912",
                     u"0xFFA0C913", u"0xFFA0C923", u"0x00010208", u"0xFFA0C916", u"0xFFA0C924",
                     u"0xFFA0C919", u"0xFFA0C925", u"0xFFA0C933", u"0x01010102", u"0x01010101"}));
}

TEST(InformationRows, ATableThatCannotBeReadIsReportedOnce) {
    using Reports = std::vector<std::pair<UINT, DWORD>>;
    const struct {
        const char* call;
        DWORD error;
        std::uint64_t first;
        std::uint64_t count;
        Reports reports;
        std::size_t blocks;
        const char* reason;
    } cases[] = {
        {"GetAdaptersAddresses",
         ERROR_ACCESS_DENIED,
         1,
         1,
         {{163, ERROR_ACCESS_DENIED}},
         0,
         "at once"},
        {"GetAdaptersAddresses", 232, 2, 1, {{163, 232}}, 1, "with a buffer"},
        {"GetAdaptersAddresses", ERROR_BUFFER_OVERFLOW, 1, 4, {}, 4, "it grows four times"},
        {"GetAdaptersAddresses",
         ERROR_BUFFER_OVERFLOW,
         1,
         5,
         {{163, ERROR_BUFFER_OVERFLOW}},
         4,
         "it grows on and on"},
        {"LocalAlloc",
         ERROR_NOT_ENOUGH_MEMORY,
         1,
         1,
         {{137, ERROR_NOT_ENOUGH_MEMORY}},
         1,
         "no memory"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.call) + ", " + c.reason);
        TestMachine test(FullSample());
        test.Attach();
        test.machine.trace.Start();
        test.machine.faults.FailCalls(c.call, u"", c.error, c.first, c.count);
        Observer observer;
        InformationRows rows = {};
        ASSERT_TRUE(Refresh(test, observer, rows));
        EXPECT_EQ(observer.reports, c.reports);
        EXPECT_EQ(test.machine.trace.Count("LocalAlloc"), c.blocks);
        Texts expected = FullValues();
        if (!c.reports.empty()) {
            expected[ROW_NETWORK_STATUS] = u"Disabled";
            expected[ROW_FRIENDLY_NAME] = expected[ROW_IPV4_ADDRESS] = kNone;
        }
        EXPECT_EQ(Values(rows), expected);
    }
}

TEST(InformationRows, AStopLeavesEachRowWhole) {
    TestMachine test(FullSample());
    InformationRows empty = {};
    InformationRows full = {};
    Observer whole;
    ASSERT_TRUE(Refresh(test, whole, full));
    ASSERT_EQ(whole.asked, 13) << "once before the network rows and before each other row";
    for (int stopAt = 0; stopAt < whole.asked; ++stopAt) {
        SCOPED_TRACE(stopAt);
        test.machine.trace.Clear();
        test.machine.trace.Start();
        InformationRows rows = {};
        Observer observer;
        observer.stopAt = stopAt;
        EXPECT_FALSE(Refresh(test, observer, rows));
        EXPECT_EQ(observer.asked, stopAt + 1);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const std::u16string value = rows[i].value;
            EXPECT_TRUE(value == full[i].value || value == empty[i].value);
        }
        std::size_t bus = 0;
        for (const auto& call : test.machine.trace.Records())
            bus += std::u16string_view(call.argument).starts_with(u"0xFFA0C91") &&
                   call.argument <= u"0xFFA0C913";
        EXPECT_TRUE(bus == 0 || bus == 3) << "the row of three answers is one row";
    }
}

}  // namespace
