#pragma once
// The modal dialog in which the user gives a VLAN its name, id and priority.

#include <windows.h>
#include <initializer_list>

#include "ModalDialog.h"
#include "VlanList.h"

class VlanEditDialog final : public ModalDialog {
  public:
    // Begins with these settings. vlans: the VLANs from which it has to differ; borrowed. target:
    // the one of them that is edited, null for a new one.
    VlanEditDialog(const VlanList& vlans, const VlanEntry* target, const VlanSettings& start)
        : m_vlans(vlans), m_target(target), m_settings(start) {}

    // False when the user cancels, or when the dialog can't be opened, which is shown.
    bool Ask(HWND owner);
    // After Ask: what the user confirmed, and whether it differs from the start.
    const VlanSettings& Settings() const { return m_settings; }
    bool HasChanged() const { return m_hasChanged; }

  private:
    bool OnStart() override;
    void OnCommand(WORD control, WORD notification) override;

    void OnOk();
    void OnCancel();
    bool Validate(const VlanSettings& settings);
    bool Refuse(UINT message, int field, std::initializer_list<LPCWSTR> arguments = {});
    bool IsTaken(VlanSettings::Text VlanSettings::*setting, LPCWSTR text) const;

    const VlanList& m_vlans;
    const VlanEntry* const m_target;
    VlanSettings m_settings;
    bool m_hasChanged = false;
};
