// How sessions wait for the lock and how they close.

#include "NetworkSession.h"

#include "ComponentOperations.h"
#include "MachineFile.h"
#include "MuxInstallation.h"
#include "NetConfigTest.h"

namespace {

constexpr char kLockKey[] = "SOFTWARE\\StandIn\\NetCfg";
constexpr HRESULT kNoLock = NETCFG_E_NO_WRITE_LOCK;

TEST(NetworkSession, WaitsForTheLockAsLongAsItsKindDoes) {
    constexpr char kHeld[] = "\"LockedBy\"=\"the other\"";
    const std::string kLine = "AcquireWriteLock failed. Lock is held by the other\n";
    const std::string kInstallLine = "the other currently holds the lock, try later.\n";
    const struct {
        const char* reason;
        std::string lock;
        HRESULT configuration;
        std::uint64_t configurationAt;
        HRESULT rename;
        std::uint64_t renameAt;
        HRESULT install;
        std::uint64_t installAt;
    } rows[] = {
        {"free", "", S_OK, 0, S_OK, 0, S_OK, 0},
        {"3 s", "\n\"LockedFor\"=dword:bb8", S_OK, 3000, S_OK, 3000, S_OK, 3000},
        {"7 s", "\n\"LockedFor\"=dword:1b58", S_OK, 7000, S_OK, 7000, kNoLock, 5000},
        {"12 s", "\n\"LockedFor\"=dword:2ee0", S_OK, 12000, S_OK, 12000, kNoLock, 5000},
        {"16.999 s", "\n\"LockedFor\"=dword:4267", S_OK, 16999, S_OK, 16999, kNoLock, 5000},
        {"for good", "\n", kNoLock, 18000, kNoLock, 18000, kNoLock, 5000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        const Sample sample =
            row.lock.empty() ? Sample() : Sample().With(kLockKey, kHeld + row.lock);
        {
            LayerMachine test(sample);
            test.machine.trace.Start();
            EXPECT_EQ(test.AddVlan(kA, u"1", u"a"), row.configuration);
            EXPECT_EQ(test.Now(), row.configurationAt);
            if (row.configuration != S_OK) {
                EXPECT_EQ(test.Printed(), kLine);
                EXPECT_EQ(test.Calls("INetCfgLock::AcquireWriteLock"), 3U);
                EXPECT_EQ(test.Calls("Sleep"), 3U);
            }
        }
        {
            LayerMachine test(sample);
            EXPECT_EQ(RenameComponent(kA.c_str(), u"new"), row.rename);
            EXPECT_EQ(test.Now(), row.renameAt);
            EXPECT_EQ(test.Printed(), "");
        }
        LayerMachine test(sample);
        test.machine.trace.Start();
        EXPECT_EQ(InstallMuxComponent(kPackage.c_str(), eMUX_CLASS_PROTOCOL), row.install);
        EXPECT_EQ(test.Now(), row.installAt);
        EXPECT_EQ(test.Printed().find(kInstallLine), row.install == S_OK ? std::string::npos : 0U);
        EXPECT_EQ(test.Calls("Sleep"), 0U);
        EXPECT_EQ(test.Calls("CoInitialize"), 1U);
        EXPECT_EQ(test.Calls("CoUninitialize"), 1U);
    }
}

TEST(NetworkSession, LetsAnotherClientAheadWhenItCloses) {
    const struct {
        const char* lock;
        HRESULT result;
        std::uint64_t at;  // both sessions
    } rows[] = {
        // Taken for 3 s when the first session gives it up, and again after the second time.
        {"\"TakenFor\"=dword:bb8\n\"TakenAt\"=dword:1", S_OK, 3000},
        // For 7 s: the closing attempt ends at 5 s, and the session at 15 s.
        {"\"TakenFor\"=dword:1b58\n\"TakenAt\"=dword:1", S_OK, 15000},
        // Between the halves of the deletion: the second session waits.
        {"\"TakenFor\"=dword:bb8\n\"TakenAt\"=dword:2", S_OK, 3000},
        // For longer than that.
        {"\"TakenFor\"=dword:186a0\n\"TakenAt\"=dword:2", kNoLock, 18000},
        {"\"TakenFor\"=dword:186a0\n\"TakenAt\"=dword:1", kNoLock, 33000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.lock);
        LayerMachine test;
        ASSERT_EQ(test.NewTeam(u"t"), S_OK);
        // The lock has been given up twice.
        std::string lock = row.lock;
        lock.back() = static_cast<char>(lock.back() + 2);
        EXPECT_FALSE(platform::MergeMachineFile(
            test.machine, "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\" +
                              std::string(kLockKey) + "]\n" + lock + "\n"));
        EXPECT_EQ(DeleteTeam(test.newGuid.c_str(), eL2_PROTOCOL_ETHERNET), row.result);
        EXPECT_EQ(test.Now(), row.at);
        EXPECT_EQ(test.Miniports(), row.result == S_OK ? 0U : 1U);
    }
}

TEST(NetworkSession, GivesTheLockBackWhateverFails) {
    const struct {
        std::string fault;
        HRESULT result;
        const char* calls;  // what was called of the lock and at the end
    } rows[] = {
        {"CoCreateInstance=0x80040154", R(0x80040154), ""},
        {"INetCfg::QueryInterface=0x80004002,1,1", R(0x80004002), ""},
        {"INetCfgLock::AcquireWriteLock=0x80070005,1,1", R(0x80070005), "Acquire "},
        {"INetCfg::Initialize=E", R(0x80004005), "Acquire Initialize Release "},
        {"INetCfgComponent::GetId=E", R(0x80004005),
         "Acquire Initialize Apply Uninitialize Release Acquire Release "},
        {"INetCfg::Apply=E,2", S_OK,
         "Acquire Initialize Apply Apply Uninitialize Release Acquire Release "},
        {"INetCfg::Uninitialize=E", S_OK, "Acquire Initialize Apply Apply Uninitialize "},
        {"INetCfg::QueryInterface=0x80004002,2", S_OK,
         "Acquire Initialize Apply Apply Uninitialize "},
        {"INetCfgLock::AcquireWriteLock=0x80070005,2", S_OK,
         "Acquire Initialize Apply Apply Uninitialize Release Acquire Release "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        LayerMachine test;
        test.Fail(row.fault);
        std::string calls;
        test.machine.trace.onCall = [&](const platform::Trace::Record& record) {
            for (const char* name :
                 {"INetCfgLock::AcquireWriteLock", "INetCfg::Initialize", "INetCfg::Apply",
                  "INetCfg::Uninitialize", "INetCfgLock::ReleaseWriteLock"}) {
                std::string shown = std::string(name).substr(std::string(name).rfind(':') + 1);
                if (record.name == std::string(name))
                    calls += shown.substr(0, shown.find("WriteLock")) + " ";
            }
        };
        EXPECT_EQ(test.AddVlan(kA, u"1", u"a"), row.result);
        EXPECT_EQ(calls, row.calls);
        test.machine.trace.onCall = nullptr;
        test.machine.faults.Disarm();
        EXPECT_TRUE(test.LockIsFree());
    }
}

TEST(NetworkSession, BalancesTheInitialisationOfCom) {
    for (const DWORD model : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
        for (const bool fails : {false, true}) {
            TestMachine test;  // its thread hasn't COM yet
            test.machine.trace.Start();
            if (fails) test.machine.faults.FailCalls("INetCfg::Initialize", u"", 0x80004005);
            const bool isBefore = model == COINIT_MULTITHREADED;
            if (isBefore) CoInitializeEx(nullptr, model);
            EXPECT_EQ(UninstallMuxComponent(), fails ? E_FAIL : S_FALSE);
            // In another apartment COM is there, and nothing is owed.
            EXPECT_EQ(test.machine.trace.Count("CoUninitialize"), isBefore ? 0U : 1U);
            if (isBefore) CoUninitialize();
        }
    }
    LayerMachine test;
    test.machine.faults.FailCalls("CoInitialize", u"", static_cast<DWORD>(E_OUTOFMEMORY));
    EXPECT_EQ(UninstallMuxComponent(), E_OUTOFMEMORY);
    EXPECT_EQ(test.Printed(), "Couldn't the get notify object interface.\n");
}

TEST(NetworkSession, RenamesAComponent) {
    const struct {
        std::u16string guid;
        std::string faults;
        HRESULT result;
        bool isRenamed;
        std::size_t applied;
    } rows[] = {
        {kA, {}, S_OK, true, 1},
        {kUnknown, {}, S_FALSE, false, 1},
        {u"no GUID", {}, CO_E_CLASSSTRING, false, 0},
        {kA, "INetCfgComponent::GetInstanceGuid=E", E_FAIL, false, 0},
        {kA, "INetCfgComponent::SetDisplayName=E", E_FAIL, false, 0},
        {kA, "INetCfg::Apply=E", E_FAIL, true, 1},
        {kA, "INetCfg::Initialize=E", E_FAIL, false, 0},
        {kA, "CoCreateInstance=E", E_FAIL, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        LayerMachine test;
        test.Fail(row.faults);
        test.machine.trace.Start();
        EXPECT_EQ(RenameComponent(row.guid.c_str(), u"new"), row.result);
        EXPECT_EQ(test.Text("SYSTEM\\CurrentControlSet\\Enum\\" + test.sample.InstanceId(1),
                            u"FriendlyName")
                      .value_or(u"-"),
                  row.isRenamed ? u"new" : u"-");
        EXPECT_EQ(test.Calls("INetCfg::Apply"), row.applied);
        test.machine.faults.Disarm();
        EXPECT_TRUE(test.LockIsFree());
    }
}

TEST(NetworkSession, ReadsADeviceWhoeverHoldsTheLock) {
    const std::u16string id = Wide(Sample().InstanceId(1));
    for (const char* lock : {"", "\"LockedBy\"=\"x\""}) {
        LayerMachine test(Sample().With(kLockKey, lock));
        WCHAR buffer[200] = u"before";
        GetAdapterDevNodeId(kUnknown.c_str(), buffer);
        EXPECT_EQ(std::u16string(buffer), u"before");
        GetAdapterDevNodeId(kA.c_str(), buffer);
        EXPECT_EQ(std::u16string(buffer), id);
        EXPECT_EQ(test.Now(), *lock ? 10U : 0U);
        test.machine.trace.Start();
        GetAdapterDevNodeId(kA.c_str(), buffer, 5);
        for (const char* call :
             {"INetCfg::Apply", "INetCfg::Uninitialize", "INetCfgLock::ReleaseWriteLock"})
            EXPECT_EQ(test.Calls(call), 1U) << call;
        EXPECT_EQ(std::u16string(buffer), id.substr(0, 4));
        EXPECT_TRUE(IsComponentUsable(kA.c_str()));
        EXPECT_FALSE(IsComponentUsable(kUnknown.c_str()));
        test.Fail("INetCfgComponent::GetDeviceStatus=0x8004A027");
        EXPECT_FALSE(IsComponentUsable(kA.c_str()));
        for (const char* call : {"CoCreateInstance", "INetCfg::Initialize"}) {
            test.Fail(std::string(call) + "=E");
            EXPECT_FALSE(IsComponentUsable(kA.c_str()));
            GetAdapterDevNodeId(kA.c_str(), buffer);
            EXPECT_EQ(std::u16string(buffer), id.substr(0, 4));
        }
    }
}

}  // namespace
