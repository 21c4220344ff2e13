// What the tab finds out about its adapter and the sibling port.

#include "Discovery.h"

#include <regex>

#include "AdapterValues.h"
#include "TuningTest.h"

namespace {

using Kind = Sample::Kind;

constexpr char kClassPath[] =
    "SYSTEM\\CurrentControlSet\\Control\\class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr char kNetworkPath[] =
    "SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";

std::string Quoted(const std::string& text) {
    return '"' + std::regex_replace(text, std::regex("\\\\"), "$&$&") + '"';
}

bool GetKeysInfo(AdapterContext& context) {
    DiscoveryFailure failure;
    const bool found = GetKeysInfo(context, failure);
    EXPECT_EQ(found, failure.text[0] == 0) << "a failure has its reason";
    return found;
}

AdapterContext ContextOf(int port = 1) {
    AdapterContext context;
    const std::u16string path = Wide(Sample::ClassKey(port));
    path.copy(context.identity.classKeyPath, path.size());
    return context;
}

TEST(GetKeysInfo, FillsBothPorts) {
    for (const Kind kind1 : {Kind::Ethernet, Kind::Ipoib}) {
        for (const Kind kind2 : {Kind::Ethernet, Kind::Ipoib}) {
            for (const int port : {1, 2}) {
                TestMachine test(Sample().Ports(kind1, kind2));
                AdapterContext context = ContextOf(port);
                ASSERT_TRUE(GetKeysInfo(context));
                for (const TuningAdapter* found : {&context.first, &context.second}) {
                    const bool isFirst = found == &context.first;
                    const int its = isFirst ? port : 3 - port;
                    EXPECT_TRUE(found->present);
                    EXPECT_EQ(found->number, isFirst ? 1 : 2);
                    EXPECT_EQ(found->isEthernet, (its == 1 ? kind1 : kind2) == Kind::Ethernet);
                    EXPECT_EQ(found->instanceId, Wide(test.sample.InstanceId(its)));
                    SetAdapterKey(nullptr, *found, u"Mark", its);
                    EXPECT_EQ(test.PortText(its, u"Mark"), Wide(std::to_string(its)));
                }
                EXPECT_EQ(test.LogLines(), Lines());
            }
        }
    }
}

TEST(GetKeysInfo, ReadsTheStoredScenarioAndTheKindOfPort) {
    const struct {
        std::string line;
        LONG control;
        const char* reason;
        bool ethernet = true;
        bool result = true;
    } cases[] = {
        {"\"TuningScenario\"=\"1086\"", 1086, "single port"},
        {"\"TuningScenario\"=\"x10871\"", 1087, "a text that holds it"},
        {"\"TuningScenario\"=\"1098 1086\"", 1098, "the later one in the table's order"},
        {"\"TuningScenario\"=\"1095\"", 0, "no scenario's button"},
        {"\"TuningScenario\"=dword:0000043e", 0, "no text"},
        {"\"TuningScenario\"=\"" + std::string(130, '1') + "\"", 0, "262 bytes", true, false},
        {"\"ComponentId\"=\"xEtHx\"", 0, "anywhere in the text"},
        {"\"ComponentId\"=\"\"", 0, "an empty component", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample().PortValue(1, c.line));
        AdapterContext context = ContextOf();
        EXPECT_EQ(GetKeysInfo(context), c.result);
        EXPECT_EQ(context.scenarioControl, c.control);
        EXPECT_EQ(context.first.isEthernet, c.ethernet);
        EXPECT_EQ(static_cast<bool>(context.first.key), c.result);
    }
}

// Which of the card's children in the device tree is found beside port 1.
TEST(GetKeysInfo, FindsTheSibling) {
    const std::string port1 = Sample::InstanceId(1, Kind::Ethernet);
    const std::string port2 = Sample::InstanceId(2, Kind::Ethernet);
    const std::string other = "TSR4\\NONE\\1";
    const std::string lower = "TSR4\\eth_port\\1";
    const struct {
        std::string children;
        bool found;
        const char* reason;
    } cases[] = {
        {port1 + ";" + port2, true, "the next one"},
        {port1 + ";" + other + ";" + port2, false, "only the next one counts"},
        {port2 + ";" + port1, true, "the last child looks from the first on"},
        {other + ";" + port2 + ";" + port1, true, "and passes others over"},
        {other + ";" + lower + ";" + port1, false, "and may find none"},
        {port1, false, "itself doesn't count"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test(Sample()
                             .With("SOFTWARE\\StandIn\\DeviceTree",
                                   Quoted(Sample::BusInstanceId()) + "=" + Quoted(c.children))
                             .With("SYSTEM\\CurrentControlSet\\Enum\\" + other, "")
                             .With("SYSTEM\\CurrentControlSet\\Enum\\" + lower, ""));
        AdapterContext context = ContextOf();
        EXPECT_TRUE(GetKeysInfo(context));
        EXPECT_EQ(context.second.present, c.found);
        EXPECT_EQ(test.LogBytes().empty(), !c.found) << "the log is only opened for a sibling";
        EXPECT_EQ(context.second.instanceId, Wide(c.found ? port2 : ""));
    }
}

TEST(FindAdapter, ComparesWithoutRegardToCase) {
    TestMachine test;
    WCHAR guid[kPathCapacity];
    EXPECT_EQ(FindAdapterGuidByNetKey(nullptr, u"Name", u"LOCAL AREA CONNECTION 4", guid,
                                      ARRAYSIZE(guid)),
              ERROR_SUCCESS);
    EXPECT_EQ(std::u16string(guid), Wide(Sample::Guid(2)));
    RegistryKey key;
    EXPECT_EQ(FindAdapterByGuid(nullptr, u"{a12f7e08-5d3c-4b9a-9c41-3e5f20d7b811}", key),
              ERROR_SUCCESS);
}

TEST(GetAdapterConnectionName, TakesANameOfUpTo260CharactersAndKeepsTheOldOneElse) {
    for (const std::size_t length : {131u, 259u, 260u}) {
        const std::string key = std::string(kNetworkPath) + "\\" + Sample::Guid(1);
        TestMachine test(
            Sample().With(key + "\\Connection", "\"Name\"=\"" + std::string(length, 'n') + "\""));
        OpenPort port(1);
        port.Named("before");
        EXPECT_TRUE(GetAdapterConnectionName(port));
        EXPECT_EQ(std::u16string(port.connectionName),
                  length < 260 ? std::u16string(length, u'n') : u"before");
    }
}

// What else can fail is seen by the fault sweep.
TEST(FindAdapter, LogsAMissingKey) {
    TestMachine test;
    test.machine.faults.FailCalls("RegOpenKeyExW", u"", ERROR_FILE_NOT_FOUND);
    WCHAR guid[kPathCapacity];
    RegistryKey key;
    const Lines lines = Logged(test, [&](LogStream* log) {
        EXPECT_EQ(FindAdapterGuidByNetKey(log, u"Name", u"x", guid, kPathCapacity), 2);
        EXPECT_EQ(FindAdapterByGuid(log, u"{x}", key), 2);
    });
    EXPECT_EQ(lines,
              Lines({std::string("FindAdapterGuidByNetKey: Key not found: ") + kNetworkPath, "",
                     std::string("FindAdapterByGuid: Key not found: ") + kClassPath, ""}));
}

}  // namespace
