// The MUX component and its INF files come and go.

#include "MuxInstallation.h"

#include "MuxComponent.h"
#include "NetConfigTest.h"

namespace {

const std::u16string kStore = u"C:\\Windows\\INF\\";
constexpr char kProtocols[] =
    "SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E975-E325-11CE-BFC1-08002BE10318}\\"
    "{7B1DCDAF-A839-4220-B465-B9A16A9E786E}";
constexpr char kCannotInstall[] = "Couldn't install the network component. Error=0x";
constexpr char kInstallFailed[] = "InstallSpecifiedComponent failed hr =0x";
const std::string kThere = "Component cvta_muxp is already installed. nothing to do....\n";

struct InstallMachine : LayerMachine {
    explicit InstallMachine(const Sample& theSample = Sample().OnePort(Sample::Kind::Ethernet))
        : LayerMachine(theSample) {
        machine.Get<platform::Drive>().WriteWholeFile(kStore + u"oem0.inf", "other");
    }
    HRESULT Install() {
        const HRESULT result = InstallMuxComponent(kPackage.c_str(), eMUX_CLASS_PROTOCOL);
        std::string printed = Printed();
        // Behind the lines on the one adapter.
        const std::string port =
            "Guid = 6B29FC40-CA47-4067-B31D00DD010662DA\n"
            "ID = TSR4\\Tessaron-ETH26_Eth\n"
            "PNP ID = TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&01\n"
            "Bind Name= {6B29FC40-CA47-4067-B31D-00DD010662DA}\n";
        hasListed = printed.starts_with(port);
        lines = hasListed ? printed.substr(port.size()) : printed;
        return result;
    }
    bool IsInstalled() const { return Text(kProtocols, u"ComponentId").has_value(); }
    // Of the package's two files.
    int InStore() {
        int count = 0;
        for (const char16_t* name : {u"oem1.inf", u"oem2.inf"})
            count += machine.Get<platform::Drive>().ReadWholeFile(kStore + name).has_value();
        return count;
    }

    bool hasListed = false;
    std::string lines;
};

TEST(MuxInstallation, ComesOnceAndGoes) {
    InstallMachine test;
    EXPECT_EQ(test.Install(), S_OK);
    EXPECT_TRUE(test.hasListed);
    EXPECT_EQ(test.lines, "");
    EXPECT_EQ(test.Text(kProtocols, u"ComponentId"), u"cvta_muxp");
    EXPECT_EQ(test.InStore(), 2);
    EXPECT_EQ(test.Install(), S_OK);
    EXPECT_EQ(test.lines, kThere);

    UninstallMuxIfUnused();
    EXPECT_TRUE(test.IsInstalled()) << "there is no count";
    ASSERT_EQ(test.AddVlan(kA, u"1", u"a"), S_OK);
    UninstallMuxIfUnused();
    EXPECT_TRUE(test.IsInstalled());
    ASSERT_EQ(test.RemoveVlan(kA, test.newGuid), S_OK);
    test.Printed();
    UninstallMuxIfUnused();
    EXPECT_FALSE(test.IsInstalled());
    EXPECT_EQ(test.InStore(), 1) << "the miniport's file stays";
    EXPECT_EQ(UninstallMuxComponent(), S_FALSE) << "there is none, and no file";
    EXPECT_EQ(test.Printed(), "");
}

TEST(MuxInstallation, WhatFailsOnTheWayIn) {
    const std::string inf = "C:\\Program Files\\Corvanta\\Vlan_lbfo\\muxp.inf";
    const std::string read = "Error reading the INF file " + inf + ". Error=0x";
    const std::string miniportInf = platform::ToUtf8(kPackage) + "\\mux_mp.inf";
    const auto failed = [](const std::string& code) {
        return kCannotInstall + code + "\n" + kInstallFailed + code + "\n";
    };
    const struct {
        std::string fault;
        HRESULT result;
        std::string lines;
        bool isInstalled;
        int inStore;
    } rows[] = {
        {"operator new=8", R(0x80070008), "Error allocating memory\n", false, 0},
        {"SetupOpenInfFileW=2", R(0x80070002), read + "80070002", false, 0},
        {"SetupFindFirstLineW=0xE0000102", R(0xE0000102), read + "e0000102", false, 0},
        {"SetupGetStringFieldW=0xE0000102,4", R(0xE0000102), read + "e0000102", false, 0},
        {"CoTaskMemAlloc=14,2", E_OUTOFMEMORY, read + "8007000e", false, 0},
        {"CoCreateInstance=E", E_FAIL, "Couldn't the get notify object interface.\n", false, 0},
        {"INetCfg::QueryNetCfgClass=E,1,1", E_FAIL,
         "Failed to get network component enumerator reference. Error=0x80004005\n"
         "GetOurGuid failed hr =0x80004005\n",
         false, 0},
        {"INetCfg::FindComponent=E", S_OK,
         "Failed to retrieves the network component that matches the specified component "
         "identifier cvta_muxp. Error=0x80004005\n",
         true, 2},
        {"SetupCopyOEMInfW " + inf + "=5", R(0x80070005), failed("80070005"), false, 0},
        {"INetCfg::QueryNetCfgClass=E,2", E_FAIL, failed("80004005"), false, 1},
        {"INetCfgClassSetup::Install=E", E_FAIL, failed("80004005"), false, 1},
        {"INetCfgClassSetup::Install=1223", R(0x800704C7),
         std::string(kInstallFailed) + "800704c7\n", false, 1},
        {"INetCfg::Apply=E,1,1", E_FAIL, failed("80004005"), false, 1},
        {"INetCfg::Apply=E,2", E_FAIL, std::string(kInstallFailed) + "80004005\n", true, 1},
        {"SetupCopyOEMInfW " + miniportInf + "=5", R(0x80070005),
         "SetupCopyOEMInfW returned hr = 0x80070005\n", true, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        InstallMachine test;
        test.Fail(row.fault);
        EXPECT_EQ(test.Install(), row.result);
        EXPECT_EQ(test.lines, row.lines);
        EXPECT_EQ(test.IsInstalled(), row.isInstalled);
        EXPECT_EQ(test.InStore(), row.inStore);
        test.machine.faults.Disarm();
        EXPECT_TRUE(test.LockIsFree());
        EXPECT_EQ(test.Install(), S_OK);
    }
}

TEST(MuxInstallation, WhatItIsAskedFor) {
    InstallMachine test;
    EXPECT_EQ(InstallMuxComponent(nullptr, eMUX_CLASS_PROTOCOL), E_INVALIDARG);
    EXPECT_EQ(test.Printed(), "Missing INF file....\n");
    EXPECT_EQ(InstallMuxComponent(kPackage.c_str(), 4), E_INVALIDARG);
    EXPECT_EQ(InstallMuxComponent(u"C:\\Windows", eMUX_CLASS_PROTOCOL), R(0x80070002));
    // Installed among the adapters, which the search for it prints too.
    EXPECT_EQ(InstallMuxComponent(kPackage.c_str(), eMUX_CLASS_ADAPTER), S_OK);
    EXPECT_EQ(test.Install(), S_OK);
    EXPECT_TRUE(test.lines.ends_with(
        "ID = cvta_muxp\n"
        "Warning we already have a Corvanta vlan installed quiting without doing anything\n"));
}

TEST(MuxInstallation, ARebootIsNoFailure) {
    InstallMachine rebooting(
        Sample().With("SOFTWARE\\StandIn\\NetCfg", "\"ApplyResult\"=dword:4a020"));
    EXPECT_EQ(rebooting.Install(), NETCFG_S_REBOOT);
    EXPECT_EQ(rebooting.InStore(), 2);
}

TEST(MuxInstallation, WhatFailsOnTheWayOut) {
    constexpr char kFailed[] = "Uninstalled failed . Error0x80004005\n";
    const struct {
        std::string fault;
        HRESULT result;
        std::string lines;
        bool isInstalled;
        int inStore;
    } rows[] = {
        {"RegOpenKeyExW=5", R(0x80070005), "", true, 2},
        {"RegQueryValueExW=5", R(0x80070005), "", true, 2},
        {"SetupCopyOEMInfW=5", S_OK, "", false, 2},
        {"SetupUninstallOEMInfW=E", S_OK, kFailed, false, 2},
        {"INetCfg::FindComponent=E", E_FAIL, kFailed, true, 1},
        {"INetCfgComponent::GetClassGuid=E", E_FAIL, kFailed, true, 1},
        {"INetCfg::QueryNetCfgClass=E", E_FAIL, kFailed, true, 1},
        {"INetCfgClass::QueryInterface=E", E_FAIL, kFailed, true, 1},
        {"INetCfgClassSetup::DeInstall=E", E_FAIL, kFailed, true, 1},
        {"INetCfg::Apply=E", E_FAIL, kFailed, true, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        InstallMachine test;
        ASSERT_EQ(test.Install(), S_OK);
        test.Fail(row.fault);
        EXPECT_EQ(UninstallMuxComponent(), row.result);
        EXPECT_EQ(test.Printed(), row.lines);
        EXPECT_EQ(test.IsInstalled(), row.isInstalled);
        EXPECT_EQ(test.InStore(), row.inStore);
        test.machine.faults.Disarm();
        EXPECT_TRUE(test.LockIsFree());
    }
}

TEST(MuxInstallation, PrintsAComponentInFewCalls) {
    const auto calls = [](int count) {
        LayerMachine test(Sample().Vlans(count));
        test.machine.trace.Start();
        EXPECT_EQ(InstallMuxComponent(kPackage.c_str(), eMUX_CLASS_PROTOCOL), S_OK);
        return test.machine.trace.Records().size();
    };
    EXPECT_EQ(calls(80) - calls(16), 64U * 20U);
}

}  // namespace
