// Each operation of the layer, with each of its system calls failing in its turn.

#include <memory>
#include <optional>

#include "ComponentOperations.h"
#include "FaultSweep.h"
#include "MuxInstallation.h"
#include "NetConfigTest.h"
#include "NetworkValues.h"

namespace {

const std::u16string kVlan1 = u"{5E7B0D21-93C4-4F18-A6E2-000000000001}";
const std::u16string kTeam = u"{0A000000-0000-4000-8000-000000000001}";
const std::string kTeamEntry = kTree + platform::ToUtf8(kTeam);
const std::string kTeamGuid = platform::ToUtf8(kTeam);
const std::string kNoProtocol =
    " doesn't exist or misconfigured - team's L2-Protocol couldn't be determined. hr = 0x";
const std::string kBackup = Sample::ClassKey(1) + "\\AdapterBindingBackup";

// The GUID of the VLAN or team that an operation made, or is to remove.
std::u16string made;

// An operation, and what takes back what it did so that it can be done again.
struct Operation {
    const char* name;
    Sample sample;
    std::function<HRESULT()> run;
    std::function<void()> undo;
    // Parts of the names of values whose failures nobody is told of.
    Lines silent{};
    // A line that tells of a component that is left behind.
    std::string leaves{};
    std::u16string guid{};  // what `made` is at first
};

// A code in a line becomes "<result>" when it is the operation's; a new GUID is left out.
std::string Plain(std::string line, HRESULT result) {
    for (const char* format : {"%x", "%X"}) {
        char code[9];
        std::snprintf(code, sizeof(code), format, static_cast<unsigned>(result));
        const std::size_t at = line.find(std::string("0x") + code);
        if (at != std::string::npos) line.replace(at + 2, std::strlen(code), "<result>");
    }
    return line.substr(0, line.find(" with Guid = "));
}

const Lines kFailureLines = {
    "HrFindInstance failed. hr = 0x<result>",
    "Illegal instance found",
    "Failed to read adapter device ID 0x<result>",
    "new CMuxPhysicalAdapter failed",
    "new CMuxVirtualMiniport failed",
    "new CMuxTeamMiniport failed",
    "pMuxPhysicalAdapter->LoadConfiguration failed. hr = 0x<result>",
    "pMiniport->Install failed. hr = 0x<result>",
    "pTeamMiniport->Install failed. hr = 0x<result>",
    "ApplyRegistryChanges failed. hr = 0x<result>",
    "pMuxPhysicalAdapter->RemoveMiniport failed. hr = 0x<result>",
    "There is no adapter to remove",
    "Trying to remove team, not VLAN. Use \"remove team\" cmd line option",
    "Invalid adapter GUID '" + std::string(Sample::Guid(1)) + "'",
    "Cannot parse team GUID. hr = 0x<result>",
    "Cannot parse adapter GUID. hr = 0x<result>",
    "HrFindInstance for team failed. hr = 0x<result> guid=" + kTeamGuid,
    "HrFindInstance for adapter failed. hr = 0x<result> guid=" + std::string(Sample::Guid(1)),
    "Failed to read adapter device ID 0x<result> guid=" + std::string(Sample::Guid(1)),
    "pTeamMiniport->LoadConfiguration failed. hr = 0x<result>",
    "pTeamMiniport->ApplyRegistryChanges failed. hr = 0x<result>",
    "Failed to get MAC address of adapter '" + std::string(Sample::Guid(1)) + "'",
    "Team " + kTeamGuid + kNoProtocol + "80070002",
    "Team " + kTeamGuid + kNoProtocol + "0",
    "Removing all vlans failed. hr = 0x<result>",
    "Invalid team GUID.hr= 0x<result>, guid=" + kTeamGuid,
    "Team recursive Cleanup failed. hr = 0x<result>",
    "Illegal instance was of team handled by a previous adapter\nAllowing use case",
    "Failed to get network component enumerator reference. Error=0x<result>",
    "GetOurGuid failed hr =0x<result>",
    "Couldn't the get notify object interface.",
    "Couldn't install the network component. Error=0x<result>",
    "InstallSpecifiedComponent failed hr =0x<result>",
    "SetupCopyOEMInfW returned hr = 0x<result>",
    "Error allocating memory",
    "Error reading the INF file C:\\Program Files\\Corvanta\\Vlan_lbfo\\muxp.inf. Error=0x<result>",
    "Failed to get network component enumerator reference. Error=0x80004005",
    "Failed to retrieves the network component that matches the specified component identifier "
    "cvta_muxp. Error=0x80004005",
    "Uninstalled failed . Error0x<result>",
};

class LayerSweep {
  public:
    explicit LayerSweep(Operation operation) : m_operation(std::move(operation)) {
        sweep.name = m_operation.name;
        sweep.sample = m_operation.sample;
        sweep.normalise = NameComponents;
        sweep.operation = [this](TestMachine& test, const FaultSweep::Sweep& swept) {
            ScopedCom com;
            {
                const platform::QuietScope quiet;
                EXPECT_TRUE(SUCCEEDED(com.Initialise()));
                test.AddInfFiles();
                auto& drive = test.machine.Get<platform::Drive>();
                drive.WriteWholeFile(u"C:\\Windows\\INF\\oem0.inf",
                                     *drive.ReadWholeFile(kPackage + u"\\mux_mp.inf"));
            }
            made = m_operation.guid;
            bool again = false;
            swept([&](Values& notes) {
                if (std::exchange(again, true)) {
                    const platform::QuietScope quiet;
                    std::string& output = test.machine.Get<platform::Streams>().output;
                    const std::size_t printed = output.size();
                    m_operation.undo();
                    output.resize(printed);
                    if (!output.empty() && !output.ends_with('\n')) output += '\n';
                }
                m_result = m_operation.run();
                notes["result"] = m_result == S_OK       ? "done"
                                  : m_result == kRefusal ? "refused"
                                  : FAILED(m_result)     ? "failed"
                                                         : "not found";
                test.machine.faults.Disarm();
                test.machine.trace.Stop();
                ExpectLockFree(test);
            });
        };
        sweep.log = [this](const TestMachine& test) {
            Lines lines;
            std::istringstream text(
                const_cast<TestMachine&>(test).machine.Get<platform::Streams>().output);
            for (std::string line; std::getline(text, line);)
                lines.push_back(Plain(line, m_result));
            return lines;
        };
        // A result other than success tells the caller.
        sweep.succeeded = [this](const Observed& found, const Observed& clean) {
            const bool leaves = std::count(found.log.begin(), found.log.end(), m_operation.leaves);
            if (!IsSilent("left")) {
                EXPECT_EQ(found.values.at("left"), leaves ? "1" : m_clean.before.at("left"));
            }
            if (found.values.at("result") != "done") return true;
            Values differing;
            std::set_symmetric_difference(found.values.begin(), found.values.end(),
                                          clean.values.begin(), clean.values.end(),
                                          std::inserter(differing, differing.end()));
            return std::all_of(differing.begin(), differing.end(),
                               [this](const auto& value) { return IsSilent(value.first); });
        };
        sweep.onceOnly = m_operation.silent;
        sweep.onceOnly.push_back("left");
        sweep.mayBe = {{"result", "failed"}, {"result", "refused"}};
        sweep.failureLines = kFailureLines;
        m_clean = sweep.Clean();
        EXPECT_EQ(m_clean.first.values.at("result"), "done");
    }

    // Nothing has changed, and the line is all that is printed.
    Seen Nothing(const std::string& line, const char* result = "failed") const {
        Seen seen;
        seen.values = m_clean.before;
        (*seen.values)["result"] = result;
        seen.log = LogEdit{"", "", line.empty() ? Lines() : Lines{line}};
        return seen;
    }
    void Row(std::vector<const char*> calls, Seen seen, const std::string& argument = "",
             unsigned which = 0, std::optional<bool> lasting = {}) {
        sweep.described.push_back({std::move(calls), std::move(seen), argument, which, lasting});
    }
    const Values& Before() const { return m_clean.before; }

    FaultSweep sweep;

  private:
    bool IsSilent(const std::string& value) const {
        return std::any_of(m_operation.silent.begin(), m_operation.silent.end(),
                           [&](const std::string& part) { return value.find(part) != value.npos; });
    }
    static void ExpectLockFree(TestMachine& test) {
        const platform::QuietScope quiet;
        const std::uint64_t before = test.machine.scheduler.Now();
        NetworkSession session(kRenameSession);
        ScopedTaskMemory<WCHAR> holder;
        EXPECT_EQ(session.Open(holder), S_OK);
        EXPECT_EQ(test.machine.scheduler.Now(), before);
    }

    Operation m_operation;
    FaultSweep::Run m_clean;
    HRESULT m_result = S_OK;
};

HRESULT Add(const std::u16string& lower, const char16_t* id = u"9", const char16_t* name = u"new") {
    WCHAR guid[kNewGuidCapacity] = {};
    const HRESULT result = ConfigureVlan(lower.c_str(), guid, true, id, name, u"3");
    if (result == S_OK) made = guid;
    return result;
}
HRESULT Remove() {
    return ConfigureVlan(kA.c_str(), made.data(), false, u"", u"", u"");
}
HRESULT MakeTeam() {
    WCHAR guid[kNewGuidCapacity] = {};
    const HRESULT result = CreateTeam(u"new", 5, guid, true, eL2_PROTOCOL_ETHERNET);
    if (result == S_OK) made = guid;
    return result;
}
HRESULT Member(bool add) {
    return ConfigureTeamMember(add, kTeam.c_str(), kA.c_str(), add, add);
}

// A miniport with its device.
Sample& AddMiniport(Sample& sample, int number, const std::u16string& guid,
                    const std::string& values) {
    const std::string id = std::to_string(number);
    const std::string device = "ROOT\\\\CVTA_MUXMP\\\\000" + id;
    const std::string root = "SYSTEM\\CurrentControlSet\\";
    return sample.With(kClass + "002" + id, MiniportValues(guid) + "\n" + values)
        .With(root + "Enum\\ROOT\\CVTA_MUXMP\\000" + id,
              "\"Service\"=\"MUXMP\"\n\"Driver\"=\"{4D36E972-E325-11CE-BFC1-08002BE10318}\\\\002" +
                  id + "\"")
        .With(root + "Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\" +
                  platform::ToUtf8(guid) + "\\Connection",
              "\"Name\"=\"Team " + id + "\"\n\"PnpInstanceID\"=\"" + device + "\"")
        .With(root + "Services\\MUXMP\\Enum", "\"Count\"=dword:" + std::to_string(number + 1) +
                                                  "\n\"" + id + "\"=\"" + device + "\"");
}

std::string ListOf(const std::u16string& guid) {
    std::string list = "\"UpperBindings\"=hex(7):";
    for (const char16_t c : u"\\Device\\" + guid) {
        char hex[7];
        std::snprintf(hex, sizeof(hex), "%02x,00,", static_cast<unsigned>(c) & 0xFF);
        list += hex;
    }
    return list + "00,00,00,00";
}

// The team, with a VLAN over it, and with the first port as a member.
Sample TeamSample(bool hasVlan, bool hasMember) {
    Sample sample;
    sample.With("SOFTWARE\\StandIn\\NetCfg\\Bindings\\" + std::string(Sample::Guid(1)),
                hasMember ? "\"mux\"=\"cvta_muxp;enabled\"\n\"tcpip\"=\"ms_tcpip;disabled\""
                          : "\"mux\"=\"cvta_muxp;disabled\"\n\"tcpip\"=\"ms_tcpip;enabled\"");
    std::string entry =
        "\"TeamName\"=\"T\"\n\"TeamType\"=dword:1\n\"FallBackToPrimary\"=dword:1\n"
        "\"L2Protocol\"=dword:0";
    AddMiniport(sample, 0, kTeam, "\"TeamName\"=\"T\"");
    if (hasVlan) {
        AddMiniport(sample, 1, kVlan1, "\"VlanName\"=\"V\"\n\"VlanID\"=\"1\"\n\"Priority\"=\"0\"");
        entry += "\n" + ListOf(kVlan1);
    }
    if (hasMember) {
        entry += "\n\"TeamMacAddress\"=hex:00,02,C9,11,22,33\n\"PrimaryAdapterGuid\"=\"" +
                 std::string(Sample::Guid(1)) + "\"";
        sample.With(kTree + Sample::Guid(1), ListOf(kTeam) +
                                                 "\n\"TeamDeviceName\"=\"\\\\Device\\\\" +
                                                 platform::ToUtf8(kTeam) + "\"");
        sample.PortValue(
            1, "\"AdapterBindingBackup\"=hex(7):74,00,63,00,70,00,69,00,70,00,00,00,00,00");
    }
    return sample.With(kTeamEntry, entry);
}

// Of every operation: without a session nothing has changed.
void DescribeOpening(LayerSweep& test) {
    for (const char* call : {"CoCreateInstance", "INetCfg::QueryInterface",
                             "INetCfgLock::AcquireWriteLock", "INetCfg::Initialize"})
        test.Row({call}, test.Nothing(""), "", 1);
}
void DescribeInstall(LayerSweep& test, const std::string& line) {
    test.Row({"INetCfgClassSetup::Install", "INetCfgComponent::SetDisplayName"},
             test.Nothing(line));
    test.Row({"INetCfg::Apply"}, test.Nothing(line), "", 1);
}

const Lines kBindingValues = {"\\AdapterBindingBackup", "\\Bindings\\"};
const std::string kEntry = "\\Adapters\\" + std::string(Sample::Guid(1)) + "\\";

TEST(FaultSweep, AddVlan) {
    LayerSweep test({"ConfigureVlan, add",
                     Sample().Vlans(2),
                     [] { return Add(kA); },
                     [] { Remove(); },
                     {},
                     "ApplyRegistryChanges failed. hr = 0x<result>"});
    DescribeOpening(test);
    DescribeInstall(test, "pMiniport->Install failed. hr = 0x<result>");
    test.Row({"INetCfg::QueryNetCfgClass", "INetCfgClass::QueryInterface"},
             test.Nothing("pMiniport->Install failed. hr = 0x<result>"));
    test.Row({"INetCfg::EnumComponents"}, test.Nothing("HrFindInstance failed. hr = 0x<result>"),
             "", 1);
    test.Row({"INetCfgComponent::GetId"},
             test.Nothing("Failed to read adapter device ID 0x<result>"));
    // The component stays, and no list names it.
    Seen remains = test.Nothing("Miniport created");
    remains.log->lines.push_back("ApplyRegistryChanges failed. hr = 0x<result>");
    (*remains.values)["left"] = "1";
    test.Row({"RegCreateKeyExW"}, remains);
    test.Row({"RegSetValueExW"}, remains, "UpperBindings");
    for (const char* value : {"VlanID", "VlanName", "Priority"})
        test.Row({"RegSetValueExW"},
                 {.shown = {{"HKEY_LOCAL_MACHINE\\" + kClass + "<VLAN new>\\" + value, "-"}}},
                 value);
    test.sweep.Execute();
}

TEST(FaultSweep, RemoveVlan) {
    for (const int count : {1, 2}) {
        LayerSweep test({"ConfigureVlan, remove",
                         Sample().Vlans(count),
                         [] { return Remove(); },
                         [] { Add(kA, u"1", u"VLAN 1"); },
                         {"left"},
                         {},
                         kVlan1});
        DescribeOpening(test);
        test.Row({"INetCfg::QueryNetCfgClass", "INetCfgClassSetup::DeInstall"},
                 test.Nothing("pMuxPhysicalAdapter->RemoveMiniport failed. hr = 0x<result>"));
        // The entry stays without its miniport, or the miniport without its entry.
        const Seen remains{.shown = {{"left", "1"}}};
        test.Row({"RegCreateKeyExW"}, remains, "", 2);
        test.Row({"RegDeleteValueW", "RegSetValueExW"}, remains, "UpperBindings");
        test.Row({"INetCfg::Apply"}, remains);
        test.sweep.Execute();
    }
}

TEST(FaultSweep, AddTeamMember) {
    Lines silent = kBindingValues;
    silent.insert(silent.end(), {"\\PrimaryAdapterGuid", kEntry});
    LayerSweep test(
        {"ConfigureTeamMember, add", TeamSample(false, false), [] { return Member(true); },
         [] {
             if (Member(false) != S_OK)
                 RegDeleteKeyW(HKEY_LOCAL_MACHINE, Wide(kTree + Sample::Guid(1)).c_str());
         },
         silent});
    test.sweep.mayBe.insert({"HKEY_LOCAL_MACHINE\\" + kBackup, "7:\\00\\00"});
    DescribeOpening(test);
    test.Row({"GetIfTable2"}, test.Nothing("Failed to get MAC address of adapter '" +
                                           std::string(Sample::Guid(1)) + "'"));
    test.Row({"RegCreateKeyExW"}, test.Nothing("ApplyRegistryChanges failed. hr = 0x<result>"),
             kTeamEntry);
    // The paths stay as they were set, and there is no backup.
    test.Row({"INetCfgComponent::OpenParamKey"},
             {.shown = {{"HKEY_LOCAL_MACHINE\\" + kBackup, "-"}}});
    test.sweep.Execute();
}

TEST(FaultSweep, RemoveTeamMember) {
    Lines silent = kBindingValues;
    silent.insert(silent.end(), {"\\PrimaryAdapterGuid", "\\TeamMacAddress", kEntry});
    LayerSweep test({"ConfigureTeamMember, remove", TeamSample(false, true),
                     [] { return Member(false); }, [] { Member(true); }, silent});
    DescribeOpening(test);
    test.Row({"GetIfTable2"}, test.Nothing("Failed to get MAC address of adapter '" +
                                           std::string(Sample::Guid(1)) + "'"));
    test.Row({"RegCreateKeyExW"},
             test.Nothing("pTeamMiniport->ApplyRegistryChanges failed. hr = 0x<result>"),
             kTeamEntry);
    test.sweep.Execute();
}

TEST(FaultSweep, CreateTeam) {
    LayerSweep test(
        {"CreateTeam",
         TeamSample(false, false),
         MakeTeam,
         [] { DeleteTeam(made.c_str(), eL2_PROTOCOL_INVALID); },
         {"\\TeamName", "\\TeamGuid", "\\TeamType", "\\FallBackToPrimary", "\\L2Protocol"}});
    DescribeOpening(test);
    DescribeInstall(test, "pTeamMiniport->Install failed. hr = 0x<result>");
    // A team without its entry, which nobody is told of.
    Seen remains = test.Nothing("Team created", "done");
    (*remains.values)["left"] = "1";
    test.Row({"RegCreateKeyExW"}, remains);
    test.sweep.Execute();
}

TEST(FaultSweep, DeleteTeam) {
    LayerSweep test({"DeleteTeam",
                     TeamSample(true, false),
                     [] { return DeleteTeam(made.c_str(), eL2_PROTOCOL_ETHERNET); },
                     [] {
                         if (!IsComponentUsable(made.c_str())) MakeTeam();
                     },
                     {"left", "\\Adapters\\" + kTeamGuid + "\\"},
                     {},
                     kTeam});
    test.Row({"CoCreateInstance", "INetCfg::QueryInterface", "INetCfgLock::AcquireWriteLock",
              "INetCfg::Initialize"},
             test.Nothing("Removing all vlans failed. hr = 0x<result>"), "", 1);
    test.sweep.Execute();
}

TEST(FaultSweep, RemoveAllVlans) {
    for (const bool isMember : {false, true}) {
        Lines silent = kBindingValues;
        silent.insert(silent.end(), {"left", kEntry});
        // Without memory for it the team stays, with its VLAN.
        if (isMember)
            silent.insert(silent.end(), {kTeamGuid, platform::ToUtf8(kVlan1), "\\0020\\",
                                         "\\0021\\", "CVTA_MUXMP\\000"});
        LayerSweep test({"RemoveAllVlans", isMember ? TeamSample(true, true) : Sample().Vlans(2),
                         [] { return RemoveAllVlans(kA.c_str(), eL2_PROTOCOL_ETHERNET); }, [] {},
                         silent});
        test.sweep.mayBe.insert({{"left", "1"}, {"left", "2"}});
        DescribeOpening(test);
        test.sweep.Execute();
    }
}

TEST(FaultSweep, InstallAndUninstallMuxComponent) {
    const auto install = [] { return InstallMuxComponent(kPackage.c_str(), 2); };
    const std::string unopened = "Couldn't the get notify object interface.";
    LayerSweep installation(
        {"InstallMuxComponent", Sample(), install, [] { UninstallMuxComponent(); }});
    LayerSweep removal({"UninstallMuxComponent", Sample().Vlans(1), UninstallMuxComponent,
                        [install] { install(); }});
    for (LayerSweep* const test : {&installation, &removal}) {
        test->Row({"CoCreateInstance", "INetCfg::QueryInterface", "INetCfgLock::AcquireWriteLock",
                   "INetCfg::Initialize"},
                  test->Nothing(unopened), "", 1);
        test->sweep.Execute();
    }
}

TEST(FaultSweep, RenameComponent) {
    LayerSweep test({"RenameComponent", Sample().Vlans(1),
                     [] { return RenameComponent(kVlan1.c_str(), u"another"); }, [] {}});
    DescribeOpening(test);
    test.sweep.Execute();
}

}  // namespace
