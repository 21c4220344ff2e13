#include "VlanEditDialog.h"

#include <algorithm>
#include <string_view>

#include "../../resources/resource.h"
#include "CommonControls.h"
#include "HelpDocument.h"
#include "Messages.h"
#include "SheetPage.h"

namespace {

using TextView = std::basic_string_view<WCHAR>;

constexpr LPCWSTR kPriorities[] = {TEXT("0"), TEXT("1"), TEXT("2"), TEXT("3"),
                                   TEXT("4"), TEXT("5"), TEXT("6"), TEXT("7")};
constexpr WPARAM kTextLimit = 250;  // characters that a field takes
constexpr int kNameLimit = 99;      // characters of a name that can be stored and read back
constexpr int kLeastId = 1;
constexpr int kMostId = 4095;
constexpr WCHAR kLeastIdText[] = TEXT("1");
constexpr WCHAR kMostIdText[] = TEXT("4095");

bool EqualSettings(const VlanSettings& a, const VlanSettings& b) {
    return TextView(a.name) == b.name && TextView(a.id) == b.id &&
           TextView(a.priority) == b.priority;
}

// Decimal digits alone, with a value in the range.
bool IsValidId(TextView text) {
    int value = 0;
    for (const WCHAR character : text) {
        if (character < TEXT('0') || character > TEXT('9')) return false;
        value = std::min(10 * value + (character - TEXT('0')), kMostId + 1);
    }
    return value >= kLeastId && value <= kMostId;
}

}  // namespace

bool VlanEditDialog::Ask(HWND owner) {
    return Show(IDD_VLAN_EDIT, owner) == IDC_VLAN_OK;
}

bool VlanEditDialog::OnStart() {
    ShowHelp(Control(IDC_VLAN_EDIT_HELP), TEXT("VlanNewHelp"));
    const struct {
        int control;
        LPCWSTR text;
    } fields[] = {{IDC_VLAN_ID, m_settings.id}, {IDC_VLAN_NAME, m_settings.name}};
    for (const auto& field : fields) {
        SendMessageW(Control(field.control), EM_LIMITTEXT, kTextLimit, 0);
        SetWindowTextW(Control(field.control), field.text);
    }
    FillComboBox(Control(IDC_VLAN_PRIORITY), kPriorities, ARRAYSIZE(kPriorities));
    // An empty text would begin every entry.
    if (m_settings.priority[0] != 0)
        SelectComboBoxText(Control(IDC_VLAN_PRIORITY), m_settings.priority);
    return true;
}

void VlanEditDialog::OnCommand(WORD control, WORD notification) {
    constexpr ControlCommand<VlanEditDialog> commands[] = {
        {IDOK, BN_CLICKED, &VlanEditDialog::OnOk},
        {IDC_VLAN_OK, BN_CLICKED, &VlanEditDialog::OnOk},
        {IDCANCEL, BN_CLICKED, &VlanEditDialog::OnCancel},
        {IDC_VLAN_CANCEL, BN_CLICKED, &VlanEditDialog::OnCancel},
    };
    RunCommand(commands, *this, control, notification);
}

void VlanEditDialog::OnOk() {
    VlanSettings settings;
    ReadComboBoxText(Control(IDC_VLAN_PRIORITY), settings.priority, ARRAYSIZE(settings.priority));
    GetWindowTextW(Control(IDC_VLAN_ID), settings.id, ARRAYSIZE(settings.id));
    GetWindowTextW(Control(IDC_VLAN_NAME), settings.name, kNameLimit + 1);
    m_hasChanged = false;
    if (!Validate(settings)) return;
    m_settings = settings;
    End(IDC_VLAN_OK);
}

void VlanEditDialog::OnCancel() {
    End(IDC_VLAN_CANCEL);
}

bool VlanEditDialog::Validate(const VlanSettings& settings) {
    if (settings.name[0] == 0) return Refuse(IDS_VLAN_INVALID_VALUES, IDC_VLAN_NAME);
    if (settings.id[0] == 0) return Refuse(IDS_VLAN_INVALID_VALUES, IDC_VLAN_ID);
    if (settings.priority[0] == 0) return Refuse(IDS_VLAN_INVALID_VALUES, IDC_VLAN_PRIORITY);
    if (!EqualSettings(settings, m_settings)) {
        m_hasChanged = true;
        const bool isIdTaken = IsTaken(&VlanSettings::id, settings.id);
        const bool isNameTaken = IsTaken(&VlanSettings::name, settings.name);
        if (isIdTaken && isNameTaken) return Refuse(IDS_VLAN_NAME_AND_ID_EXIST, IDC_VLAN_NAME);
        if (isIdTaken) return Refuse(IDS_VLAN_ID_EXISTS, IDC_VLAN_ID);
        if (isNameTaken) return Refuse(IDS_VLAN_NAME_EXISTS, IDC_VLAN_NAME);
    }
    if (IsValidId(settings.id)) return true;
    return Refuse(IDS_VLAN_ID_OUT_OF_RANGE, IDC_VLAN_ID, {kLeastIdText, kMostIdText});
}

// Shows why, leads back to the field, and gives false.
bool VlanEditDialog::Refuse(UINT message, int field, std::initializer_list<LPCWSTR> arguments) {
    ShowMessage(Window(), message, TEXT("Error"), MB_ICONHAND, arguments);
    // The dialog may be gone by now, with its owner.
    if (const HWND control = Control(field)) SetFocus(control);
    return false;
}

// Whether the first VLAN with that text is another one than the edited.
bool VlanEditDialog::IsTaken(VlanSettings::Text VlanSettings::*setting, LPCWSTR text) const {
    for (const VlanEntry* vlan = m_vlans.First(); vlan; vlan = vlan->next.get())
        if (TextView(vlan->settings.*setting) == text)
            return !m_target || TextView(vlan->guid) != m_target->guid;
    return false;
}
