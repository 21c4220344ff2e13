#include "MuxPhysicalAdapter.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <new>

#include "MuxRegistry.h"
#include "MuxVlanMiniport.h"

namespace {

constexpr DWORD kTeamNameLimit = 520;  // bytes
constexpr int kHighestVlanId = 4095;
constexpr int kHighestPriority = 7;

// The decimal number at the beginning of a text, 0 when there is none.
int DecimalValue(LPCWSTR text) {
    while (*text == TEXT(' ') || (*text >= TEXT('\t') && *text <= TEXT('\r')))
        ++text;
    const bool isNegative = *text == TEXT('-');
    if (isNegative || *text == TEXT('+')) ++text;
    LONG64 value = 0;
    for (; *text >= TEXT('0') && *text <= TEXT('9'); ++text)
        value = std::min<LONG64>(value * 10 + (*text - TEXT('0')), INT_MAX);
    return static_cast<int>(isNegative ? -value : value);
}

bool IsEmpty(LPCWSTR text) {
    return !text || *text == TEXT('\0');
}

}  // namespace

CMuxPhysicalAdapter::~CMuxPhysicalAdapter() {
    DeleteAll(m_miniports);
    DeleteAll(m_miniportsToRemove);
}

void CMuxPhysicalAdapter::DeleteAll(Miniports& miniports) {
    CMuxVirtualMiniport* miniport = nullptr;
    while (miniports.RemoveFirst(miniport) == S_OK)
        delete miniport;
}

HRESULT CMuxPhysicalAdapter::LoadConfiguration() {
    RegistryKey entry;
    LONG error = OpenMuxEntry(m_adapterGuid, entry);
    if (error != ERROR_SUCCESS) return ToResult(error);
    MultiText bindings;
    error = entry.ReadMultiText(kUpperBindings, bindings);
    if (error != ERROR_SUCCESS) return ToResult(error);
    // A text of any length is read as a list, which begins with it.
    MultiText team;
    error = entry.ReadMultiText(kTeamDeviceName, team);
    for (const LPCWSTR deviceName : bindings)
        AddEntry(deviceName, *team.begin());
    return ToResult(error);
}

// Adds the miniport that an entry of the list names. teamDeviceName: empty when there is none.
void CMuxPhysicalAdapter::AddEntry(LPCWSTR deviceName, LPCWSTR teamDeviceName) {
    const LPCWSTR text = GuidStringFromDeviceName(deviceName);
    if (!text) return;
    const GUID guid = ParseGuid(text);
    std::unique_ptr<CMuxVirtualMiniport> miniport;
    CMuxTeamMiniport* team = nullptr;
    if (IsSameText(deviceName, teamDeviceName)) {
        // The members of a team are searched once, however often the list names it.
        if (m_team) return;
        team = new (std::nothrow)
            CMuxTeamMiniport(m_netCfg, &guid, nullptr, 0, 1, eL2_PROTOCOL_INVALID);
        miniport.reset(team);
    } else {
        miniport.reset(new (std::nothrow) CMuxVlanMiniport(m_netCfg, &guid, m_adapterGuid));
    }
    if (!miniport) return;
    // Without a GUID there is nothing to load, and a team would be searched by its name.
    if (!IsEqualGUID(guid, GUID{})) (void)miniport->LoadConfiguration();
    if (m_miniports.Insert(miniport.get(), guid) != S_OK) return;
    (void)miniport.release();
    if (team) m_team = team;
}

HRESULT CMuxPhysicalAdapter::ApplyRegistryChanges(DWORD action) {
    RegistryKey entry;
    const LONG error = CreateMuxEntry(m_adapterGuid, entry);
    if (action == ConfigActionRemove) {
        // The whole list goes at once: to take out one by one would read and write it each time.
        if (error == ERROR_SUCCESS) entry.DeleteValue(kUpperBindings);
        entry.Close();
        if (m_team) (void)m_team->ApplyRegistryChanges(ConfigActionRemove, m_adapterGuid);
        (void)DeleteMuxEntry(m_adapterGuid);
        return S_OK;
    }
    entry.Close();
    for (CMuxVirtualMiniport* const miniport : m_miniportsToRemove)
        (void)miniport->ApplyRegistryChanges(ConfigActionRemove, m_adapterGuid);
    return S_OK;
}

HRESULT CMuxPhysicalAdapter::RemoveMiniport(const GUID* guid) {
    CMuxVirtualMiniport* miniport = nullptr;
    const HRESULT result =
        guid ? m_miniports.Remove(*guid, &miniport) : m_miniports.RemoveFirst(miniport);
    if (result != S_OK) return result;
    if (m_miniportsToRemove.Insert(miniport, miniport->Guid()) == S_OK)
        return miniport->DeInstall();
    // Without a place in the list its entry stays in the tree.
    if (miniport == m_team) m_team = nullptr;
    const std::unique_ptr<CMuxVirtualMiniport> unlisted(miniport);
    return unlisted->DeInstall();
}

void CMuxPhysicalAdapter::RemoveAllMiniports() {
    for (DWORD count = m_miniports.Count(); count != 0; --count)
        (void)RemoveMiniport(nullptr);
}

HRESULT CMuxPhysicalAdapter::CheckVlanParameters(LPCWSTR vlanId, LPCWSTR vlanName,
                                                 LPCWSTR priority) const {
    if (IsEmpty(vlanId) || IsEmpty(vlanName) || IsEmpty(priority) || m_team) return E_FAIL;
    const int id = DecimalValue(vlanId);
    if (id < 1 || id > kHighestVlanId) return E_FAIL;
    const int level = DecimalValue(priority);
    if (level < 0 || level > kHighestPriority) return E_FAIL;
    for (const CMuxVirtualMiniport* const miniport : m_miniports)
        if (miniport->IsVlan(vlanName, vlanId)) return E_FAIL;
    return S_OK;
}

bool CMuxPhysicalAdapter::IsTeamMiniport() const {
    ScopedReference<INetCfgComponent> component;
    RegistryKey key;
    BYTE name[kTeamNameLimit];
    DWORD size = sizeof(name);
    return m_netCfg.HrFindInstance(m_adapterGuid, component) == S_OK &&
           component->OpenParamKey(key.Receive()) == S_OK &&
           key.ReadBytes(kTeamName, name, &size) == ERROR_SUCCESS;
}
