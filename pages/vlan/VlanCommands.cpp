// The commands of the VLAN tab: New, Modify and Remove. A page that is released while a box or
// dialog of its command is up ends the command there, and touches its window no more.

#include <new>
#include <utility>

#include "../../netconfig/ComponentOperations.h"
#include "../../netconfig/ConfigurationOperations.h"
#include "../../netconfig/MuxInstallation.h"
#include "../../resources/resource.h"
#include "CommonControls.h"
#include "Devices.h"
#include "LongWork.h"
#include "Messages.h"
#include "ParamKeySearch.h"
#include "VlanEditDialog.h"
#include "VlanTab.h"

#include <netcfgx.h>
#include <strsafe.h>

// A command at work. It owns the list, and is busy, as long as this lives.
class VlanTab::Command {
  public:
    explicit Command(VlanTab& tab) : m_tab(tab), m_ownership(tab.m_poll.AcquireList()) {
        if (m_ownership)
            tab.m_isBusy = true;
        else
            ShowSystemErrorMessage(IDS_COMMAND_FAILED, GetLastError());
    }
    ~Command() {
        if (!m_ownership) return;
        m_tab.m_isBusy = false;
        m_ownership.Reset();
        m_tab.PostKept();
    }
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // Whether the command can go on.
    explicit operator bool() const { return static_cast<bool>(m_ownership); }

  private:
    VlanTab& m_tab;
    ScopedMutexOwnership m_ownership;
};

namespace {

void RestartAdapter(LPCWSTR guid) {
    WCHAR instanceId[200] = {};
    GetAdapterDevNodeId(guid, instanceId);
    if (instanceId[0] != 0) RestartDevice(instanceId);
}

LONG WriteSettings(const RegistryKey& key, const VlanSettings& settings) {
    LONG error = key.WriteText(kVlanName, settings.name);
    if (error == ERROR_SUCCESS) error = key.WriteText(kVlanId, settings.id);
    if (error == ERROR_SUCCESS) error = key.WriteText(kPriority, settings.priority);
    return error;
}

void RenameMiniport(const VlanEntry& vlan) {
    WCHAR name[250];
    (void)StringCchPrintfW(name, ARRAYSIZE(name), TEXT("%s - VLAN %s"), kUsualVlanName,
                           vlan.settings.name);
    (void)RenameComponent(vlan.guid, name);
}

}  // namespace

void VlanTab::OnCommand(WORD control, WORD notification) {
    constexpr ControlCommand<VlanTab> commands[] = {
        {IDC_VLAN_NEW, BN_CLICKED, &VlanTab::OnNew},
        {IDC_VLAN_MODIFY, BN_CLICKED, &VlanTab::OnModify},
        {IDC_VLAN_REMOVE, BN_CLICKED, &VlanTab::OnRemove},
    };
    if (m_hasRight && !m_isBusy) RunCommand(commands, *this, control, notification);
}

void VlanTab::OnNew() {
    const Command command(*this);
    if (!command) return;
    VlanSettings start;
    (void)StringCchCopyW(start.priority, ARRAYSIZE(start.priority), kUsualPriority);
    VlanEditDialog dialog(m_vlans, nullptr, start);
    if (!dialog.Ask(Window()) || IsReleased() || !Confirms(IDS_CONFIRM_INTERRUPTION)) return;
    AddVlan(dialog.Settings());
}

void VlanTab::OnModify() {
    const Command command(*this);
    VlanEntry* vlan = command ? SelectedVlan() : nullptr;
    if (!vlan) return;
    VlanEditDialog dialog(m_vlans, vlan, vlan->settings);
    if (!dialog.Ask(Window()) || IsReleased() || !dialog.HasChanged() ||
        !Confirms(IDS_CONFIRM_INTERRUPTION))
        return;
    UpdateVlan(*vlan, dialog.Settings());
}

void VlanTab::OnRemove() {
    const Command command(*this);
    VlanEntry* vlan = command ? SelectedVlan() : nullptr;
    if (!vlan || !Confirms(IDS_CONFIRM_VLAN_REMOVAL, {vlan->settings.name})) return;
    // The adapter is restarted when its last VLAN goes.
    if (m_vlans.Count() < 2 && !Confirms(IDS_CONFIRM_INTERRUPTION)) return;
    RemoveVlan(*vlan);
}

// That of the selected row, or of the first one.
VlanEntry* VlanTab::SelectedVlan() const {
    const HWND list = Control(IDC_VLAN_LIST);
    const int row = SelectedRow(list);
    return reinterpret_cast<VlanEntry*>(RowData(list, row < 0 ? 0 : row));
}

bool VlanTab::Confirms(UINT question, std::initializer_list<LPCWSTR> arguments) const {
    const int answer =
        ShowMessage(Window(), question, TEXT("Warning"), MB_YESNO | MB_ICONWARNING, arguments);
    return answer == IDYES && !IsReleased();
}

void VlanTab::ShowError(UINT message, std::initializer_list<LPCWSTR> arguments) const {
    ShowMessage(Window(), message, TEXT("Error"), MB_ICONHAND, arguments);
}

void VlanTab::ShowInstallFailure(HRESULT result) const {
    if (result == NETCFG_E_NO_WRITE_LOCK)
        ShowError(IDS_CONFIGURATION_LOCKED);
    else if (result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))
        ShowError(IDS_VLAN_DRIVER_INSTALL_FAILED, {TEXT("Missing INF file....")});
    else
        ShowSystemErrorMessage(IDS_VLAN_DRIVER_INSTALL_FAILED, static_cast<DWORD>(result));
}

void VlanTab::AddVlan(const VlanSettings& settings) {
    std::unique_ptr<VlanEntry> vlan(new (std::nothrow) VlanEntry);
    if (!vlan) {
        ShowSystemErrorMessage(IDS_COMMAND_FAILED, GetLastError());
        return;
    }
    vlan->settings = settings;
    DisableButtons();
    ShowTopic(TEXT("AddVlan"));
    WCHAR guid[kNewGuidCapacity] = {};
    HRESULT installed = S_OK;
    HRESULT added = S_OK;
    RunLongWork(Window(), [&] {
        installed = InstallMuxComponent(m_adapter.muxDirectory, eMUX_CLASS_PROTOCOL);
        if (FAILED(installed)) return;
        added = ConfigureVlan(m_adapter.guid, guid, true, settings.id, settings.name,
                              settings.priority);
        if (SUCCEEDED(added)) RestartAdapter(m_adapter.guid);
    });
    if (FAILED(installed)) {
        ShowInstallFailure(installed);
    } else if (FAILED(added)) {
        ShowError(IDS_VLAN_ADDITION_FAILED);
    } else {
        (void)StringCchCopyW(vlan->guid, ARRAYSIZE(vlan->guid), guid);
        m_vlans.Push(std::move(vlan));
    }
    if (IsReleased()) return;
    ShowTopic(TEXT("VlanHelp"));
    ShowVlans();
}

void VlanTab::RemoveVlan(VlanEntry& vlan) {
    DisableButtons();
    ShowTopic(TEXT("RemoveVlan"));
    const bool isLast = m_vlans.Count() == 1;
    const HRESULT removed = RunLongWork(Window(), [&] {
        const HRESULT result =
            ConfigureVlan(m_adapter.guid, vlan.guid, false, TEXT(""), TEXT(""), TEXT(""));
        if (result == S_OK && isLast) RestartAdapter(m_adapter.guid);
        return result;
    });
    if (removed == S_OK) {
        m_vlans.Remove(vlan);
        ShowTopic(TEXT("VlanHelp"));
    } else {
        ShowError(IDS_VLAN_REMOVAL_FAILED);
    }
    if (!IsReleased()) ShowVlans();
}

// The adapter is restarted also when not all could be written, which the user is told.
void VlanTab::UpdateVlan(VlanEntry& vlan, const VlanSettings& settings) {
    DisableButtons();
    vlan.settings = settings;
    if (!vlan.paramKey) vlan.paramKey = ParamKeySearch().Find(vlan.guid);
    const LONG error = WriteSettings(vlan.paramKey, settings);
    if (error != ERROR_SUCCESS)
        ShowSystemErrorMessage(IDS_VALUE_SET_FAILED, static_cast<DWORD>(error));
    if (IsReleased()) return;
    RunLongWork(Window(), [&] {
        if (error == ERROR_SUCCESS) RenameMiniport(vlan);
        RestartAdapter(m_adapter.guid);
    });
    ShowVlans();
}
