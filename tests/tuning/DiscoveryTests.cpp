// What the tab finds out about its adapter and the sibling port.

#include "Discovery.h"

#include "TuningTest.h"

namespace {

using Kind = Sample::Kind;

AdapterContext ContextOf(int port = 1) {
    AdapterContext context;
    const std::u16string path = Wide(Sample::ClassKey(port));
    std::copy(path.begin(), path.end(), context.classKeyPath);
    return context;
}

TEST(GetKeysInfo, FillsBothPorts) {
    for (const Kind kind1 : {Kind::Ethernet, Kind::Ipoib}) {
        for (const Kind kind2 : {Kind::Ethernet, Kind::Ipoib}) {
            for (const int port : {1, 2}) {
                const int other = 3 - port;
                const Kind kinds[] = {kind1, kind2};
                TestMachine test(Sample().Ports(kind1, kind2));
                AdapterContext context = ContextOf(port);
                ASSERT_TRUE(GetKeysInfo(context));
                EXPECT_TRUE(context.first.present);
                EXPECT_EQ(context.first.number, 1);
                EXPECT_EQ(context.first.isEthernet, kinds[port - 1] == Kind::Ethernet);
                EXPECT_EQ(context.first.instanceId, Wide(test.sample.InstanceId(port)));
                EXPECT_TRUE(context.second.present);
                EXPECT_EQ(context.second.number, 2);
                EXPECT_EQ(context.second.isEthernet, kinds[other - 1] == Kind::Ethernet);
                EXPECT_EQ(context.second.instanceId, Wide(test.sample.InstanceId(other)));
                // Both class keys are open for writing.
                for (const TuningAdapter* adapter : {&context.first, &context.second}) {
                    const DWORD mark = adapter->number;
                    EXPECT_EQ(RegSetValueExW(adapter->key.Get(), u"Mark", 0, REG_DWORD,
                                             reinterpret_cast<const BYTE*>(&mark), sizeof(mark)),
                              ERROR_SUCCESS);
                }
                EXPECT_EQ(test.Number(Sample::ClassKey(port), u"Mark"), 1u);
                EXPECT_EQ(test.Number(Sample::ClassKey(other), u"Mark"), 2u);
                EXPECT_EQ(LogOf(test), Lines());
            }
        }
    }
}

TEST(GetKeysInfo, ACardWithOnePortHasNoSecondAdapter) {
    TestMachine test(Sample().OnePort(Kind::Ipoib));
    AdapterContext context = ContextOf();
    EXPECT_TRUE(GetKeysInfo(context));
    EXPECT_FALSE(context.second.present);
    EXPECT_EQ(test.LogBytes(), "") << "the log is only opened for a sibling";
}

TEST(GetKeysInfo, ReadsTheStoredScenario) {
    const struct {
        const char* line;
        bool result;
        LONG control;
        const char* reason;
    } cases[] = {
        {"\"TuningScenario\"=\"1086\"", true, 1086, ""},
        {"\"TuningScenario\"=\"1087\"", true, 1087, ""},
        {"\"TuningScenario\"=\"1088\"", true, 1088, ""},
        {"\"TuningScenario\"=\"1096\"", true, 1096, ""},
        {"\"TuningScenario\"=\"1098\"", true, 1098, ""},
        {"\"TuningScenario\"=\"x10871\"", true, 1087, "a text that holds it"},
        {"\"TuningScenario\"=\"1098 1086\"", true, 1098, "the later one in the table's order"},
        {"\"TuningScenario\"=\"1095\"", true, 0, "no scenario's button"},
        {"\"TuningScenario\"=dword:0000043e", true, 0, "no text"},
        {"\"Other\"=\"1086\"", true, 0, "no value"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        TestMachine test(Sample().PortValue(1, c.line));
        AdapterContext context = ContextOf();
        EXPECT_EQ(GetKeysInfo(context), c.result) << c.reason;
        EXPECT_EQ(context.scenarioControl, c.control) << c.reason;
    }
    TestMachine test(Sample().PortValue(1, "\"TuningScenario\"=\"" + std::string(130, '1') + "\""));
    AdapterContext context = ContextOf();
    EXPECT_FALSE(GetKeysInfo(context)) << "262 bytes";
    EXPECT_FALSE(static_cast<bool>(context.first.key));
}

TEST(GetKeysInfo, TellsTheKindByTheComponentInAnyCase) {
    const struct {
        const char* component;
        bool ethernet;
    } cases[] = {
        {"CVTA\\\\ETH_PORT", true}, {"xEtHx", true}, {"CVTA\\\\IPOIB_PORT", false}, {"", false}};
    for (const auto& c : cases) {
        TestMachine test(Sample()
                             .OnePort(Kind::Ethernet)
                             .PortValue(1, "\"ComponentId\"=\"" + std::string(c.component) + "\""));
        AdapterContext context = ContextOf();
        EXPECT_TRUE(GetKeysInfo(context));
        EXPECT_EQ(context.first.isEthernet, c.ethernet) << c.component;
    }
}

// The card's children in the device tree, and which of them is found beside port 1.
TEST(GetKeysInfo, FindsTheSibling) {
    const std::string port1 = Sample::InstanceId(1, Kind::Ethernet);
    const std::string port2 = Sample::InstanceId(2, Kind::Ethernet);
    const std::string other = "CVTA\\NONE\\1";
    const std::string lower = "CVTA\\eth_port\\1";
    const struct {
        std::vector<std::string> children;
        bool found;
        const char* reason;
    } cases[] = {
        {{port1, port2}, true, "the next one"},
        {{port1, other, port2}, false, "only the next one counts"},
        {{port1, lower, port2}, false, "small letters don't count"},
        {{port2, port1}, true, "the last child looks from the first on"},
        {{other, port2, port1}, true, "and passes others over"},
        {{other, lower, port1}, false, "and may find none"},
        {{port1}, false, "itself doesn't count"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        std::string line = "\"PCI\\\\VEN_1C57&DEV_6340\\\\4&1D8E6F20&0&0018\"=\"";
        for (const std::string& child : c.children) {
            if (&child != &c.children.front()) line += ';';
            for (const char ch : child)
                line += ch == '\\' ? std::string("\\\\") : std::string(1, ch);
        }
        line += '"';
        Sample sample;
        sample.With("SOFTWARE\\StandIn\\DeviceTree", line);
        for (const std::string& id : {other, lower})
            sample.With("SYSTEM\\CurrentControlSet\\Enum\\" + id, "\"Service\"=\"none\"");
        TestMachine test(sample);
        AdapterContext context = ContextOf();
        EXPECT_TRUE(GetKeysInfo(context));
        EXPECT_EQ(context.second.present, c.found);
        if (c.found) {
            EXPECT_EQ(context.second.instanceId, Wide(port2));
        }
    }
}

TEST(GetKeysInfo, AnyFailureLeavesNoKeyOpen) {
    const struct {
        const char* call;
        const char* argument;
        DWORD error;
        std::uint64_t first;
        int port;
    } cases[] = {
        {"RegOpenKeyExW", "", 5, 1, 1},
        {"RegQueryValueExW", "ComponentId", 2, 1, 1},
        {"RegQueryValueExW", "TuningScenario", 5, 1, 1},
        {"RegQueryValueExW", "NetCfgInstanceId", 2, 1, 1},
        {"RegQueryValueExW", "PnpInstanceID", 2, 1, 1},
        {"CM_Locate_DevNode_ExW", "", 13, 1, 1},
        {"CM_Get_Device_ID_ExW", "", 19, 1, 1},
        {"CM_Get_Parent_Ex", "", 13, 1, 2},
        {"CM_Get_Child_Ex", "", 13, 1, 2},
        {"CreateFileW", "", 5, 1, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.call << " " << c.argument);
        TestMachine test;
        test.machine.faults.FailCalls(c.call, Wide(c.argument), c.error, c.first);
        AdapterContext context = ContextOf(c.port);
        EXPECT_FALSE(GetKeysInfo(context));
        EXPECT_FALSE(static_cast<bool>(context.first.key));
        EXPECT_FALSE(static_cast<bool>(context.second.key));
        EXPECT_FALSE(context.second.present);
        EXPECT_TRUE(test.machine.faults.Fired());
    }
}

TEST(GetKeysInfo, AMissingSiblingConnectionIsLogged) {
    const std::string id = Sample::InstanceId(2, Kind::Ethernet);
    TestMachine test(Sample().With(
        std::string("SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-"
                    "08002BE10318}\\") +
            Sample::Guid(2) + "\\Connection",
        "\"PnpInstanceID\"=\"other\""));
    AdapterContext context = ContextOf();
    EXPECT_FALSE(GetKeysInfo(context));
    EXPECT_EQ(
        LogOf(test),
        Lines({"FindAdapterGuidByNetKey: Network Adapter with PnpInstanceID = " + id + " not found",
               ""}));
}

constexpr char kClassPath[] =
    "SYSTEM\\CurrentControlSet\\Control\\class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr char kNetworkPath[] =
    "SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";

TEST(FindAdapter, ComparesWithoutRegardToCase) {
    TestMachine test;
    WCHAR guid[kPathCapacity];
    EXPECT_EQ(FindAdapterGuidByNetKey(nullptr, u"Name", u"LOCAL AREA CONNECTION 4", guid,
                                      ARRAYSIZE(guid)),
              ERROR_SUCCESS);
    EXPECT_EQ(std::u16string(guid), Wide(Sample::Guid(2)));
    ScopedRegKey key;
    EXPECT_EQ(FindAdapterByGuid(nullptr, u"{a12f7e08-5d3c-4b9a-9c41-3e5f20d7b811}", key),
              ERROR_SUCCESS);
    EXPECT_TRUE(static_cast<bool>(key));
}

TEST(FindAdapter, LogsWhyItFailed) {
    for (const DWORD error : {2u, 5u}) {
        TestMachine test;
        test.machine.faults.FailCalls("RegOpenKeyExW", u"", error);
        WCHAR guid[kPathCapacity];
        ScopedRegKey key;
        { const platform::QuietScope quiet; }
        OpenLog log;
        EXPECT_EQ(FindAdapterGuidByNetKey(&log.stream, u"Name", u"x", guid, ARRAYSIZE(guid)),
                  static_cast<LONG>(error));
        EXPECT_EQ(FindAdapterByGuid(&log.stream, u"{x}", key), static_cast<LONG>(error));
        log.stream.Close();
        const std::string reason = error == 2 ? ": Key not found: " : ": Error opening key: ";
        EXPECT_EQ(LogOf(test), Lines({"FindAdapterGuidByNetKey" + reason + kNetworkPath, "",
                                      "FindAdapterByGuid" + reason + kClassPath, ""}));
    }
    TestMachine test;
    ScopedRegKey key;
    {
        OpenLog log;
        EXPECT_EQ(FindAdapterByGuid(&log.stream, u"{x}", key), ERROR_NO_MORE_ITEMS);
    }
    EXPECT_FALSE(static_cast<bool>(key));
    EXPECT_EQ(LogOf(test), Lines({"FindAdapterByGuid: Adapter GUID not found: {x}", ""}));
}

TEST(FindAdapter, AFailedEnumerationSkipsOneSubkey) {
    TestMachine test;
    test.machine.faults.FailCalls("RegEnumKeyExW", u"", 5, 1, 1);
    ScopedRegKey key;
    EXPECT_EQ(FindAdapterByGuid(nullptr, Wide(Sample::Guid(2)).c_str(), key), ERROR_SUCCESS);
    key.Reset();
    test.machine.faults.FailCalls("RegEnumKeyExW", u"", 5);
    EXPECT_EQ(FindAdapterByGuid(nullptr, Wide(Sample::Guid(2)).c_str(), key), ERROR_NO_MORE_ITEMS)
        << "an enumeration that only fails comes to an end";
}

TEST(GetAdapterConnectionName, KeepsTheNameThatCantBeRead) {
    const struct {
        const char* value;
        DWORD error;
        bool result;
        const char* name;
    } cases[] = {
        {"none", 2, true, "Local Area Connection 3"},
        {"Name", 2, true, "before"},
        {"NetCfgInstanceId", 2, false, "before"},
    };
    for (const auto& c : cases) {
        TestMachine test;
        OpenPort port(1);
        const std::u16string before = u"before";
        std::copy(before.begin(), before.end(), port.connectionName);
        test.machine.faults.FailCalls("RegQueryValueExW", Wide(c.value), c.error);
        EXPECT_EQ(GetAdapterConnectionName(port), c.result) << c.value;
        EXPECT_EQ(platform::ToUtf8(port.connectionName), c.name) << c.value;
    }
}

}  // namespace
