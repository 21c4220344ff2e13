#include "VlanTab.h"

#include <new>

#include "../../netconfig/MuxInstallation.h"
#include "../../resources/resource.h"
#include "CommonControls.h"
#include "HelpDocument.h"
#include "LongWork.h"
#include "Messages.h"
#include "RegistryServices.h"
#include "VlanPage.h"

#include <strsafe.h>

namespace {

constexpr WCHAR kCaption[] = TEXT("VLAN tab management");

constexpr struct {
    UINT title;
    int width;  // pixels of a screen with 96 dots an inch
} kColumns[] = {{IDS_VLAN_NAME_COLUMN, 140},
                {IDS_VLAN_ID_COLUMN, 60},
                {IDS_VLAN_PRIORITY_COLUMN, 60},
                {IDS_STATUS_COLUMN, 60}};

bool InsertColumns(HWND list) {
    int index = 0;
    for (const auto& column : kColumns) {
        WCHAR title[50] = {};
        LoadStringW(Library().moduleHandle, column.title, title, ARRAYSIZE(title));
        if (!InsertColumn(list, index++, title, ScaleToScreen(column.width))) return false;
    }
    return true;
}

}  // namespace

VlanTab::VlanTab(LPCWSTR classKeyPath) {
    (void)StringCchCopyW(m_adapter.classKeyPath, ARRAYSIZE(m_adapter.classKeyPath), classKeyPath);
}

VlanTab::~VlanTab() {
    m_poll.Stop();
    ReleaseRight();
}

bool VlanTab::OnStart() {
    ShowTopic(TEXT("VlanHelp"));
    if (!ReadVlanConfiguration(Window(), m_adapter, m_vlans) || IsReleased()) return false;
    if (!InsertColumns(Control(IDC_VLAN_LIST)) || !m_poll.Create()) return false;
    if (const UserFailure failure = RefreshVlanStatus(m_vlans).failure) ShowFailure(failure);
    if (IsReleased()) return false;
    ShowVlans();
    return true;
}

INT_PTR VlanTab::OnNotify(const NMHDR& header) {
    switch (header.code) {
        case PSN_SETACTIVE:
            return m_isBusy || OnSetActive();
        case PSN_KILLACTIVE:
        case PSN_APPLY:
        case PSN_RESET:
            return m_isBusy ? RefuseToLeave() : OnLeave(header.code);
        case PSN_QUERYCANCEL:
            return m_isBusy ? RefuseToLeave() : TRUE;
        default:
            return TRUE;
    }
}

void VlanTab::OnPosted(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kVlanStatusChanged) {
        m_isOutdated = true;
        if (m_isBusy) return;
        const ScopedMutexOwnership ownership = m_poll.AcquireList();
        if (ownership) ShowVlans();
    }
    // What comes too late would be about a tab that the user has left.
    if (message == kVlanRefreshFailed && m_poll.Runs())
        ShowFailure({static_cast<UINT>(wParam), static_cast<DWORD>(lParam)});
}

// False: the tab shows its VLANs and has no right to change them.
bool VlanTab::OnSetActive() {
    if (!AcquireRight()) return false;
    if (m_isOutdated) ShowVlans();
    if (!m_poll.Start(Window())) {
        ReleaseRight();
        LockOut();
        return false;
    }
    m_isTeamMember = HasTeamDeviceName(m_adapter.guid);
    if (m_isTeamMember) {
        m_noticeIsUp = true;
        ShowMessage(Window(), IDS_ADAPTER_IS_TEAM_MEMBER, kCaption, 0);
        m_noticeIsUp = false;
        PostKept();
    }
    if (!IsReleased()) EnableButtons();
    return true;
}

// The tab is left, or with its sheet closed or applied.
INT_PTR VlanTab::OnLeave(UINT code) {
    m_poll.Stop();
    if (code != PSN_KILLACTIVE) RunLongWork(Window(), [] { UninstallMuxIfUnused(); });
    ReleaseRight();
    return Answer(0);
}

INT_PTR VlanTab::RefuseToLeave() {
    ShowMessage(Window(), IDS_APPLYING_CHANGES, kCaption, MB_ICONWARNING);
    return IsReleased() ? TRUE : Answer(TRUE);
}

bool VlanTab::AcquireRight() {
    if (m_hasRight) return true;
    m_hasRight = ++Library().activeConfigTabCount == 1;
    m_isLockedOut = !m_hasRight;
    if (m_hasRight) return true;
    --Library().activeConfigTabCount;
    ScopedBstr text;
    if (FormatResourceMessage(IDS_VLAN_DISABLED, text, nullptr))
        ShowCaptionedMessage(Window(), text.Get(), IDS_TEAMING_CAPTION, 0);
    if (!IsReleased()) LockOut();
    return false;
}

void VlanTab::ReleaseRight() {
    if (m_hasRight) --Library().activeConfigTabCount;
    m_hasRight = false;
}

void VlanTab::LockOut() {
    m_isLockedOut = true;
    EnableButtons();
}

// Only where no pass of the thread touches the list.
void VlanTab::ShowVlans() {
    const HWND list = Control(IDC_VLAN_LIST);
    bool filled = ClearRows(list);
    EnableButtons();
    int place = 0;
    for (VlanEntry* vlan = m_vlans.First(); vlan; vlan = vlan->next.get()) {
        const VlanSettings& settings = vlan->settings;
        const int row = InsertRow(list, place++, settings.name, reinterpret_cast<LPARAM>(vlan));
        filled = row >= 0 && SetCell(list, row, 1, settings.id) &&
                 SetCell(list, row, 2, settings.priority) &&
                 SetCell(list, row, 3, vlan->isUp ? TEXT("Up") : TEXT("Down")) && filled;
    }
    m_isOutdated = !filled;
}

void VlanTab::EnableButtons(bool enableNew, bool enableOthers) {
    EnableWindow(Control(IDC_VLAN_NEW), enableNew);
    EnableWindow(Control(IDC_VLAN_REMOVE), enableOthers);
    EnableWindow(Control(IDC_VLAN_MODIFY), enableOthers);
}

// As the tab's state has it.
void VlanTab::EnableButtons() {
    EnableButtons(!m_isLockedOut && !m_isTeamMember, !m_isLockedOut && m_vlans.First());
}

void VlanTab::ShowTopic(LPCWSTR key) const {
    ShowHelp(Control(IDC_VLAN_HELP), key);
}

// One box at a time. A pass that fails again while its box is up has nothing new to say.
void VlanTab::ShowFailure(const UserFailure& failure) {
    if (m_isBusy || m_noticeIsUp) {
        m_pending = failure;
        return;
    }
    if (m_failureIsUp) return;
    m_failureIsUp = true;
    ShowSystemErrorMessage(failure.message, failure.error);
    m_failureIsUp = false;
}

// Posts again what came while it couldn't be shown.
void VlanTab::PostKept() {
    if (IsReleased()) return;
    if (m_isOutdated) PostMessageW(Window(), kVlanStatusChanged, 0, 0);
    if (m_pending)
        PostMessageW(Window(), kVlanRefreshFailed, m_pending.message,
                     static_cast<LPARAM>(m_pending.error));
    m_pending = {};
}

std::unique_ptr<SheetPage> NewVlanPage(LPCWSTR classKeyPath) {
    return std::unique_ptr<SheetPage>(new (std::nothrow) VlanTab(classKeyPath));
}
