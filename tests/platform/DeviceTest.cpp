// Devices: the tree, the lists, and what a change of their state does.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>
#include <cfgmgr32.h>
#include <setupapi.h>

#include "Facts.h"
#include "FactsMachine.h"
#include "Text.h"

namespace {

using Text = std::u16string;

constexpr GUID kNetClass = {
    0x4D36E972, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

// A device's key with its values, as lines of a machine file.
std::string Device(const std::string& id, const std::string& values = {}) {
    return "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Enum\\" + id + "]\n" + values + "\n";
}

std::string Tree(const std::string& rows) {
    return "[" + FactsMachine::kStandIn + "\\DeviceTree]\n" + rows + "\n";
}

DEVINST Locate(const Text& id) {
    Text copy = id;
    DEVINST node = 0;
    EXPECT_EQ(CM_Locate_DevNode_ExW(&node, copy.data(), 0, nullptr), CR_SUCCESS);
    return node;
}

std::string IdOf(DEVINST node) {
    WCHAR id[MAX_PATH] = {};
    EXPECT_EQ(CM_Get_Device_ID_ExW(node, id, MAX_PATH, 0, nullptr), CR_SUCCESS);
    return platform::ToUtf8(id);
}

// The neighbour's id, or "-" when there is none.
using Step = CONFIGRET(WINAPI*)(PDEVINST, DEVINST, ULONG, HMACHINE);
std::string Neighbour(Step step, DEVINST node) {
    DEVINST found = 0;
    const CONFIGRET result = step(&found, node, 0, nullptr);
    if (result == CR_NO_SUCH_DEVNODE) return "-";
    EXPECT_EQ(result, CR_SUCCESS);
    return IdOf(found);
}

// All children of the device's parent, as a walk finds them.
std::vector<std::string> Family(DEVINST node) {
    std::vector<std::string> family;
    DEVINST child = 0;
    CONFIGRET result = CM_Get_Parent_Ex(&child, node, 0, nullptr);
    if (result == CR_SUCCESS) result = CM_Get_Child_Ex(&child, child, 0, nullptr);
    while (result == CR_SUCCESS) {
        family.push_back(IdOf(child));
        result = CM_Get_Sibling_Ex(&child, child, 0, nullptr);
    }
    return family;
}

TEST(DeviceTree, WhereADeviceStands) {
    using Family = std::vector<std::string>;
    struct Case {
        std::string file;
        Text device;
        std::string parent;
        Family family;
        std::string sibling;
        const char* why;
    };
    const std::string ports = Device(R"(CVTA\ETH\5&a&0&1)") + Device(R"(CVTA\ETH\5&a&0&2)") +
                              Device(R"(CVTA\IPOIB\5&a&0&3)");
    const std::string bus = Device(R"(PCI\VEN_1\3&1&0&20)", "\"ParentIdPrefix\"=\"5&A&0\"\n");
    const Case cases[] = {
        {ports + Device(R"(PCI\VEN_1\0)") +
             Tree(R"("PCI\\VEN_1\\0"="CVTA\\ETH\\5&a&0&2; cvta\\Eth\\5&A&0&1")"),
         u"CVTA\\ETH\\5&A&0&1",
         R"(PCI\VEN_1\0)",
         {R"(CVTA\ETH\5&a&0&2)", R"(cvta\Eth\5&A&0&1)"},
         "-",
         "a row gives order and spelling, and is complete"},
        {ports + bus,
         u"cvta\\eth\\5&A&0&1",
         R"(PCI\VEN_1\3&1&0&20)",
         {R"(CVTA\ETH\5&a&0&1)", R"(CVTA\ETH\5&a&0&2)", R"(CVTA\IPOIB\5&a&0&3)"},
         R"(CVTA\ETH\5&a&0&2)",
         "without a row the prefix tells, in any case, and the ids give the order"},
        {Device(R"(CVTA\ETH\5&a&0&1)", "\"Address\"=dword:2\n") +
             Device(R"(CVTA\ETH\5&a&0&2)", "\"Address\"=dword:1\n") + Device(R"(CVTA\A\5&a&0&3)") +
             bus,
         u"CVTA\\ETH\\5&a&0&2",
         R"(PCI\VEN_1\3&1&0&20)",
         {R"(CVTA\ETH\5&a&0&2)", R"(CVTA\ETH\5&a&0&1)", R"(CVTA\A\5&a&0&3)"},
         R"(CVTA\ETH\5&a&0&1)",
         "addresses come first"},
        {ports + bus + Device(R"(PCI\VEN_2\3&1&0&28)", "\"ParentIdPrefix\"=\"5&a\"\n"),
         u"CVTA\\IPOIB\\5&a&0&3",
         R"(PCI\VEN_1\3&1&0&20)",
         {R"(CVTA\ETH\5&a&0&1)", R"(CVTA\ETH\5&a&0&2)", R"(CVTA\IPOIB\5&a&0&3)"},
         "-",
         "of two prefixes the longer counts"},
        {Device(R"(CVTA\ETH\5&a&0&1)") + Device(R"(CVTA\ETH\5&a&01&2)") + bus,
         u"CVTA\\ETH\\5&a&01&2",
         R"(HTREE\ROOT\0)",
         {R"(CVTA\ETH\5&a&01&2)"},
         "-",
         "what follows the prefix must be '&'; a device without a parent is the root's only child"},
        {Device(R"(ROOT\NET\0000)") + Device(R"(ROOT\NET\0001)"),
         u"ROOT\\NET\\0001",
         R"(HTREE\ROOT\0)",
         {R"(ROOT\NET\0001)"},
         "-",
         "the same for devices of the root"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        FactsMachine facts(row.file);
        const DEVINST node = Locate(row.device);
        EXPECT_EQ(Neighbour(&CM_Get_Parent_Ex, node), row.parent);
        EXPECT_EQ(::Family(node), row.family);
        EXPECT_EQ(Neighbour(&CM_Get_Sibling_Ex, node), row.sibling);
    }
}

TEST(DeviceTree, TheTreeFollowsTheRegistry) {
    FactsMachine facts(Device(R"(CVTA\ETH\5&a&0&1)") +
                       Device(R"(PCI\VEN_1\0)", "\"ParentIdPrefix\"=\"5&a&0\"\n"));
    const DEVINST bus = Locate(u"PCI\\VEN_1\\0");
    const DEVINST port = Locate(u"CVTA\\ETH\\5&a&0&1");
    EXPECT_EQ(Neighbour(&CM_Get_Sibling_Ex, port), "-");
    facts.Merge(Device(R"(CVTA\ETH\5&a&0&2)"));
    EXPECT_EQ(Neighbour(&CM_Get_Sibling_Ex, port), R"(CVTA\ETH\5&a&0&2)");
    facts.Merge(Tree(R"("PCI\\VEN_1\\0"="CVTA\\ETH\\5&a&0&2")"));
    EXPECT_EQ(Neighbour(&CM_Get_Child_Ex, bus), R"(CVTA\ETH\5&a&0&2)");
    EXPECT_EQ(Locate(u"CVTA\\ETH\\5&a&0&1"), port);
}

TEST(DeviceTree, ResultCodes) {
    FactsMachine facts(Device(R"(A\B\C)", "\"Driver\"=\"{X}\\\\0001\"\n") + Device(R"(A\B\D)"));
    const DEVINST node = Locate(u"A\\B\\C");
    const DEVINST bare = Locate(u"A\\B\\D");
    DEVINST other = 0;
    WCHAR text[20];
    const auto locate = [&](Text id) {
        return CM_Locate_DevNode_ExW(&other, id.data(), 0, nullptr);
    };
    const auto driver = [&](DEVINST of, ULONG property, ULONG bytes) {
        return CM_Get_DevNode_Registry_PropertyW(of, property, nullptr, text, &bytes, 0);
    };
    const std::pair<std::function<CONFIGRET()>, CONFIGRET> cases[] = {
        {[&] { return locate(u"a\\b\\c"); }, CR_SUCCESS},
        {[&] { return locate(u"A\\B\\E"); }, CR_NO_SUCH_DEVNODE},
        {[&] { return locate(u"A\\B"); }, CR_NO_SUCH_DEVNODE},
        {[&] { return locate(u"A\\B\\C\\"); }, CR_NO_SUCH_DEVNODE},
        {[&] { return CM_Get_Child(&other, node, 0); }, CR_NO_SUCH_DEVNODE},
        {[&] { return CM_Get_Child(&other, 999, 0); }, CR_INVALID_DEVNODE},
        {[&] { return CM_Get_Sibling(nullptr, node, 0); }, CR_INVALID_POINTER},
        {[&] { return CM_Get_Device_ID_ExW(node, text, 5, 0, nullptr); }, CR_BUFFER_SMALL},
        {[&] { return CM_Get_Device_ID_ExW(node, text, 6, 0, nullptr); }, CR_SUCCESS},
        {[&] { return driver(node, CM_DRP_DRIVER, 17); }, CR_BUFFER_SMALL},
        {[&] { return driver(node, CM_DRP_DRIVER, 18); }, CR_SUCCESS},
        {[&] { return driver(node, 1, 18); }, CR_INVALID_PROPERTY},
        {[&] { return driver(bare, CM_DRP_DRIVER, 18); }, CR_NO_SUCH_VALUE},
    };
    int number = 0;
    for (const auto& [call, result] : cases)
        EXPECT_EQ(call(), result) << "case " << number++;
    EXPECT_EQ(Text(text), u"{X}\\0001");
    ULONG bytes = 0;
    ULONG type = 0;
    EXPECT_EQ(CM_Get_DevNode_Registry_PropertyW(node, CM_DRP_DRIVER, &type, nullptr, &bytes, 0),
              CR_BUFFER_SMALL);
    EXPECT_EQ(bytes, 18U);
    EXPECT_EQ(type, DWORD{REG_SZ});
}

// A list with one device.
class DeviceListTest : public testing::Test {
  protected:
    DeviceListTest()
        : facts(Device(kPort, "\"ClassGUID\"=\"{4d36e972-e325-11ce-bfc1-08002be10318}\"\n") +
                Device(R"(PCI\VEN_1\0)")),
          list(SetupDiCreateDeviceInfoList(nullptr, nullptr)) {
        EXPECT_TRUE(SetupDiOpenDeviceInfoW(list, u"cvta\\eth\\1", nullptr, 0, &device));
    }
    ~DeviceListTest() override { EXPECT_TRUE(SetupDiDestroyDeviceInfoList(list)); }

    bool Change(DWORD state, DWORD scope) {
        SP_PROPCHANGE_PARAMS change = {
            {sizeof(SP_CLASSINSTALL_HEADER), DIF_PROPERTYCHANGE}, state, scope, 0};
        return SetupDiSetClassInstallParamsW(list, &device, &change.ClassInstallHeader,
                                             sizeof change) &&
               SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, list, &device);
    }
    // As the usual restart does it: off here, on everywhere, on here.
    bool Cycle() {
        if (!Change(DICS_DISABLE, DICS_FLAG_CONFIGSPECIFIC)) return false;
        Change(DICS_ENABLE, DICS_FLAG_GLOBAL);
        return Change(DICS_ENABLE, DICS_FLAG_CONFIGSPECIFIC);
    }
    static DWORD Restarts() {
        return platform::FactNumber(u"Restarts", u"CVTA\\ETH\\1").value_or(0);
    }

    static constexpr const char* kPort = R"(CVTA\ETH\1)";
    FactsMachine facts;
    const HDEVINFO list;
    SP_DEVINFO_DATA device = {sizeof(SP_DEVINFO_DATA), {}, 0, 0};
};

TEST_F(DeviceListTest, HoldsTheDeviceOnce) {
    EXPECT_EQ(device.ClassGuid, kNetClass);
    EXPECT_EQ(device.DevInst, Locate(u"CVTA\\ETH\\1"));
    EXPECT_TRUE(SetupDiOpenDeviceInfoW(list, u"CVTA\\ETH\\1", nullptr, 0, nullptr));
    SP_DEVINFO_DATA found = {sizeof found, {}, 0, 0};
    EXPECT_TRUE(SetupDiEnumDeviceInfo(list, 0, &found));
    EXPECT_EQ(found.DevInst, device.DevInst);
    EXPECT_FALSE(SetupDiEnumDeviceInfo(list, 1, &found));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_ITEMS});
    SP_DEVINFO_LIST_DETAIL_DATA_W detail{};
    detail.cbSize = sizeof detail;
    EXPECT_TRUE(SetupDiGetDeviceInfoListDetailW(list, &detail));
    EXPECT_EQ(detail.RemoteMachineHandle, nullptr);
}

TEST_F(DeviceListTest, ErrorCodes) {
    SP_DEVINFO_DATA wrongSize = device;
    wrongSize.cbSize = 28;
    SP_DEVINFO_DATA stranger = {sizeof stranger, {}, 0, 0};
    SP_CLASSINSTALL_HEADER header = {sizeof header, DIF_PROPERTYCHANGE};
    SP_PROPCHANGE_PARAMS change = {{4, DIF_PROPERTYCHANGE}, DICS_ENABLE, DICS_FLAG_GLOBAL, 0};
    SP_DEVINFO_LIST_DETAIL_DATA_W detail{};
    DWORD size = 0;
    WCHAR id[12];
    const HDEVINFO netList = SetupDiCreateDeviceInfoListExW(&kNetClass, nullptr, nullptr, nullptr);
    const auto open = [](HDEVINFO in, LPCWSTR name, SP_DEVINFO_DATA* data = nullptr) {
        return SetupDiOpenDeviceInfoW(in, name, nullptr, 0, data);
    };
    const auto set = [&](SP_CLASSINSTALL_HEADER* parameters, DWORD bytes) {
        return SetupDiSetClassInstallParamsW(list, &device, parameters, bytes);
    };
    const std::pair<std::function<BOOL()>, DWORD> cases[] = {
        {[&] { return open(list, u"CVTA\\ETH\\2"); }, ERROR_NO_SUCH_DEVINST},
        {[&] { return open(nullptr, u"CVTA\\ETH\\1"); }, ERROR_INVALID_HANDLE},
        {[&] { return open(list, u"CVTA\\ETH\\1", &wrongSize); }, ERROR_INVALID_USER_BUFFER},
        {[&] { return open(netList, u"PCI\\VEN_1\\0"); }, ERROR_CLASS_MISMATCH},
        {[&] { return open(netList, u"CVTA\\ETH\\1"); }, 0},
        {[&] { return SetupDiGetDeviceInstanceIdW(list, &device, nullptr, 0, &size); },
         ERROR_INSUFFICIENT_BUFFER},
        {[&] { return SetupDiGetDeviceInstanceIdW(list, &device, id, 10, nullptr); },
         ERROR_INSUFFICIENT_BUFFER},
        {[&] { return SetupDiGetDeviceInstanceIdW(list, &device, id, 11, nullptr); }, 0},
        {[&] { return SetupDiGetDeviceInstanceIdW(list, &wrongSize, id, 11, nullptr); },
         ERROR_INVALID_USER_BUFFER},
        {[&] { return SetupDiGetDeviceInstanceIdW(list, &stranger, id, 11, nullptr); },
         ERROR_INVALID_PARAMETER},
        {[&] { return SetupDiGetDeviceInfoListDetailW(list, &detail); }, ERROR_INVALID_USER_BUFFER},
        {[&] { return SetupDiDestroyDeviceInfoList(nullptr); }, ERROR_INVALID_HANDLE},
        {[&] { return SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, list, &device); },
         ERROR_NO_CLASSINSTALL_PARAMS},
        {[&] { return set(&header, sizeof header); }, ERROR_INVALID_PARAMETER},
        {[&] { return set(&change.ClassInstallHeader, sizeof change); }, ERROR_INVALID_USER_BUFFER},
    };
    int number = 0;
    for (const auto& [call, error] : cases) {
        SetLastError(0);
        EXPECT_EQ(call(), error == 0 ? TRUE : FALSE) << "case " << number;
        EXPECT_EQ(GetLastError(), error) << "case " << number++;
    }
    EXPECT_EQ(size, 11U);
    EXPECT_EQ(Text(id), u"CVTA\\ETH\\1");
    EXPECT_TRUE(SetupDiDestroyDeviceInfoList(netList));
}

TEST_F(DeviceListTest, InterfaceListsAreEmptyAndDevicesMustExist) {
    const DWORD flags = DIGCF_PRESENT | DIGCF_DEVICEINTERFACE;
    const HDEVINFO interfaces = SetupDiGetClassDevsW(&kNetClass, u"CVTA\\ETH\\1", nullptr, flags);
    ASSERT_NE(interfaces, INVALID_HANDLE_VALUE);
    SP_DEVINFO_DATA none = {sizeof none, {}, 0, 0};
    EXPECT_FALSE(SetupDiEnumDeviceInfo(interfaces, 0, &none));
    EXPECT_TRUE(SetupDiDestroyDeviceInfoList(interfaces));
    EXPECT_EQ(SetupDiGetClassDevsW(&kNetClass, u"CVTA\\ETH\\2", nullptr, flags),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_NO_SUCH_DEVINST);
}

TEST_F(DeviceListTest, AnInterfacesPathIsSmallAndWithoutBackslashes) {
    SP_DEVICE_INTERFACE_DATA data = {sizeof data, {}, 0, 0};
    ASSERT_TRUE(SetupDiCreateDeviceInterfaceW(list, &device, &kNetClass, nullptr, 0, &data));
    DWORD size = 0;
    EXPECT_FALSE(SetupDiGetDeviceInterfaceDetailW(list, &data, nullptr, 0, &size, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});

    std::vector<DWORD> block(size / sizeof(DWORD) + 1);
    auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(block.data());
    const std::pair<DWORD, DWORD> refused[] = {
        {6, ERROR_INVALID_USER_BUFFER}, {size, ERROR_INVALID_USER_BUFFER}, {8, 0}};
    for (const auto& [cbSize, error] : refused) {
        detail->cbSize = cbSize;
        SetLastError(0);
        EXPECT_EQ(SetupDiGetDeviceInterfaceDetailW(list, &data, detail, size, nullptr, nullptr),
                  error == 0 ? TRUE : FALSE);
        EXPECT_EQ(GetLastError(), error);
    }
    Text path((size - offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath)) / sizeof(WCHAR),
              u' ');
    std::memcpy(path.data(), detail->DevicePath, path.size() * sizeof(WCHAR));
    EXPECT_EQ(path, Text(u"\\\\?\\cvta#eth#1#{4d36e972-e325-11ce-bfc1-08002be10318}") + u'\0');
}

TEST_F(DeviceListTest, ARestartCountsWhenTheDeviceRunsAgain) {
    struct Case {
        const char* why;
        std::uint64_t failing;  // the change of state that fails, from 1; 0 for none
        bool result;
        DWORD restarts;
    };
    const Case cases[] = {
        {"all goes well", 0, true, 1},
        {"it isn't even disabled", 1, false, 0},
        {"it is enabled here all the same", 2, true, 1},
        {"it stays disabled", 3, false, 0},
        {"it is repaired by the next one", 0, true, 1},
    };
    DWORD before = 0;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        facts.machine.faults.Disarm();
        if (row.failing != 0) {
            facts.machine.faults.FailCalls("SetupDiCallClassInstaller", u"CVTA\\ETH\\1",
                                           ERROR_ACCESS_DENIED, row.failing, 1);
        }
        EXPECT_EQ(Cycle(), row.result);
        EXPECT_EQ(Restarts() - before, row.restarts);
        before = Restarts();
    }
}

TEST_F(DeviceListTest, ADeviceRunsWhenNoScopeDisablesIt) {
    EXPECT_TRUE(Change(DICS_ENABLE, DICS_FLAG_GLOBAL));
    EXPECT_EQ(Restarts(), 0U);
    EXPECT_TRUE(Change(DICS_DISABLE, DICS_FLAG_GLOBAL));
    EXPECT_TRUE(Change(DICS_DISABLE, DICS_FLAG_CONFIGSPECIFIC));
    EXPECT_TRUE(Change(DICS_ENABLE, DICS_FLAG_CONFIGSPECIFIC));
    EXPECT_EQ(Restarts(), 0U);
    EXPECT_TRUE(Change(DICS_ENABLE, DICS_FLAG_GLOBAL));
    EXPECT_EQ(Restarts(), 1U);
}

}  // namespace
