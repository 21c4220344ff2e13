// The network configuration engine: components, what becomes of changes, bindings, and the lock.

#include <cctype>
#include <string>
#include <vector>

#include <windows.h>
#include <devguid.h>
#include <netcfgx.h>

#include "AutoClasses.h"
#include "Facts.h"
#include "FactsMachine.h"
#include "Registry.h"
#include "RegistryChanges.h"

namespace {

using Component = ScopedReference<INetCfgComponent>;

const std::string kNet = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
const std::string kProtocols = "{4D36E975-E325-11CE-BFC1-08002BE10318}";
const std::string kPort = "{6B29FC40-CA47-4067-B31D-00DD010662DA}";
const std::string kOther = "{A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811}";
const std::string kNew = "{7B1DCDAF-A839-4220-B465-B9A16A9E786E}";  // the first one of seed 0
constexpr auto kNotFound = NETCFG_E_ADAPTER_NOT_FOUND;

// A component of the class Net, by its number.
std::string NetLines(const std::string& number, const std::string& id, const std::string& guid) {
    return KeyLines("SYSTEM\\CurrentControlSet\\Control\\Class\\" + kNet + "\\" + number,
                    "\"ComponentId\"=\"" + id + "\"\n\"NetCfgInstanceId\"=\"" + guid + "\"\n");
}

std::string ConnectionLines(const std::string& guid, const std::string& values) {
    return KeyLines(
        "SYSTEM\\CurrentControlSet\\Control\\Network\\" + kNet + "\\" + guid + "\\Connection",
        values);
}

std::string DeviceLines(const std::string& id, const std::string& values = {}) {
    return KeyLines("SYSTEM\\CurrentControlSet\\Enum\\" + id, values);
}

// A machine whose store has the INF files of the driver, and a session of its engine.
struct Engine : FactsMachine {
    explicit Engine(const std::string& body = {}) : FactsMachine(body) {
        WriteStore();
        EXPECT_TRUE(SUCCEEDED(com.Initialise()));
        Create();
    }
    void Create() {
        EXPECT_EQ(CoCreateInstance(CLSID_CNetCfg, nullptr, CLSCTX_SERVER, IID_INetCfg,
                                   reinterpret_cast<void**>(netCfg.Receive())),
                  S_OK);
        EXPECT_EQ(netCfg.Query(IID_INetCfgLock, lock), S_OK);
    }
    void Open() {
        EXPECT_EQ(lock->AcquireWriteLock(0, u"test", nullptr), S_OK);
        EXPECT_EQ(netCfg->Initialize(nullptr), S_OK);
    }
    void Reopen() {
        EXPECT_EQ(netCfg->Uninitialize(), S_OK);
        EXPECT_EQ(netCfg->Initialize(nullptr), S_OK);
    }
    ScopedReference<INetCfgClassSetup> Setup(const GUID& classGuid = GUID_DEVCLASS_NET) {
        ScopedReference<INetCfgClassSetup> setup;
        EXPECT_EQ(netCfg->QueryNetCfgClass(&classGuid, IID_INetCfgClassSetup,
                                           reinterpret_cast<void**>(setup.Receive())),
                  S_OK);
        return setup;
    }
    Component Install(const WCHAR* id, const GUID& classGuid = GUID_DEVCLASS_NET) {
        Component made;
        EXPECT_EQ(Setup(classGuid)->Install(id, nullptr, 0, 0, nullptr, nullptr, made.Receive()),
                  S_OK);
        return made;
    }
    Component Find(const WCHAR* id) {
        Component found;
        const HRESULT result = netCfg->FindComponent(id, found.Receive());
        EXPECT_EQ(result, found ? S_OK : S_FALSE);
        return found;
    }
    std::vector<ScopedReference<INetCfgBindingPath>> Paths(const Component& component) {
        ScopedReference<INetCfgComponentBindings> bindings;
        EXPECT_EQ(component.Query(IID_INetCfgComponentBindings, bindings), S_OK);
        ScopedReference<IEnumNetCfgBindingPath> all;
        EXPECT_EQ(bindings->EnumBindingPaths(EBP_ABOVE, all.Receive()), S_OK);
        std::vector<ScopedReference<INetCfgBindingPath>> paths(1);
        while (all->Next(1, paths.back().Receive(), nullptr) == S_OK)
            paths.emplace_back();
        paths.pop_back();
        return paths;
    }
    // What has changed since the engine was created; # stands for the path of the control set's
    // key.
    std::string Changes() {
        const std::u16string none = u"HKEY_LOCAL_MACHINE\\none";
        const auto& tree = machine.Get<platform::Registry>().Tree();
        std::string text = platform::FormatChanges(before, tree, none).value_or("?");
        text.erase(0, kHead.size() - 1);
        const std::string path = "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\";
        for (auto at = text.find(path); at != std::string::npos; at = text.find(path))
            text.replace(at, path.size(), "#");
        return text;
    }

    ScopedCom com;
    ScopedReference<INetCfg> netCfg;
    ScopedReference<INetCfgLock> lock;
    platform::RegistryTree before = machine.Get<platform::Registry>().Snapshot();

  private:
    static void WriteStore() {
        const std::string text =
            "[Version]\nSignature=\"$Windows NT$\"\n[Manufacturer]\nC=Models\n[Models]\n"
            "\"Virtual Miniport\"=A,cvta_muxmp\n\"Multiplexer\"=B,cvta_muxp\n";
        CreateDirectoryW(u"C:\\Windows\\INF", nullptr);
        ScopedFile file(CreateFileW(u"C:\\Windows\\INF\\oem0.inf", GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, 0, nullptr));
        DWORD written = 0;
        EXPECT_TRUE(
            WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    }
};

// The text that a method hands out; its result where it fails.
template <class Object, class Method>
std::string HandedOut(const Object& object, Method method) {
    ScopedTaskMemory<WCHAR> text;
    const HRESULT result = (object.Get()->*method)(text.Receive());
    return result == S_OK ? platform::ToUtf8(text.Get())
                          : std::to_string(static_cast<DWORD>(result) & 0xFFFF);
}

std::string GuidOf(const Component& component) {
    return HandedOut(component, &INetCfgComponent::GetBindName);
}

TEST(NetCfg, WhatASessionMayDoDependsOnItsState) {
    Engine engine(NetLines("0000", "port", kPort) +
                  DeviceLines("R\\V\\0", "\"Driver\"=\"" + kNet + "\\\\0000\"\n") +
                  FactLines("NetCfg\\Bindings\\" + kPort, "\"t\"=\"a;enabled\"\n"));
    Component component;
    ScopedReference<IEnumNetCfgComponent> components;
    void* object = nullptr;
    EXPECT_EQ(engine.netCfg->FindComponent(u"port", component.Receive()), NETCFG_E_NOT_INITIALIZED);
    EXPECT_EQ(engine.netCfg->EnumComponents(&GUID_DEVCLASS_NET, components.Receive()),
              NETCFG_E_NOT_INITIALIZED);
    EXPECT_EQ(engine.netCfg->QueryNetCfgClass(&GUID_DEVCLASS_NET, IID_INetCfgClass, &object),
              NETCFG_E_NOT_INITIALIZED);
    EXPECT_EQ(engine.netCfg->Apply(), NETCFG_E_NOT_INITIALIZED);
    EXPECT_EQ(engine.netCfg->Uninitialize(), NETCFG_E_NOT_INITIALIZED);

    EXPECT_EQ(engine.netCfg->Initialize(nullptr), S_OK);
    EXPECT_EQ(engine.netCfg->Initialize(nullptr), NETCFG_E_ALREADY_INITIALIZED);
    EXPECT_EQ(engine.lock->AcquireWriteLock(0, u"test", nullptr), NETCFG_E_ALREADY_INITIALIZED);
    const auto setup = engine.Setup();
    component = engine.Find(u"PORT");
    EXPECT_EQ(engine.netCfg->Apply(), NETCFG_E_NO_WRITE_LOCK);
    EXPECT_EQ(setup->Install(u"cvta_muxmp", nullptr, 0, 0, nullptr, nullptr, nullptr),
              NETCFG_E_NO_WRITE_LOCK);
    EXPECT_EQ(setup->DeInstall(component.Get(), nullptr, nullptr), NETCFG_E_NO_WRITE_LOCK);
    EXPECT_EQ(component->SetDisplayName(u"name"), NETCFG_E_NO_WRITE_LOCK);
    EXPECT_EQ(engine.Paths(component).at(0)->Enable(FALSE), NETCFG_E_NO_WRITE_LOCK);
    ULONG status = 0;
    EXPECT_EQ(component->GetDeviceStatus(&status), S_OK);

    EXPECT_EQ(engine.netCfg->Uninitialize(), S_OK);
    EXPECT_EQ(component->GetDeviceStatus(&status), NETCFG_E_NOT_INITIALIZED);
    engine.Open();
    EXPECT_EQ(setup->Install(u"cvta_other", nullptr, 0, 0, nullptr, nullptr, nullptr),
              static_cast<HRESULT>(0x800F0203));
    EXPECT_EQ(engine.Changes(), "");
}

TEST(NetCfg, WhatANewAdapterLeavesAndTakesAway) {
    const std::string there =
        NetLines("0000", "cvta_muxmp", kPort) + NetLines("0002", "port", kOther) +
        DeviceLines("ROOT\\CVTA_MUXMP\\0001") +
        ConnectionLines(kPort,
                        "\"Name\"=\"local area connection 1\"\n"
                        "\"PnpInstanceID\"=\"ROOT\\\\CVTA_MUXMP\\\\0001\"\n") +
        KeyLines("SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum",
                 "\"Count\"=dword:1\n\"0\"=\"ROOT\\\\CVTA_MUXMP\\\\0001\"\n") +
        FactLines("Interfaces\\" + kPort) + FactLines("NetCfg\\Bindings\\" + kPort);
    Engine engine(there);
    engine.Open();
    const Component made = engine.Install(u"Cvta_MuxMP");
    EXPECT_EQ(GuidOf(made), std::to_string(static_cast<DWORD>(kNotFound) & 0xFFFF));
    EXPECT_EQ(engine.Changes(), "");
    EXPECT_EQ(engine.netCfg->Apply(), S_OK);
    EXPECT_EQ(GuidOf(made), kNew);
    EXPECT_EQ(HandedOut(made, &INetCfgComponent::GetDisplayName), "Virtual Miniport");
    EXPECT_EQ(engine.Changes(), "\n[#Control\\Class\\" + kNet + R"(\0001]
"ComponentId"="Cvta_MuxMP"
"NetCfgInstanceId"=")" + kNew + R"("
"DriverDesc"="Virtual Miniport"
"EnumPropPages32"="WinTsrTune_ipoib.dll,WinTsrTunePropPageProvider"

[#Control\Network\)" + kNet + "\\" + kNew +
                                    R"(]

[#Control\Network\)" + kNet + "\\" + kNew +
                                    R"(\Connection]
"Name"="Local Area Connection 2"
"PnpInstanceID"="ROOT\\CVTA_MUXMP\\0000"

[#Enum\ROOT\CVTA_MUXMP\0000]
"Service"="MUXMP"
"Driver"=")" + kNet + R"(\\0001"
"Class"="Net"
"ClassGUID"=")" + kNet + R"("
"DeviceDesc"="Virtual Miniport"

[#Services\MUXMP\Enum]
"Count"=dword:00000002
"1"="ROOT\\CVTA_MUXMP\\0000"
)");

    // The first one goes, with what a machine file says of it; the entries are numbered anew.
    const Component first = engine.Find(u"cvta_muxmp");
    EXPECT_EQ(GuidOf(first), kPort);
    EXPECT_EQ(engine.Setup()->DeInstall(first.Get(), nullptr, nullptr), S_OK);
    EXPECT_EQ(GuidOf(engine.Find(u"cvta_muxmp")), kNew);
    EXPECT_EQ(engine.netCfg->Apply(), S_OK);
    const std::u16string list = u"SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum";
    EXPECT_EQ(platform::MachineText(list, u"0"), u"ROOT\\CVTA_MUXMP\\0000");
    EXPECT_EQ(platform::MachineNumber(list, u"Count"), 1U);
    EXPECT_EQ(engine.Setup()->DeInstall(made.Get(), nullptr, nullptr), S_OK);
    EXPECT_EQ(engine.Setup()->DeInstall(made.Get(), nullptr, nullptr), kNotFound);
    EXPECT_FALSE(engine.Find(u"cvta_muxmp"));
    EXPECT_EQ(engine.netCfg->Apply(), S_OK);
    const std::string facts = "\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\";
    EXPECT_EQ(engine.Changes(), facts + "Interfaces\\" + kPort + "]\n" + facts +
                                    "NetCfg\\Bindings\\" + kPort + "]\n\n[-#Control\\Class\\" +
                                    kNet + "\\0000]\n\n[-#Control\\Network\\" + kNet + "\\" +
                                    kPort + R"(]

[-#Enum\ROOT]

[#Services\MUXMP\Enum]
"0"=-
"Count"=dword:00000000
)");
}

TEST(NetCfg, AGuidThatTheMachineHasIsPassedOver) {
    const std::string adapters =
        "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\";
    std::string named = kNew;
    for (char& unit : named)
        unit = static_cast<char>(std::tolower(unit));
    for (const std::string& file :
         {NetLines("0000", "", named), FactLines("Miniports\\" + named), KeyLines(adapters + named),
          KeyLines(adapters + kPort, "\"UpperBindings\"=\"\\\\Device\\\\" + named + "\"\n")}) {
        SCOPED_TRACE(file);
        Engine engine(file);
        engine.Open();
        const Component made = engine.Install(u"cvta_muxmp");
        EXPECT_EQ(engine.netCfg->Apply(), S_OK);
        EXPECT_EQ(GuidOf(made), "{8009454F-5D18-46C4-AC81-4C72A8B88BF8}");
    }
}

TEST(NetCfg, WhatIsNotAppliedIsForgotten) {
    Engine engine(NetLines("0000", "port", kPort) +
                  FactLines("NetCfg", "\"ApplyResult\"=dword:80004005\n") +
                  FactLines("NetCfg\\Bindings\\" + kPort, "\"t\"=\"a;enabled\"\n"));
    engine.Open();
    const Component made = engine.Install(u"cvta_muxmp");
    const Component port = engine.Find(u"port");
    EXPECT_EQ(engine.Paths(port).at(0)->Enable(FALSE), S_OK);
    EXPECT_EQ(engine.Paths(port).at(0)->IsEnabled(), S_FALSE);
    EXPECT_EQ(engine.Setup()->DeInstall(port.Get(), nullptr, nullptr), S_OK);
    EXPECT_EQ(engine.netCfg->Apply(), E_FAIL);
    EXPECT_EQ(engine.Changes(), "");

    // What was to be installed can be taken back before it is.
    EXPECT_EQ(engine.Setup()->DeInstall(made.Get(), nullptr, nullptr), S_OK);
    engine.Merge(FactLines("NetCfg", "\"ApplyResult\"=dword:0004a020\n"));
    engine.Reopen();
    EXPECT_EQ(engine.Paths(engine.Find(u"port")).at(0)->IsEnabled(), S_OK);
    engine.before = engine.machine.Get<platform::Registry>().Snapshot();
    EXPECT_EQ(engine.netCfg->Apply(), NETCFG_S_REBOOT);
    EXPECT_EQ(engine.Changes(), "");
    EXPECT_EQ(engine.Paths(port).at(0)->Enable(FALSE), S_OK);
    EXPECT_EQ(engine.netCfg->Apply(), NETCFG_S_REBOOT);
    EXPECT_EQ(engine.Changes(), "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\NetCfg\\Bindings\\" +
                                    kPort + "]\n\"t\"=\"a;disabled\"\n");
}

TEST(NetCfg, AProtocolIsBoundToEachAdapterOnce) {
    const std::string paths = "HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\NetCfg\\Bindings\\";
    const std::string value = "\"cvta_muxp->" + kPort + "\"=\"cvta_muxp;enabled\"\n";
    Engine engine(NetLines("0000", "port", kPort) + NetLines("0001", "CVTA_MUXMP", kOther) +
                  FactLines("NetCfg\\Bindings\\" + kPort, "\"t\"=\"a,b;disabled\"\n"));
    engine.Open();
    EXPECT_FALSE(engine.Find(u"cvta_muxp"));
    engine.Install(u"cvta_muxp", GUID_DEVCLASS_NETTRANS);
    EXPECT_EQ(engine.netCfg->Apply(), S_OK);
    const std::string changes = "\n[" + paths + kPort + "]\n" + value + "\n[#Control\\Network]\n" +
                                "\n[#Control\\Network\\" + kProtocols +
                                "]\n\n[#Control\\Network\\" + kProtocols + "\\" + kNew +
                                "]\n\"ComponentId\"=\"cvta_muxp\"\n";
    EXPECT_EQ(engine.Changes(), changes);
    engine.Install(u"Cvta_muxp", GUID_DEVCLASS_NETTRANS);
    EXPECT_EQ(engine.netCfg->Apply(), S_OK);
    EXPECT_EQ(engine.Changes(), changes);

    const Component protocol = engine.Find(u"CVTA_MUXP");
    GUID classGuid = {};
    EXPECT_EQ(protocol->GetClassGuid(&classGuid), S_OK);
    EXPECT_EQ(engine.Setup()->DeInstall(protocol.Get(), nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(engine.Setup(classGuid)->DeInstall(protocol.Get(), nullptr, nullptr), S_OK);
    EXPECT_EQ(engine.netCfg->Apply(), S_OK);
    EXPECT_EQ(engine.Changes(),
              "\n[#Control\\Network]\n\n[#Control\\Network\\" + kProtocols + "]\n");
}

TEST(NetCfg, PathsComeInTheirOrderWithTheComponentsThatTheyName) {
    Engine engine(NetLines("0000", "port", kPort) +
                  FactLines("NetCfg\\Bindings\\" + kPort,
                            "\"z\"=\"ms_server, Port;enabled\"\n\"a\"=\"cvta_muxp;disabled\"\n"));
    engine.Open();
    std::string all;
    for (const auto& path : engine.Paths(engine.Find(u"port"))) {
        all += HandedOut(path, &INetCfgBindingPath::GetPathToken) + ":";
        ScopedReference<IEnumNetCfgBindingInterface> interfaces;
        EXPECT_EQ(path->EnumBindingInterfaces(interfaces.Receive()), S_OK);
        ScopedReference<INetCfgBindingInterface> one;
        while (interfaces->Next(1, one.Receive(), nullptr) == S_OK) {
            Component upper;
            EXPECT_EQ(one->GetUpperComponent(upper.Receive()), S_OK);
            all += " " + HandedOut(upper, &INetCfgComponent::GetId);
        }
        all += path->IsEnabled() == S_OK ? " on; " : " off; ";
    }
    EXPECT_EQ(all, "z: ms_server port on; a: cvta_muxp off; ");
}

TEST(NetCfg, WhichComponentsAreSeenAndWhatTheirDevicesSay) {
    const std::string driver = "\"Driver\"=\"" + kNet + "\\\\";
    Engine engine(
        NetLines("0000", "", kPort) + NetLines("0001", "broken", "{6B29FC40}") +
        NetLines("0002", "by-driver", kPort) + NetLines("0003", "by-connection", kOther) +
        NetLines("0004", "lost", kNew) +
        DeviceLines("PCI\\A\\1", driver + "0002\"\n\"DeviceDesc\"=\"@x.inf,%y%;Port; A\"\n") +
        DeviceLines("PCI\\A\\2", driver + "0003\"\n") +
        DeviceLines("PCI\\A\\3", "\"FriendlyName\"=\"Three\"\n\"DeviceDesc\"=\"3\"\n") +
        ConnectionLines(kOther, "\"PnpInstanceID\"=\"PCI\\\\A\\\\3\"\n") +
        ConnectionLines(kNew, "\"PnpInstanceID\"=\"PCI\\\\A\\\\4\"\n"));
    engine.Open();
    ScopedReference<IEnumNetCfgComponent> components;
    EXPECT_EQ(engine.netCfg->EnumComponents(&GUID_DEVCLASS_NET, components.Receive()), S_OK);
    std::string all;
    Component component;
    while (components->Next(1, component.Receive(), nullptr) == S_OK) {
        ULONG status = 0;
        all += HandedOut(component, &INetCfgComponent::GetId) + ", " +
               HandedOut(component, &INetCfgComponent::GetPnpDevNodeId) + ", " +
               HandedOut(component, &INetCfgComponent::GetDisplayName) +
               (component->GetDeviceStatus(&status) == S_OK ? "\n" : " failed\n");
    }
    EXPECT_EQ(all,
              "by-driver, PCI\\A\\1,  A\n"
              "by-connection, PCI\\A\\3, Three\n"
              "lost, PCI\\A\\4, 40999 failed\n");
}

TEST(NetCfg, WhenTheLockIsGiven) {
    const struct {
        std::string facts;
        HRESULT first, second;  // the second time, after it was given up
        std::uint64_t firstAt, secondAt;
        std::u16string holder;  // named last
    } cases[] = {
        {"", S_OK, S_OK, 0, 0, u""},
        {"\"LockedBy\"=\"x\"\n", S_FALSE, S_FALSE, 5000, 10000, u"x"},
        {"\"LockedBy\"=\"x\"\n\"LockedFor\"=dword:0\n", S_OK, S_OK, 0, 0, u""},
        {"\"LockedBy\"=\"x\"\n\"LockedFor\"=dword:bb8\n", S_OK, S_OK, 3000, 3000, u""},
        {"\"LockedBy\"=\"x\"\n\"LockedFor\"=dword:1b58\n", S_FALSE, S_OK, 5000, 7000, u"x"},
        {"\"TakenFor\"=dword:1b58\n", S_OK, S_FALSE, 0, 5000, u"another program"},
        {"\"TakenFor\"=dword:64\n\"TakenAt\"=dword:1\n", S_OK, S_OK, 0, 100, u""},
        {"\"TakenFor\"=dword:64\n\"TakenAt\"=dword:2\n", S_OK, S_OK, 0, 0, u""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.facts);
        Engine engine(FactLines("NetCfg", row.facts));
        std::u16string holder;
        const auto acquire = [&] {
            ScopedTaskMemory<WCHAR> name;
            const HRESULT result = engine.lock->AcquireWriteLock(5000, u"test", name.Receive());
            if (name) holder = name.Get();
            return result;
        };
        EXPECT_EQ(acquire(), row.first);
        EXPECT_EQ(engine.machine.scheduler.Now(), row.firstAt);
        EXPECT_EQ(engine.lock->ReleaseWriteLock(), S_OK);
        EXPECT_EQ(acquire(), row.second);
        EXPECT_EQ(engine.machine.scheduler.Now(), row.secondAt);
        EXPECT_EQ(holder, row.holder);
    }
}

TEST(NetCfg, TheLockEndsWithItsSession) {
    Engine engine;
    engine.Open();
    auto first = std::move(engine.netCfg);
    auto firstLock = std::move(engine.lock);
    engine.Create();
    ScopedTaskMemory<WCHAR> holder;
    EXPECT_EQ(engine.lock->AcquireWriteLock(10, u"second", holder.Receive()), S_FALSE);
    EXPECT_EQ(std::u16string(holder.Get()), u"test");
    EXPECT_EQ(engine.lock->ReleaseWriteLock(), S_OK);
    EXPECT_EQ(engine.lock->AcquireWriteLock(0, u"second", nullptr), S_FALSE);
    first.Reset();
    EXPECT_EQ(engine.lock->AcquireWriteLock(0, u"second", nullptr), S_FALSE);
    firstLock.Reset();
    EXPECT_EQ(engine.lock->AcquireWriteLock(0, u"second", nullptr), S_OK);
}

TEST(NetCfg, FaultsReachTheMethodsAsResults) {
    const struct {
        const char* fault;
        HRESULT result;
    } cases[] = {
        {"5", E_ACCESSDENIED},
        {"0x0004A020", static_cast<HRESULT>(0x8007A020)},
        {"0x8004A025", NETCFG_E_NEED_REBOOT},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.fault);
        std::string faults;
        for (const char* call :
             {"INetCfg::Apply", "INetCfgClassSetup::Install CVTA_MUXMP", "INetCfg::QueryInterface"})
            faults.append("\"").append(call).append("\"=\"").append(row.fault).append("\"\n");
        Engine engine;
        engine.Merge(FactLines("Faults", faults));
        engine.Open();
        Component made;
        EXPECT_EQ(engine.netCfg->Apply(), row.result);
        EXPECT_EQ(
            engine.Setup()->Install(u"cvta_muxmp", nullptr, 0, 0, nullptr, nullptr, made.Receive()),
            row.result);
        ScopedReference<INetCfgLock> lock;
        EXPECT_EQ(engine.netCfg.Query(IID_INetCfgLock, lock), row.result);
        EXPECT_FALSE(made || lock);
    }
}

}  // namespace
