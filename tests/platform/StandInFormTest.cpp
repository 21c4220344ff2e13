// What a machine file may say of the stand-in's facts, and what it is told otherwise.

#include <string>

#include "FactsMachine.h"

namespace {

using namespace platform;

const std::string kGuid = "{6B29FC40-CA47-4067-B31D-00DD010662DA}";

// Each form in an unusual dress, as far as it is read so.
TEST(StandInForm, WhatIsReadIsTaken) {
    const std::string files[] = {
        FactLines("", R"("VERSION"="10.0.17763"
"ProductType"=dword:ffffffff
"Time"=hex(1):31,00,36,00,30,00,31,00,2d,00,30,00,31,00,2d,00,30,00,31,00,20,00,30,00,30,00,\
  3a,00,30,00,30,00
"NetshResult"="")"),
        FactLines("processors", R"("Groups"=" 0x40 , 1"
"Nodes"="65535,-,0"
"HighestNode"=dword:0)"),
        FactLines("DeviceTree", R"("A\\B\\C"=""
"HTREE\\ROOT\\0"="A\\B\\C; A\\B\\D")"),
        FactLines("Interfaces") +
            FactLines("Interfaces\\{6b29fc40-ca47-4067-b31d-00dd010662da}", R"("Alias"=""
"PermanentAddress"="80-00-00-48-fe-80-00-00-00-00-00-00-00-02-c9-03-00-00-10-35"
"CurrentAddress"=""
"Addresses"="fe80::1%3 ;192.168.7.10")"),
        FactLines("Cards\\0002C90300A5B6C0", R"("Ports"=""
"DoorbellTicks"="0,4294967295")"),
        FactLines("Miniports\\" + kGuid, R"("4288727317"=hex:
"0x00010208"=hex:00
"0xFFA0C930/3"=hex:01)"),
        FactLines("Faults", R"("IXMLDOMDocument::load C:\\a b"="0x80070005,2,1"
"operator new"="-2147024882"
"WinExec"="2")"),
        FactLines("NetCfg", R"("LockedBy"=""
"LockedFor"=dword:0
"TakenFor"=dword:1
"TakenAt"=dword:1
"ApplyResult"=dword:80004005)") +
            FactLines("NetCfg\\Bindings\\" + kGuid, R"("x"=" a , b ;Disabled"
"y->z"="a;enabled")"),
        FactLines("Restarts", R"("REBOOTS"=dword:2
"PCI\\VEN_1&X\\3&1"=dword:1)"),
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Nothing]\n" + FactLines("", "\"Nothing\"=-"),
        KeyLines("SOFTWARE\\StandIn2\\Nothing", "\"Nothing\"=\"\""),
        "[HKEY_CURRENT_USER\\SOFTWARE\\StandIn\\Nothing]\n",
    };
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        FactsMachine facts(file);
        facts.Merge(file);
    }
}

TEST(StandInForm, WhatWouldNotBeReadIsRefused) {
    const std::string device =
        "a name is one like \"PCI\\\\VEN_1C57&DEV_1A20\\\\4&1D8E6F20&0&0018\"";
    const struct {
        std::string key, value;  // value: empty for a key that is refused
        std::string says;
    } cases[] = {
        {"", R"("Versoin"="6.2")",
         R"(unknown value "Versoin" below StandIn; did you mean "Version"?)"},
        {"", R"("Groups"="8")", "known is \"Version\", \"ProductType\", \"Time\", \"NetshResult\""},
        {"", R"(@="6.2")", "unknown value @ below StandIn; known is"},
        {"Procesors", "", R"(unknown key "Procesors" below StandIn; did you mean "Processors"?)"},
        {"Processors\\0", "", R"(unknown key "0" below StandIn\Processors; there are no keys)"},
        {"Interfaces\\LAN", "", "a name is one like \"{6B29FC40-CA47-4067-B31D-00DD010662DA}\""},
        {"Interfaces", R"("Up"=dword:1)", "below StandIn\\Interfaces; there are no values"},
        {"Miniports\\" + kGuid.substr(1), "", "a name is one like"},
        {"Cards\\0002c90300a5b6c", "", "a name is one like \"0002c90300a5b6c0\""},
        {"Miniports\\" + kGuid, R"("0x1FFFFFFFF"=hex:01)", "a name is one like \"0xFFA0C915\""},
        {"Miniports\\" + kGuid, R"("0x1/"=hex:01)", "a name is one like \"0xFFA0C915\""},
        {"Miniports\\" + kGuid, R"("0x1"="1")", "has a wrong type"},
        {"Interfaces\\" + kGuid, R"("Up"="1")",
         "the value \"Up\" below StandIn\\Interfaces\\" + kGuid +
             " has a wrong type; it is written as in \"Up\"=dword:1"},
        {"Interfaces\\" + kGuid, R"("Up"=hex(4):01)", "has a wrong type"},
        {"Interfaces\\" + kGuid, R"("Alias"=hex(2):00,00)", "has a wrong type"},
        {"Interfaces\\" + kGuid, R"("PermanentAddress"="00-02-C9-11-22-3")", "has a wrong form"},
        {"Interfaces\\" + kGuid, R"("Addresses"="192.168.7.256")", "has a wrong form"},
        {"Interfaces\\" + kGuid, R"("Adresses"="::1")", "did you mean \"Addresses\"?"},
        {"", R"("Version"="6")", "it is written as in \"Version\"=\"6.2\""},
        {"", R"("Version"="6.x")", "has a wrong form"},
        {"", R"("Time"="2026-02-29 08:05")", "\"Time\"=\"2026-11-19 08:05\""},
        {"", R"("NetshResult"="33,-2")", "has a wrong form"},
        {"Processors", R"("Groups"="8,65")", "each from 1 to 64"},
        {"Processors", R"("Groups"="")", "has a wrong form"},
        {"Processors", R"("Nodes"="0,,1")", "has a wrong form"},
        {"Processors", R"("Nodes"="65536")", "has a wrong form"},
        {"DeviceTree", R"("PCI\\X"="")", device},
        {"DeviceTree", R"("PCI\\X\\"="")", device},
        {"DeviceTree", R"("A\\B\\C"="A\\B\\D;")", "has a wrong form"},
        {"Cards\\0002c90300a5b6c0", R"("Ports"="0202c9fffe11223x")", "has a wrong form"},
        {"Cards\\0002c90300a5b6c0", R"("DoorbellTicks"="90;40")", "has a wrong form"},
        {"Faults", R"("WinExec"="5,0")", "has a wrong form"},
        {"Faults", R"("WinExec"="4294967296")", "has a wrong form"},
        {"Faults", R"("WinExec "="5")",
         "a name is one like \"RegOpenKeyExW SOFTWARE\\\\Corvanta\""},
        {"Faults", R"("5"="WinExec")", "a name is one like"},
        {"NetCfg", R"("LockedFor"="7000")", "has a wrong type"},
        {"NetCfg\\Bindings\\" + kGuid, R"("x"="a")",
         "it is written as in \"x\"=\"ms_tcpip;enabled\""},
        {"NetCfg\\Bindings\\" + kGuid, R"("x"="a,;enabled")", "has a wrong form"},
        {"NetCfg\\Bindings\\" + kGuid, R"("x"="a;b;enabled")", "has a wrong form"},
        {"NetCfg\\Bindings\\" + kGuid, R"("x"="a;on")", "has a wrong form"},
        {"Restarts", R"("Reboot"=dword:1)", "did you mean \"Reboots\"?"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.key + ": " + row.value);
        const std::string file =
            FactsMachine::kHead + FactLines("") + FactLines(row.key, row.value);
        for (const auto& read : {LoadMachineFile, MergeMachineFile}) {
            Machine machine;
            const auto error = read(machine, file);
            ASSERT_TRUE(error);
            EXPECT_EQ(error->line, row.value.empty() ? 5u : 6u);
            EXPECT_NE(error->message.find(row.says), std::string::npos) << error->message;
        }
    }
}

}  // namespace
