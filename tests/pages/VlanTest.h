#pragma once
// What the tests of the VLAN tab share: an adapter with VLANs, and what its user sees and does.

#include <string>
#include <vector>

#include <commctrl.h>

#include "Call.h"
#include "Fixture.h"
#include "LibraryState.h"
#include "MachineFile.h"
#include "Text.h"
#include "resource.h"

namespace vlan {

inline const std::string kClassKey =
    "SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
inline const std::string kAdapters =
    "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\";
constexpr char16_t kQuestion[] =
    u"Applying the changes will temporarily interrupt the network connection.\r\nThe process may "
    u"take several minutes and the connection will resume afterwards.\r\nDo you want to continue?";

// The miniport of the VLAN of that number, and its class key.
inline std::string Guid(int number) {
    return "{0A000000-0000-4000-8000-00000000" + std::to_string(1000 + number) + "}";
}
inline std::string ParamKey(int number) {
    return kClassKey + std::to_string(1000 + number);
}
inline std::string InterfaceKey(int number) {
    return "SOFTWARE\\StandIn\\Interfaces\\" + Guid(number);
}

// The line of UpperBindings with exactly these characters.
inline std::string Bindings(const std::string& characters) {
    std::string line = "\"UpperBindings\"=hex(7):";
    for (const char character : characters) {
        const char digits[] = "0123456789abcdef";
        line += {digits[character / 16], digits[character % 16], ',', '0', '0', ','};
    }
    line.pop_back();
    return line;
}
// The device names of these VLANs, each with its terminator.
inline std::string Devices(const std::vector<int>& numbers) {
    std::string characters;
    for (const int number : numbers)
        characters += "\\Device\\" + Guid(number) + '\0';
    return characters;
}

// VLANs V1, V2, ... with the ids and priorities 1, 2, ... of the first port, which show in this
// order. All have a link.
inline Sample WithVlans(int count) {
    Sample sample;
    std::vector<int> newestFirst;
    for (int number = 1; number <= count; ++number) {
        const std::string text = std::to_string(number) + "\"\n";
        sample
            .With(ParamKey(number), "\"ComponentId\"=\"cvta_muxmp\"\n\"VlanName\"=\"V" + text +
                                        "\"VlanID\"=\"" + text + "\"Priority\"=\"" + text +
                                        "\"NetCfgInstanceId\"=\"" + Guid(number) + "\"")
            .With(InterfaceKey(number),
                  "\"Up\"=dword:1\n\"PermanentAddress\"=\"00-02-C9-11-22-33\"");
        newestFirst.insert(newestFirst.begin(), number);
    }
    return sample.With(kAdapters + Sample::Guid(1), Bindings(Devices(newestFirst) + '\0'));
}

class VlanTest : public TestMachine {
  public:
    explicit VlanTest(const Sample& theSample, std::uint64_t seed = 0)
        : TestMachine(theSample, seed) {
        AddInfFiles();
        user.Do([this] { Enter(); });
    }

    void Enter() { SendMessageW(SheetWindow(), PSM_SETCURSEL, 2, 0); }
    void Leave() { SendMessageW(SheetWindow(), PSM_SETCURSEL, 1, 0); }
    // The deed, when so many milliseconds have passed.
    void DoAfter(std::uint64_t milliseconds, std::function<void()> deed) {
        user.Do([this, milliseconds] { machine.scheduler.UserWaits(milliseconds); });
        user.Do(std::move(deed));
    }
    // A sheet of the second port beside the first one, at its VLAN tab. The caller closes it.
    HWND OpenSecondSheet() {
        ProviderResult other = CallProvider(2);
        PROPSHEETHEADERW header = {};
        header.dwSize = sizeof(header);
        header.dwFlags = PSH_MODELESS;
        header.nStartPage = 2;
        header.nPages = static_cast<UINT>(other.pages.size());
        header.phpage = other.pages.data();
        return reinterpret_cast<HWND>(PropertySheetW(&header));
    }
    static void CloseSecondSheet(HWND sheet) {
        SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
        DestroyWindow(sheet);
    }
    // The rows, each as "name id priority status;".
    std::string Rows() const {
        const HWND list = GetDlgItem(Page(), IDC_VLAN_LIST);
        std::string rows;
        for (int row = 0; row < SendMessageW(list, LVM_GETITEMCOUNT, 0, 0); ++row) {
            for (int column = 0; column < 4; ++column) {
                WCHAR text[300] = {};
                LVITEMW item = {};
                item.iSubItem = column;
                item.pszText = text;
                item.cchTextMax = ARRAYSIZE(text);
                SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                             reinterpret_cast<LPARAM>(&item));
                rows += platform::ToUtf8(text) + (column < 3 ? " " : ";");
            }
        }
        return rows;
    }
    // Which of New, Remove and Modify are enabled.
    std::string Buttons() const {
        std::string enabled;
        for (const int button : {IDC_VLAN_NEW, IDC_VLAN_REMOVE, IDC_VLAN_MODIFY})
            enabled += IsWindowEnabled(GetDlgItem(Page(), button)) ? "NRM"[enabled.size()] : '-';
        return enabled;
    }
    void Select(int row) const {
        LVITEMW item = {};
        item.state = item.stateMask = LVIS_SELECTED;
        SendMessageW(GetDlgItem(Page(), IDC_VLAN_LIST), LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&item));
    }
    // In the edit dialog or a box.
    static void Push(int button) {
        SendDlgItemMessageW(GetForegroundWindow(), button, BM_CLICK, 0, 0);
    }
    // Fills the edit dialog, which stays as it is in what is not given, and presses its OK.
    static void Edit(const std::u16string& name, const std::u16string& id, int priority = -1) {
        const HWND dialog = GetForegroundWindow();
        SetWindowTextW(GetDlgItem(dialog, IDC_VLAN_NAME), name.c_str());
        SetWindowTextW(GetDlgItem(dialog, IDC_VLAN_ID), id.c_str());
        if (priority >= 0)
            SendDlgItemMessageW(dialog, IDC_VLAN_PRIORITY, CB_SETCURSEL,
                                static_cast<WPARAM>(priority), 0);
        Push(IDC_VLAN_OK);
    }
    void Merge(const std::string& key, const std::string& line) {
        const platform::QuietScope quiet;
        EXPECT_FALSE(platform::MergeMachineFile(
            machine, "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\" + key + "]\n" +
                         line + "\n"));
    }
    bool Polls() const {
        for (const auto& entry : machine.ledger.Open())
            if (std::string_view(entry.kind) == "running thread") return true;
        return false;
    }
    // Of the boxes so far.
    std::vector<std::u16string> Texts() const {
        std::vector<std::u16string> texts;
        for (const auto& box : user.Boxes())
            texts.push_back(box.text);
        return texts;
    }
};

}  // namespace vlan
