// A choice of port types applied, with each of its system calls failing in its turn.

#include "FaultSweep.h"
#include "PortProtocolTest.h"

namespace {

using namespace port_protocol;

const std::string kValue = "HKEY_LOCAL_MACHINE\\" + ParametersPath() + "\\PortType";
const std::string kRestarts =
    std::string("HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\Restarts\\") + Sample::BusInstanceId();

// The value stays, and the user is told; the device restarts all the same.
Outcome NotWritten(const std::string& text) {
    return [=](Facts& due, const Facts&, const Fault&) {
        due.boxes = {Box("Error", text + "\r\nError message: Access is denied.\r\n", 0x2010)};
        due.registry.erase(kValue);
    };
}

void NotRestarted(Facts& due, const Facts&, const Fault& fault) {
    const bool change =
        fault.call == "SetupDiSetClassInstallParamsW" || fault.call == "SetupDiCallClassInstaller";
    // It is enabled for all hardware profiles first; for this one is what counts.
    if (!change || fault.ofArgument != 2 || fault.lasting) due.registry.erase(kRestarts);
}

TEST(FaultSweep, PortProtocolApply) {
    FaultSweep sweep;
    sweep.name = "a choice of port types, applied";
    sweep.sample = Bus(kAll, R"("ib,eth")");
    sweep.operation = [](TestMachine& test, const FaultSweep::Sweep& swept) {
        int choice = 1075;
        test.user.Do([&] {
            swept([&](auto&) {
                test.Press(std::exchange(choice, kDefaults));
                SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
            });
        });
        EXPECT_TRUE(test.RunBusSheet());
    };
    sweep.table = {
        {{"RegOpenKeyExW"}, {NotWritten("Failed to open registry key.")}, ParametersPath()},
        {{"RegSetValueExW"}, {NotWritten("Failed to set value to registry key.")}},
        {{"SetupDiCreateDeviceInfoListExW", "SetupDiOpenDeviceInfoW",
          "SetupDiGetDeviceInfoListDetailW", "SetupDiEnumDeviceInfo",
          "SetupDiSetClassInstallParamsW", "SetupDiCallClassInstaller"},
         {NotRestarted}},
        // A port that can't be looked at counts as one without teams and VLANs.
        {{"CM_Get_Child", "CM_Get_Sibling", "CM_Get_DevNode_Registry_PropertyW", "RegOpenKeyExW",
          "RegQueryValueExW"},
         {AsClean}},
        {{"GetDlgItem", "GetParent", "EnableWindow", "SetWindowTextW", "SendMessageW",
          "SysAllocString", "SysFreeString", "RegCloseKey", "SetupDiDestroyDeviceInfoList"},
         {AsClean}},
    };
    sweep.forgetFirst = [](Facts& facts) { facts.registry.erase(kRestarts); };
    sweep.Run();
}

}  // namespace
