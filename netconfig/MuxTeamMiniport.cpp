#include "MuxTeamMiniport.h"

#include <cstring>
#include <memory>
#include <new>

#include "Diagnostics.h"
#include "MuxRegistry.h"
#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

constexpr size_t kForeignText = 261;  // characters that hold 520 bytes and a terminator
constexpr DWORD kForeignLimit = 520;  // bytes
constexpr DWORD kGuidLimit = 128;     // bytes

}  // namespace

CMuxTeamMiniport::CMuxTeamMiniport(NetworkComponents& netCfg, const GUID* guid, LPCWSTR teamName,
                                   DWORD teamType, BYTE fallBackToPrimary, DWORD l2Protocol)
    : CMuxVirtualMiniport(netCfg, guid),
      m_teamType(teamType),
      m_fallBackToPrimary(fallBackToPrimary),
      m_L2Protocol(l2Protocol) {
    if (teamName) (void)StringCchCopyW(m_teamName, ARRAYSIZE(m_teamName), teamName);
}

HRESULT CMuxTeamMiniport::LoadConfiguration() {
    if (IsEqualGUID(m_guid, GUID{})) {
        const HRESULT result = FindByName();
        if (result != S_OK) return result;
    }
    RegistryKey adapters;
    DWORD count = 0;
    DWORD longestName = 0;
    if (adapters.Open(kMuxAdaptersRoot, KEY_READ) != ERROR_SUCCESS ||
        adapters.QuerySubkeys(count, longestName) != ERROR_SUCCESS)
        return ToResult(ERROR_FILE_NOT_FOUND);
    if (count == 0) return S_OK;
    const DWORD capacity = longestName + 1;
    const std::unique_ptr<WCHAR[]> name(new (std::nothrow) WCHAR[capacity]());
    if (!name) return ToResult(ERROR_NOT_ENOUGH_MEMORY);
    for (DWORD index = 0; index < count; ++index) {
        RegistryKey entry;
        if (adapters.SubkeyName(index, name.get(), capacity) != ERROR_SUCCESS ||
            entry.Open(adapters.Get(), name.get(), KEY_READ) != ERROR_SUCCESS)
            continue;
        const GUID guid = ParseGuid(name.get());
        if (!IsEqualGUID(guid, m_guid)) {
            AddIfMember(entry, guid);
            continue;
        }
        const HRESULT result = ReadEntry(entry);
        if (result != S_OK) return result;
    }
    return S_OK;
}

// Sets the GUID to that of the component which has the team's name, compared with case.
HRESULT CMuxTeamMiniport::FindByName() {
    ScopedReference<INetCfgClass> netClass;
    ScopedReference<IEnumNetCfgComponent> components;
    HRESULT result = m_netCfg.QueryClass(netClass);
    if (result == S_OK) result = netClass->EnumComponents(components.Receive());
    if (result != S_OK) {
        PrintDiagnostic("Failed to get network component enumerator reference. Error=0x%x\n",
                        static_cast<unsigned>(result));
        return kNoSuchTeam;
    }
    (void)components->Reset();
    ScopedReference<INetCfgComponent> component;
    ULONG fetched = 0;
    while (components->Next(1, component.Receive(), &fetched) == S_OK && component) {
        RegistryKey key;
        WCHAR name[kForeignText];
        if (component->OpenParamKey(key.Receive()) != S_OK ||
            key.ReadText(kTeamName, name, kForeignLimit) != ERROR_SUCCESS ||
            CompareStringOrdinal(name, -1, m_teamName, -1, FALSE) != CSTR_EQUAL)
            continue;
        return component->GetInstanceGuid(&m_guid) == S_OK ? S_OK : E_FAIL;
    }
    return kNoSuchTeam;
}

// Reads the team's own entry.
HRESULT CMuxTeamMiniport::ReadEntry(const RegistryKey& entry) {
    if (entry.ReadText(kTeamName, m_teamName) != ERROR_SUCCESS ||
        entry.ReadDword(kTeamType, m_teamType) != ERROR_SUCCESS ||
        entry.ReadDword(kFallBackToPrimary, m_fallBackToPrimary) != ERROR_SUCCESS)
        return E_FAIL;
    DWORD protocol = eL2_PROTOCOL_ETHERNET;  // kept when the value is absent
    const LONG error = entry.ReadDword(kL2Protocol, protocol);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return E_FAIL;
    m_L2Protocol = protocol < eL2_PROTOCOL_INVALID ? protocol : eL2_PROTOCOL_ETHERNET;

    WCHAR primary[kGuidLimit / sizeof(WCHAR) + 1];
    m_hasPrimaryAdapter = entry.ReadText(kPrimaryAdapterGuid, primary, kGuidLimit) == ERROR_SUCCESS;
    if (m_hasPrimaryAdapter) m_primaryAdapter = ParseGuid(primary);

    BYTE mac[kMacLength];
    DWORD size = sizeof(mac);
    ClearMacAddress();
    if (entry.ReadBytes(kTeamMacAddress, mac, &size) == ERROR_SUCCESS && size == sizeof(mac))
        SetMacAddress(mac);
    return S_OK;
}

// Adds the adapter when its entry names this team.
void CMuxTeamMiniport::AddIfMember(const RegistryKey& entry, REFGUID adapterGuid) {
    WCHAR team[kForeignText];
    if (entry.ReadText(kTeamDeviceName, team, kForeignLimit) != ERROR_SUCCESS) return;
    const LPCWSTR guid = GuidStringFromDeviceName(team);
    if (guid && IsEqualGUID(ParseGuid(guid), m_guid)) (void)AddAdapter(adapterGuid);
}

HRESULT CMuxTeamMiniport::ConfigureComponent(INetCfgComponent& component) {
    WCHAR name[kMiniportText];
    (void)StringCchPrintfW(name, ARRAYSIZE(name),
                           TEXT("Corvanta Virtual Miniport Driver - Team %s"), m_teamName);
    HRESULT result = component.SetDisplayName(name);
    if (result != S_OK) return result;
    RegistryKey key;
    result = component.OpenParamKey(key.Receive());
    if (result != S_OK) return result;
    key.WriteBytes(kTeamName, REG_SZ, m_teamName, sizeof(m_teamName));
    key.WriteDword(kTeamType, m_teamType);
    key.WriteDword(kFallBackToPrimary, m_fallBackToPrimary);
    key.WriteDword(kL2Protocol, m_L2Protocol);
    key.Close();

    RegistryKey entry;
    bool created = false;
    if (CreateMuxEntry(m_guid, entry, &created) != ERROR_SUCCESS || !created) return S_OK;
    entry.WriteBytes(kTeamName, REG_SZ, m_teamName, sizeof(m_teamName));
    GuidString(m_guid).WriteTo(entry, kTeamGuid);
    entry.WriteDword(kTeamType, m_teamType);
    entry.WriteDword(kFallBackToPrimary, m_fallBackToPrimary);
    entry.WriteDword(kL2Protocol, m_L2Protocol);
    return S_OK;
}

HRESULT CMuxTeamMiniport::DeInstall() {
    const HRESULT result = CMuxVirtualMiniport::DeInstall();
    if (result != S_OK) return result;
    RegistryKey adapters;
    if (adapters.Create(HKEY_LOCAL_MACHINE, kMuxAdaptersRoot, KEY_ALL_ACCESS) == ERROR_SUCCESS)
        adapters.DeleteSubkey(GuidString(m_guid).Get());
    return S_OK;
}

HRESULT CMuxTeamMiniport::ApplyRegistryChanges(DWORD action, REFGUID adapterGuid) {
    RegistryKey team;
    // A removal doesn't bring back the entry of a team that is gone.
    LONG error =
        action == ConfigActionRemove ? OpenMuxEntry(m_guid, team) : CreateMuxEntry(m_guid, team);
    if (error != ERROR_SUCCESS) return ToResult(error);
    (void)CMuxVirtualMiniport::ApplyRegistryChanges(action, adapterGuid);

    RegistryKey adapter;
    if (action == ConfigActionAdd && CreateMuxEntry(adapterGuid, adapter) == ERROR_SUCCESS) {
        if (const auto deviceName = MakeDeviceName(GuidString(m_guid).Get()))
            adapter.WriteText(kTeamDeviceName, deviceName.get());
        if (IsPrimaryAdapter(adapterGuid))
            GuidString(adapterGuid).WriteTo(team, kPrimaryAdapterGuid);
    }
    RegistryKey adapters;
    if (action == ConfigActionRemove &&
        adapters.Open(kMuxAdaptersRoot, KEY_ALL_ACCESS) == ERROR_SUCCESS) {
        adapters.DeleteSubkey(GuidString(adapterGuid).Get());
        if (IsPrimaryAdapter(adapterGuid)) team.DeleteValue(kPrimaryAdapterGuid);
    }

    if (m_hasMacAddress)
        return ToResult(
            team.WriteBytes(kTeamMacAddress, REG_BINARY, m_macAddress, sizeof(m_macAddress)));
    error = team.DeleteValue(kTeamMacAddress);
    return error == ERROR_FILE_NOT_FOUND ? S_OK : ToResult(error);
}

void CMuxTeamMiniport::SetPrimaryAdapter(REFGUID guid) {
    m_primaryAdapter = guid;
    m_hasPrimaryAdapter = true;
}

bool CMuxTeamMiniport::IsPrimaryAdapter(REFGUID guid) const {
    return m_hasPrimaryAdapter && IsEqualGUID(m_primaryAdapter, guid);
}

void CMuxTeamMiniport::ClearPrimaryAdapter() {
    m_primaryAdapter = {};
    m_hasPrimaryAdapter = false;
}

void CMuxTeamMiniport::SetMacAddress(const BYTE (&mac)[kMacLength]) {
    std::memcpy(m_macAddress, mac, sizeof(m_macAddress));
    m_hasMacAddress = true;
}

bool CMuxTeamMiniport::IsMacAddress(const BYTE (&mac)[kMacLength]) const {
    return m_hasMacAddress && std::memcmp(m_macAddress, mac, sizeof(m_macAddress)) == 0;
}

void CMuxTeamMiniport::ClearMacAddress() {
    std::memset(m_macAddress, 0, sizeof(m_macAddress));
    m_hasMacAddress = false;
}
