// Devices: the tree, the lists, and what a change of their state does.

#include <string>

#include <windows.h>
#include <cfgmgr32.h>
#include <setupapi.h>

#include "Facts.h"
#include "FactsMachine.h"
#include "Text.h"

namespace {

// A device's key with its values, as lines of a machine file.
std::string Device(const std::string& id, const std::string& values = {}) {
    return KeyLines("SYSTEM\\CurrentControlSet\\Enum\\" + id, values);
}

DEVINST Locate(std::u16string id) {
    DEVINST node = 0;
    EXPECT_EQ(CM_Locate_DevNode_ExW(&node, id.data(), 0, nullptr), CR_SUCCESS);
    return node;
}

// The device's parent and all its children, as a walk finds them: "parent: child child".
std::string Family(DEVINST device) {
    const auto id = [](DEVINST node) {
        WCHAR text[MAX_PATH] = {};
        EXPECT_EQ(CM_Get_Device_ID_ExW(node, text, MAX_PATH, 0, nullptr), CR_SUCCESS);
        return platform::ToUtf8(text);
    };
    DEVINST node = 0;
    EXPECT_EQ(CM_Get_Parent_Ex(&node, device, 0, nullptr), CR_SUCCESS);
    std::string family = id(node) + ":";
    CONFIGRET result = CM_Get_Child_Ex(&node, node, 0, nullptr);
    while (result == CR_SUCCESS) {
        family += " " + id(node);
        result = CM_Get_Sibling_Ex(&node, node, 0, nullptr);
    }
    EXPECT_EQ(result, CR_NO_SUCH_DEVNODE);
    return family;
}

TEST(DeviceTree, WhereADeviceStands) {
    const std::string one = Device(R"(V\E\5&a&0&1)");
    const std::string two = Device(R"(V\E\5&a&0&2)");
    const std::string three = Device(R"(V\I\5&a&0&3)");
    const std::string bus = Device(R"(PCI\X\3&1)", "\"ParentIdPrefix\"=\"5&A&0\"\n");
    const struct {
        std::string file;
        std::u16string device;
        std::string family;
        const char* why;
    } cases[] = {
        {one + two + three + Device(R"(PCI\X\0)") +
             FactLines("DeviceTree", R"("PCI\\X\\0"="V\\E\\5&a&0&2; v\\e\\5&A&0&1")"),
         u"V\\E\\5&A&0&1", R"(PCI\X\0: V\E\5&a&0&2 v\e\5&A&0&1)",
         "a row gives order and spelling, and is complete"},
        {one + two + three + bus, u"v\\e\\5&A&0&1",
         R"(PCI\X\3&1: V\E\5&a&0&1 V\E\5&a&0&2 V\I\5&a&0&3)",
         "without a row the prefix tells, in any case, and the ids give the order"},
        {Device(R"(V\E\5&a&0&1)", "\"Address\"=dword:2\n") +
             Device(R"(V\E\5&a&0&2)", "\"Address\"=dword:1\n") + Device(R"(V\A\5&a&0&3)") + bus,
         u"V\\E\\5&a&0&2", R"(PCI\X\3&1: V\E\5&a&0&2 V\E\5&a&0&1 V\A\5&a&0&3)",
         "addresses come first"},
        {one + Device(R"(V\E\5&a&01&2)") + bus, u"V\\E\\5&a&01&2", R"(HTREE\ROOT\0: V\E\5&a&01&2)",
         "'&' follows the prefix; a device without a parent is the root's only child"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        FactsMachine facts(row.file);
        EXPECT_EQ(Family(Locate(row.device)), row.family);
    }
}

// A list with one device.
class DeviceListTest : public testing::Test {
  protected:
    DeviceListTest()
        : facts(Device(R"(V\ETH\1)")), list(SetupDiCreateDeviceInfoList(nullptr, nullptr)) {
        EXPECT_TRUE(SetupDiOpenDeviceInfoW(list, u"v\\eth\\1", nullptr, 0, &device));
    }
    ~DeviceListTest() override { EXPECT_TRUE(SetupDiDestroyDeviceInfoList(list)); }

    bool Change(DWORD state, DWORD scope) {
        SP_PROPCHANGE_PARAMS change = {
            {sizeof(SP_CLASSINSTALL_HEADER), DIF_PROPERTYCHANGE}, state, scope, 0};
        return SetupDiSetClassInstallParamsW(list, &device, &change.ClassInstallHeader,
                                             sizeof change) &&
               SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, list, &device);
    }
    static DWORD Restarts() { return platform::FactNumber(u"Restarts", u"V\\ETH\\1").value_or(0); }

    FactsMachine facts;
    const HDEVINFO list;
    SP_DEVINFO_DATA device = {sizeof(SP_DEVINFO_DATA), {}, 0, 0};
};

TEST_F(DeviceListTest, ARestartCountsWhenTheDeviceRunsAgain) {
    const struct {
        const char* why;
        std::uint64_t failing;  // the change of state that fails, from 1; 0 for none
        bool result;
        DWORD restarts;
    } cases[] = {
        {"all goes well", 0, true, 1},
        {"it isn't even disabled", 1, false, 0},
        {"it is enabled here all the same", 2, true, 1},
        {"it stays disabled", 3, false, 0},
        {"it is repaired by the next one", 0, true, 1},
    };
    // As the usual restart does it: off here, on everywhere, on here.
    const auto cycle = [this] {
        if (!Change(DICS_DISABLE, DICS_FLAG_CONFIGSPECIFIC)) return false;
        Change(DICS_ENABLE, DICS_FLAG_GLOBAL);
        return Change(DICS_ENABLE, DICS_FLAG_CONFIGSPECIFIC);
    };
    DWORD before = 0;
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        facts.machine.faults.Disarm();
        if (row.failing != 0) {
            facts.machine.faults.FailCalls("SetupDiCallClassInstaller", u"V\\ETH\\1",
                                           ERROR_ACCESS_DENIED, row.failing, 1);
        }
        EXPECT_EQ(cycle(), row.result);
        EXPECT_EQ(Restarts() - before, row.restarts);
        before = Restarts();
    }
}

}  // namespace
