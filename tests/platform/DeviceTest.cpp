// The device tree, as the facts or an export give it.

#include <string>

#include <windows.h>
#include <cfgmgr32.h>

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

}  // namespace
