#include "PortProtocolPage.h"

#include <new>

#include "../resources/resource.h"
#include "CommonControls.h"
#include "Devices.h"
#include "HelpDocument.h"
#include "LibraryState.h"
#include "Messages.h"
#include "PortBindings.h"
#include "PortTypes.h"
#include "RegistryKey.h"
#include "RegistryPaths.h"
#include "RegistryServices.h"

#include <strsafe.h>

namespace {

constexpr WCHAR kPortType[] = TEXT("PortType");
constexpr DWORD kPortTypeLimit = 500;  // bytes
constexpr WORD kRunsInfiniBand = 1;    // in PortSetting; anything else is Ethernet

constexpr struct TypeButton {
    int control;
    PortType type;
    PortType PortTypes::*port;
    PortButtons PortControls::*buttons;
} kTypeButtons[] = {
    {IDC_PORT1_IB, ePORT_TYPE_IB, &PortTypes::port1, &PortControls::port1},
    {IDC_PORT1_ETH, ePORT_TYPE_ETH, &PortTypes::port1, &PortControls::port1},
    {IDC_PORT1_AUTO, ePORT_TYPE_AUTO, &PortTypes::port1, &PortControls::port1},
    {IDC_PORT2_IB, ePORT_TYPE_IB, &PortTypes::port2, &PortControls::port2},
    {IDC_PORT2_ETH, ePORT_TYPE_ETH, &PortTypes::port2, &PortControls::port2},
    {IDC_PORT2_AUTO, ePORT_TYPE_AUTO, &PortTypes::port2, &PortControls::port2},
};

constexpr int kPort2Controls[] = {IDC_PORT2_IB, IDC_PORT2_ETH, IDC_PORT2_AUTO, IDC_PORT2};

const TypeButton* FindTypeButton(int control) {
    for (const TypeButton& button : kTypeButtons)
        if (button.control == control) return &button;
    return nullptr;
}

LPCWSTR ProtocolName(WORD setting) {
    return setting == kRunsInfiniBand ? TEXT("IB") : TEXT("Eth");
}

// Chooses the protocol of each port of a card, or leaves it to the hardware. The choice is the
// registry's PortType, which the bus driver reads when the device restarts.
class PortProtocolPage final : public SheetPage {
  public:
    PortProtocolPage(LPCWSTR classKeyPath, LPCWSTR deviceInstanceId,
                     const SP_DEVINFO_DATA& deviceInfo)
        : m_deviceInfo(deviceInfo) {
        (void)StringCchCopyW(m_deviceInstanceId, ARRAYSIZE(m_deviceInstanceId), deviceInstanceId);
        (void)StringCchPrintfW(m_parametersPath, ARRAYSIZE(m_parametersPath),
                               TEXT("%s\\Parameters"), classKeyPath);
    }

  private:
    bool OnStart() override;
    INT_PTR OnNotify(const NMHDR& header) override;
    void OnCommand(WORD control, WORD notification) override;

    void ReadPortCapabilities();
    void LoadPortTypes();
    PortType ParsePortType(TextView token) const;
    void ShowCurrentSetting() const;
    void ShowPageHelp() const;
    void RenderPortControls() const;
    void OnHardwareDefaults();
    void TellSheet() const;
    bool HasUpperBindingsOrTeams() const;
    void ApplyPortTypes();

    bool HasChanged() const { return !EqualTypes(m_saved, m_chosen, m_capabilities.isSinglePort); }
    void ShowPageMessage(UINT id, LPCWSTR caption) const {
        ShowMessage(Window(), id, caption, MB_ICONHAND);
    }

    SP_DEVINFO_DATA m_deviceInfo;
    WCHAR m_deviceInstanceId[200] = {};
    WCHAR m_parametersPath[kPathCapacity + 16] = {};  // below HKEY_LOCAL_MACHINE
    PortTypes m_saved;                                // what the registry holds, as far as known
    PortTypes m_chosen;
    PortCapabilities m_capabilities;
    DWORD m_portSetting = 0;  // what runs now: port 1 in the low half, port 2 in the high half
};

bool PortProtocolPage::OnStart() {
    ReadPortCapabilities();
    LoadPortTypes();
    ShowCurrentSetting();
    RenderPortControls();
    ShowPageHelp();
    return true;
}

INT_PTR PortProtocolPage::OnNotify(const NMHDR& header) {
    // The sheet goes on, whatever becomes of it.
    if (header.code == PSN_APPLY) ApplyPortTypes();
    return 0;
}

void PortProtocolPage::OnCommand(WORD control, WORD notification) {
    if (const TypeButton* button = FindTypeButton(control)) {
        if (notification != BN_CLICKED) return;
        m_chosen.*button->port = button->type;
        TellSheet();
    } else if (control == IDC_HW_DEFAULTS) {
        OnHardwareDefaults();
        TellSheet();
    }
    RenderPortControls();
}

void PortProtocolPage::ReadPortCapabilities() {
    RegistryKey key;
    if (key.Open(m_parametersPath, KEY_QUERY_VALUE) != ERROR_SUCCESS) return;
    // A value that is absent or too long leaves its field at 0.
    key.ReadDword(TEXT("CapabilityFlag"), m_capabilities.flag);
    key.ReadDword(TEXT("PortSetting"), m_portSetting);
    m_capabilities.isSinglePort = IsSinglePort(m_capabilities.flag);
}

void PortProtocolPage::LoadPortTypes() {
    // One more than the value's limit, for the terminator that it may lack.
    WCHAR stored[kPortTypeLimit / sizeof(WCHAR) + 1] = {};
    RegistryKey key;
    // Only an absent value means the hardware's default. Without the key the text is empty.
    if (key.Open(m_parametersPath, KEY_QUERY_VALUE) == ERROR_SUCCESS &&
        key.ReadText(kPortType, stored, kPortTypeLimit) == ERROR_FILE_NOT_FOUND)
        (void)StringCchCopyW(stored, ARRAYSIZE(stored), TEXT("none,none"));

    TextView types = stored;
    if (!m_capabilities.isSinglePort && types.find(TEXT(',')) == TextView::npos) {
        ShowPageMessage(IDS_PORT_TYPE_INVALID, TEXT("Warning"));
        types = TEXT("ib,ib");
    }
    const size_t comma = types.find(TEXT(','));
    m_saved.port1 = ParsePortType(types.substr(0, comma));
    if (!m_capabilities.isSinglePort) m_saved.port2 = ParsePortType(types.substr(comma + 1));
    m_chosen = m_saved;
}

PortType PortProtocolPage::ParsePortType(TextView token) const {
    PortType type = ePORT_TYPE_IB;
    if (!FindPortType(token, type)) ShowPageMessage(IDS_PORT_TYPE_INVALID, TEXT("Error"));
    return type;
}

void PortProtocolPage::ShowCurrentSetting() const {
    const bool second = !m_capabilities.isSinglePort;
    SetWindowTextW(Control(IDC_PORT1_SETTING), ProtocolName(LOWORD(m_portSetting)));
    SetWindowTextW(Control(IDC_PORT2_SETTING),
                   second ? ProtocolName(HIWORD(m_portSetting)) : TEXT(""));
    if (!second) SetWindowTextW(Control(IDC_PORT2_LABEL), TEXT(""));
}

void PortProtocolPage::ShowPageHelp() const {
    const HWND help = Control(IDC_PORT_HELP);
    if (Library().vendorKeyMissing)
        ShowWindow(help, SW_HIDE);
    else
        ShowHelp(help, TEXT("PortType"));
}

void PortProtocolPage::RenderPortControls() const {
    const PortControls controls = PortControlsFor(m_capabilities, m_chosen);
    SetCheck(Control(IDC_HW_DEFAULTS), controls.hardwareDefault);
    for (const TypeButton& button : kTypeButtons) {
        const HWND window = Control(button.control);
        const PortButtons& port = controls.*button.buttons;
        EnableWindow(window, button.type == ePORT_TYPE_AUTO ? port.canSense : port.canChoose);
        SetCheck(window, port.checked == button.type);
    }
    if (controls.port2Shown) return;
    for (const int control : kPort2Controls)
        ShowWindow(Control(control), SW_HIDE);
}

void PortProtocolPage::OnHardwareDefaults() {
    if (SendMessageW(Control(IDC_HW_DEFAULTS), BM_GETSTATE, 0, 0) & BST_CHECKED)
        m_chosen = PortTypes();
    else if (m_saved.port1 != ePORT_TYPE_NONE)
        m_chosen = m_saved;
    else
        m_chosen = TypesFromCapabilities(m_capabilities.flag);
}

// The sheet's Apply button is enabled as long as there is something to apply.
void PortProtocolPage::TellSheet() const {
    SendMessageW(GetParent(Window()), HasChanged() ? PSM_CHANGED : PSM_UNCHANGED,
                 reinterpret_cast<WPARAM>(Window()), 0);
}

bool PortProtocolPage::HasUpperBindingsOrTeams() const {
    const UINT refusal = FindUpperBindingsOrTeams(m_deviceInfo.DevInst);
    if (refusal) ShowPageMessage(refusal, TEXT("Error"));
    return refusal != 0;
}

void PortProtocolPage::ApplyPortTypes() {
    if (!HasChanged()) return;
    if (HasUpperBindingsOrTeams()) {
        // The sheet takes every apply for a success, and disables its button afterwards.
        if (!IsReleased())
            PostMessageW(GetParent(Window()), PSM_CHANGED, reinterpret_cast<WPARAM>(Window()), 0);
        return;
    }
    // A failure of these has its own message, and doesn't spare the device the restart.
    if (IsHardwareDefault(m_chosen, m_capabilities.isSinglePort)) {
        (void)DeleteRegistryValue(m_parametersPath, kPortType);
    } else {
        const ScopedBstr text = BuildPortType(m_chosen, m_capabilities.isSinglePort);
        (void)WriteHklmString(m_parametersPath, kPortType, text.Get(),
                              SysStringByteLen(text.Get()));
    }
    (void)RestartDevice(m_deviceInstanceId);
    m_saved = m_chosen;
    ShowCurrentSetting();
}

}  // namespace

std::unique_ptr<SheetPage> NewPortProtocolPage(LPCWSTR classKeyPath, LPCWSTR deviceInstanceId,
                                               const SP_DEVINFO_DATA& device) {
    return std::unique_ptr<SheetPage>(new (std::nothrow)
                                          PortProtocolPage(classKeyPath, deviceInstanceId, device));
}
