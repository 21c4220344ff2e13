#pragma once
// What the tests of the network configuration layer share: a machine whose INF store has the MUX
// driver's files, the MUX tree as it should be, to the byte, and the lines that were printed.

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "AutoClasses.h"
#include "ConfigurationOperations.h"
#include "Drive.h"
#include "Fixture.h"
#include "NetworkSession.h"
#include "Text.h"

inline const std::string kClass =
    "SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
inline const std::string kTree =
    "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\";
inline const std::u16string kA = Wide(Sample::Guid(1));
inline const std::u16string kB = Wide(Sample::Guid(2));
inline const std::u16string kPackage = u"C:\\Program Files\\Corvanta\\Vlan_lbfo";
inline const std::u16string kUnknown = u"{00000000-1111-2222-3333-444444444444}";
// The first two components that a machine of seed 0 makes.
inline const std::u16string kFirst = u"{7B1DCDAF-A839-4220-B465-B9A16A9E786E}";
inline const std::u16string kSecond = u"{8009454F-5D18-46C4-AC81-4C72A8B88BF8}";

// A result or Windows error code as these tests write it.
inline constexpr HRESULT R(DWORD code) {
    return static_cast<HRESULT>(code);
}

inline constexpr HRESULT kRefusal = R(0x800400FF);

// A value of that type and those characters, each of two bytes.
inline std::pair<DWORD, std::vector<BYTE>> Value(DWORD type, const std::u16string& characters) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(characters.data());
    return {type, std::vector<BYTE>(bytes, bytes + characters.size() * sizeof(WCHAR))};
}
inline auto NumberValue(DWORD number) {
    return Value(REG_DWORD, {static_cast<WCHAR>(number), static_cast<WCHAR>(number >> 16)});
}
// A REG_SZ in a field of so many characters, whose rest is zero.
inline auto Field(std::u16string text, std::size_t characters) {
    text.resize(characters);
    return Value(REG_SZ, text);
}
// A REG_SZ with its terminator alone.
inline auto TextValue(const std::u16string& text) {
    return Field(text, text.size() + 1);
}
// A list of the device names of these GUIDs.
inline auto Bindings(const std::vector<std::u16string>& guids) {
    std::u16string list;
    for (const std::u16string& guid : guids)
        list += u"\\Device\\" + guid + u'\0';
    return Value(REG_MULTI_SZ, list + u'\0');
}

// Values of the class key of a miniport.
inline std::string MiniportValues(const std::u16string& guid) {
    return "\"ComponentId\"=\"cvta_muxmp\"\n\"NetCfgInstanceId\"=\"" + platform::ToUtf8(guid) +
           "\"";
}

struct LayerMachine : TestMachine {
    explicit LayerMachine(const Sample& theSample = Sample()) : TestMachine(theSample) {
        const platform::QuietScope quiet;
        EXPECT_TRUE(SUCCEEDED(com.Initialise()));
        AddInfFiles();
        auto& drive = machine.Get<platform::Drive>();
        drive.WriteWholeFile(u"C:\\Windows\\INF\\oem0.inf",
                             *drive.ReadWholeFile(kPackage + u"\\mux_mp.inf"));
    }

    // Faults as "<call>[ <argument>]=<error>[,<first>[,<count>]]", a bar between two; the error E
    // is that of a failing engine.
    void Fail(const std::string& faults) {
        std::vector<platform::FaultPlan::Row> rows;
        std::istringstream stream(faults);
        for (std::string each; std::getline(stream, each, '|');) {
            const std::size_t at = each.rfind('=');
            std::string text = each.substr(at + 1);
            if (text.starts_with("E")) text.replace(0, 1, "0x80004005");
            rows.push_back({Wide(each.substr(0, at)), Wide(text)});
        }
        EXPECT_TRUE(machine.faults.SetRows(rows));
    }
    // What was printed since the last time.
    std::string Printed() {
        return std::exchange(machine.Get<platform::Streams>().output, std::string());
    }
    std::uint64_t Now() { return machine.scheduler.Now(); }
    std::size_t Calls(const char* name) const { return machine.trace.Count(name); }

    // Values of an entry of the MUX tree, and of a component's parameter key.
    auto Entry(const std::u16string& guid, const std::u16string& value) const {
        return Bytes(kTree + platform::ToUtf8(guid), value);
    }
    auto Parameter(const char* number, const std::u16string& value) const {
        return Bytes(kClass + number, value);
    }
    DWORD Miniports() const {
        return Number("SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum", u"Count").value_or(0);
    }

    HRESULT AddVlan(const std::u16string& lower, const std::u16string& id,
                    const std::u16string& name, const std::u16string& priority = u"0") {
        newGuid.assign(kNewGuidCapacity, u'\0');
        const HRESULT result = ConfigureVlan(lower.c_str(), newGuid.data(), true, id.c_str(),
                                             name.c_str(), priority.c_str());
        newGuid.resize(newGuid.find(u'\0'));
        return result;
    }
    HRESULT RemoveVlan(const std::u16string& lower, std::u16string vlan) {
        return ConfigureVlan(lower.c_str(), vlan.data(), false, u"", u"", u"");
    }
    HRESULT NewTeam(const std::u16string& name, DWORD type = 1, bool fallsBack = true,
                    DWORD protocol = eL2_PROTOCOL_ETHERNET) {
        newGuid.assign(kNewGuidCapacity, u'\0');
        const HRESULT result = CreateTeam(name.c_str(), type, newGuid.data(), fallsBack, protocol);
        newGuid.resize(newGuid.find(u'\0'));
        return result;
    }
    HRESULT Member(bool add, const std::u16string& team, const std::u16string& adapter,
                   bool setMac = false, bool setPrimary = false) {
        return ConfigureTeamMember(add, team.c_str(), adapter.c_str(), setMac, setPrimary);
    }

    // Whether another client can have the lock at once.
    bool LockIsFree() {
        const platform::QuietScope quiet;
        const std::uint64_t before = Now();
        NetworkSession session(kRenameSession);
        ScopedTaskMemory<WCHAR> holder;
        return session.Open(holder) == S_OK && Now() == before;
    }

    ScopedCom com;
    std::u16string newGuid;  // what the last operation gave
};
