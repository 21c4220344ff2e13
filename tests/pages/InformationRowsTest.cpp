// The fifteen facts and their sources.

#include "InformationTest.h"

namespace {

constexpr char16_t kNone[] = u"     -     ";

// An adapter's rows, and what their refresh has told.
struct Adapter final : TestMachine, RefreshObserver {
    explicit Adapter(const Sample& described = FullSample()) : TestMachine(described) { Attach(); }
    bool StopRequested() override { return asked++ == stopAt; }
    void Report(const UserFailure& failure) override {
        reports.emplace_back(failure.message, failure.error);
    }

    bool Refresh(const std::u16string& name = Wide(Sample::Guid(1))) {
        const std::u16string key = Wide(Sample::ClassKey(1));
        return RefreshRows({key.c_str(), name.c_str()}, *this, rows);
    }
    Texts Values() const {
        Texts values;
        for (const InformationRow& row : rows)
            values.emplace_back(row.value);
        return values;
    }

    InformationRows rows = {};
    int stopAt = -1;
    int asked = 0;
    std::vector<std::pair<UINT, DWORD>> reports;
};

// The values of a fresh adapter, of whom nothing was known before.
Texts ValuesOf(const Sample& sample, const std::u16string& name = Wide(Sample::Guid(1))) {
    Adapter adapter(sample);
    EXPECT_TRUE(adapter.Refresh(name));
    EXPECT_TRUE(adapter.reports.empty());
    return adapter.Values();
}

std::string Bytes(std::size_t count, const std::string& hex) {
    std::string text = hex;
    while (--count > 0)
        text += "," + hex;
    return text;
}

TEST(InformationRows, AnswersAreShownAsTheirRowsSay) {
    const std::string link = Bytes(8, "00") + ",";
    const std::string directions = "," + Bytes(16, "00");
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
        {ROW_PORT_NUMBER, "0xFFA0C923", "0b", u"b", "hexadecimal, lower case"},
        {ROW_BUS_TYPE, "0xFFA0C911", "01", u"PCI 5.0 Gbps x8", "PCI"},
        {ROW_BUS_TYPE, "0xFFA0C911", "09", u"Unknown", "a kind that isn't listed"},
        {ROW_BUS_TYPE, "0xFFA0C912", "03", u"PCI-E 8.0 Gbps x8", "third speed"},
        {ROW_BUS_TYPE, "0xFFA0C912", "04", u"PCI-E  x8", "a speed that isn't listed"},
        {ROW_BUS_TYPE, "0xFFA0C913", "08,00", kNone, "one of three is long"},
        {ROW_LINK_SPEED, "0x00010208", link + "80,b2,e6,0e,00,00,00,00", u"0.3 Gbps/Full Duplex",
         "up to the speed; a quarter is rounded up"},
        {ROW_LINK_SPEED, "0x00010208", link + Bytes(8, "ff") + directions,
         u"18446744073.7 Gbps/Full Duplex", "highest"},
        {ROW_LINK_SPEED, "0x00010208", Bytes(15, "01"), kNone, "less than the speed"},
        {ROW_PART_NUMBER, "0xFFA0C916", "41,42,20,43", u"AB", "a blank ends it"},
        {ROW_PART_NUMBER, "0xFFA0C916", "e4,80", u"\u00E4\u20AC", "of the code page"},
        {ROW_PART_NUMBER, "0xFFA0C916", Bytes(250, "41"), std::u16string(249, u'A'), "longest"},
        {ROW_PART_NUMBER, "0xFFA0C916", Bytes(251, "41"), kNone, "long"},
        {ROW_REVISION_ID, "0xFFA0C919", "0f", u"F", "one digit"},
        {ROW_USER_NAME, "0xFFA0C925", Bytes(24, "62"), std::u16string(24, u'b'), "longest"},
        {ROW_PKEY, "0xFFA0C933", "31,20,32", u"1 2", "a blank belongs to it"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.oid) + ", " + c.reason);
        Texts expected = FullValues();
        expected[c.row] = c.shown;
        EXPECT_EQ(ValuesOf(FullSample().With(MiniportKey(), Answer(c.oid, c.hex))), expected);
    }
}

TEST(InformationRows, TheDriverVersionIsAnyTextOfAtMost500Bytes) {
    for (const std::size_t length : {249u, 250u}) {
        const Sample sample =
            FullSample().PortValue(1, "\"DriverVersion\"=\"" + std::string(length, '4') + "\"");
        EXPECT_EQ(ValuesOf(sample)[ROW_DRIVER_VERSION],
                  length == 249 ? std::u16string(length, u'4') : kNone);
    }
}

TEST(InformationRows, TheNetworkRowsComeFromTheAdaptersEntry) {
    constexpr char16_t kName[] = u"Local Area Connection 3";
    constexpr char16_t kAddress[] = u"192.168.7.10";
    const struct {
        std::string facts;
        std::u16string status;
        std::u16string name;
        std::u16string address;
        const char* reason;
    } cases[] = {
        {"\"Up\"=dword:0", u"Disconnected", kName, kAddress, "no link"},
        {"\"Hidden\"=dword:1", u"Disabled", kNone, kNone, "disabled"},
        {"\"Addresses\"=\"fe80::1%12;192.168.7.10\"", u"Connected", kName, kNone, "IPv6 first"},
        {"\"Alias\"=\"" + std::string(256, 'n') + "\"", u"Connected", std::u16string(249, u'n'),
         kAddress, "a long name is cut"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const Texts values = ValuesOf(FullSample().With(InterfaceKey(), c.facts));
        EXPECT_EQ(values[ROW_NETWORK_STATUS], c.status);
        EXPECT_EQ(values[ROW_FRIENDLY_NAME], c.name);
        EXPECT_EQ(values[ROW_IPV4_ADDRESS], c.address);
    }
}

TEST(InformationRows, ANameOfNoAdapterShowsNone) {
    const struct {
        const char16_t* name;  // NetCfgInstanceId
        bool isDevice;
        const char* reason;
    } cases[] = {
        {u"", false, "no name in the class key"},
        {u"{6B29FC40-CA47-4067-B31D-00DD010662DA}\\x", false, "longer"},
        {u"{6b29fc40-ca47-4067-b31d-00dd010662da}", true, "adapters' names have a case"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        Texts expected = FullValues();
        if (!c.isDevice) std::fill(expected.begin() + 1, expected.end(), kNone);
        expected[ROW_NETWORK_STATUS] = u"Disabled";
        expected[ROW_FRIENDLY_NAME] = expected[ROW_IPV4_ADDRESS] = kNone;
        EXPECT_EQ(ValuesOf(FullSample(), c.name), expected);
    }
}

TEST(InformationRows, SourcesThatFailLaterKeepTheLastValueOrShowNone) {
    Adapter adapter;
    ASSERT_TRUE(adapter.Refresh());
    const InformationRows full = adapter.rows;
    Merge(adapter, {{InterfaceKey(), "\"Hidden\"=dword:1"},
                    {Sample::ClassKey(1),
                     "\"DriverVersion\"=-\n[-HKEY_LOCAL_MACHINE\\" + MiniportKey() + "]"}});
    ASSERT_TRUE(adapter.Refresh());
    Texts expected = FullValues();
    for (const std::size_t row :
         {ROW_PORT_NUMBER, ROW_FRIENDLY_NAME, ROW_IPV4_ADDRESS, ROW_USER_NAME, ROW_PKEY})
        expected[row] = kNone;
    expected[ROW_NETWORK_STATUS] = u"Disabled";
    EXPECT_EQ(adapter.Values(), expected);

    // What comes back is as it was, to the last byte behind the texts.
    MergeFile(adapter, FullSample().With(InterfaceKey(), "\"Hidden\"=dword:0").Text());
    ASSERT_TRUE(adapter.Refresh());
    EXPECT_EQ(std::memcmp(&adapter.rows, &full, sizeof(full)), 0);
}

// The fault sweep has the single failures.
TEST(InformationRows, ATableThatGrowsIsReadFourTimes) {
    for (const unsigned overflows : {4u, 5u}) {
        Adapter adapter;
        adapter.machine.trace.Start();
        adapter.machine.faults.FailCalls("GetAdaptersAddresses", u"", ERROR_BUFFER_OVERFLOW, 1,
                                         overflows);
        ASSERT_TRUE(adapter.Refresh());
        EXPECT_EQ(adapter.machine.trace.Count("LocalAlloc"), 4u);
        EXPECT_EQ(adapter.Values()[ROW_NETWORK_STATUS],
                  overflows == 4 ? u"Connected" : u"Disabled");
        ASSERT_EQ(adapter.reports.size(), overflows - 4);
        for (const auto& report : adapter.reports)
            EXPECT_EQ(report, std::pair(UINT{163}, DWORD{ERROR_BUFFER_OVERFLOW}));
    }
}

TEST(InformationRows, AStopEndsARefreshBeforeTheNextRow) {
    constexpr int kQuestions = 13;  // before the network rows and before each other row
    for (int stopAt = 0; stopAt <= kQuestions; ++stopAt) {
        Adapter adapter;
        adapter.stopAt = stopAt;
        EXPECT_EQ(adapter.Refresh(), stopAt == kQuestions);
        EXPECT_EQ(adapter.asked, std::min(stopAt + 1, kQuestions));
    }
}

}  // namespace
