#pragma once
// The VLAN tab: the VLANs over one adapter or team, and the commands that change them. One VLAN or
// Teaming tab of the process at a time has the right to configure, as long as it is active.
//
// A command owns the list from its click to its end, so that the status thread waits meanwhile, and
// the sheet neither closes nor changes tabs. The boxes and dialogs of a command run message loops;
// what the thread has posted is kept and looked at after the command.

#include <windows.h>
#include <initializer_list>

#include "SheetPage.h"
#include "VlanReader.h"
#include "VlanStatus.h"

class VlanTab final : public SheetPage {
  public:
    explicit VlanTab(LPCWSTR classKeyPath);
    ~VlanTab() override;

  private:
    class Command;

    bool OnStart() override;
    INT_PTR OnNotify(const NMHDR& header) override;
    void OnCommand(WORD control, WORD notification) override;
    void OnPosted(UINT message, WPARAM wParam, LPARAM lParam) override;

    bool OnSetActive();
    INT_PTR OnLeave(UINT code);
    INT_PTR RefuseToLeave();
    bool AcquireRight();
    void ReleaseRight();
    void LockOut();

    void ShowVlans();
    void EnableButtons(bool enableNew, bool enableOthers);
    void EnableButtons();
    void DisableButtons() { EnableButtons(false, false); }
    void ShowTopic(LPCWSTR key) const;
    void ShowFailure(const UserFailure& failure);
    void PostKept();

    void OnNew();
    void OnModify();
    void OnRemove();
    VlanEntry* SelectedVlan() const;
    bool Confirms(UINT question, std::initializer_list<LPCWSTR> arguments = {}) const;
    void ShowError(UINT message, std::initializer_list<LPCWSTR> arguments = {}) const;
    void ShowInstallFailure(HRESULT result) const;
    void AddVlan(const VlanSettings& settings);
    void RemoveVlan(VlanEntry& vlan);
    void UpdateVlan(VlanEntry& vlan, const VlanSettings& settings);

    VlanAdapter m_adapter;
    VlanList m_vlans;
    bool m_hasRight = false;         // to configure; counts in activeConfigTabCount
    bool m_isLockedOut = false;      // the last activation gave no right
    bool m_isTeamMember = false;     // as of the last activation
    bool m_isBusy = false;           // a command runs
    bool m_noticeIsUp = false;       // the box about the membership
    bool m_failureIsUp = false;      // a box about a pass of the status thread
    bool m_isOutdated = false;       // the view, which is to be filled again
    UserFailure m_pending;           // to be shown after the command or notice
    VlanStatusPoll m_poll{m_vlans};  // the last member, since its thread uses the list
};
