#pragma once
// The Port Protocol tab of a sample's bus device, for tests: what stands before it is opened, and
// what its user sees and does.

#include <functional>
#include <string>

#include "Call.h"
#include "Fixture.h"
#include "Text.h"

namespace port_protocol {

constexpr int kPort1[] = {1074, 1075, 1083};
constexpr int kPort2[] = {1076, 1077, 1084};
constexpr int kDefaults = 1085;
constexpr int kApply = 0x3021;  // the sheet's own button

// Capabilities: everything on two ports, everything on one, and port 1 without InfiniBand.
constexpr char kAll[] = "0000019e";
constexpr char kSingle[] = "0000008a";
constexpr char kEthernetFirst[] = "0000011c";

constexpr char16_t kInvalid[] =
    u"An invalid registry PortType value was detected.\r\nThe ports will be initialized with the "
    u"default configuration.";

inline std::string ParametersPath() {
    return std::string(Sample::BusClassKey()) + "\\Parameters";
}

// A bus device with these capabilities. type: the right side of the line of PortType; empty for
// none.
inline Sample Bus(const std::string& flag, const std::string& type = "") {
    Sample sample;
    sample.With(ParametersPath(), "\"CapabilityFlag\"=dword:" + flag);
    if (!type.empty()) sample.With(ParametersPath(), "\"PortType\"=" + type);
    return sample;
}

inline std::string Buttons(TestMachine& test, const int (&controls)[3]) {
    std::string shown;
    int hidden = 0;
    for (const int control : controls) {
        const HWND button = GetDlgItem(test.Page(), control);
        const bool isChecked = test.IsChecked(control);
        shown += IsWindowEnabled(button) ? (isChecked ? '*' : 'o') : (isChecked ? 'X' : '-');
        hidden += !IsWindowVisible(button);
    }
    return hidden == 0 ? shown : hidden == 3 ? "(" + shown + ")" : "partly hidden";
}

// "HW" when the box is checked, and the buttons of both ports, a character each: - disabled, X
// disabled and checked, o enabled, * enabled and checked. In brackets when hidden.
inline std::string State(TestMachine& test) {
    return (test.IsChecked(kDefaults) ? "HW " : "") + Buttons(test, kPort1) + " " +
           Buttons(test, kPort2);
}

inline std::string TextOf(const TestMachine& test, int control) {
    WCHAR text[200] = {};
    GetDlgItemTextW(test.Page(), control, text, ARRAYSIZE(text));
    return platform::ToUtf8(text);
}

class PortProtocolTest : public TestMachine {
  public:
    using TestMachine::TestMachine;

    // Opens the tab, does the deed there and cancels the sheet, unless that is closed already.
    void OnTab(const std::function<void()>& deed) {
        user.Do(deed);
        EXPECT_TRUE(RunBusSheet());
    }
    void Push(WPARAM sheetButton) { SendMessageW(SheetWindow(), PSM_PRESSBUTTON, sheetButton, 0); }
    bool CanApply() const { return IsWindowEnabled(GetDlgItem(SheetWindow(), kApply)); }

    // The first letters of the boxes' captions so far.
    std::string Captions() const {
        std::string letters;
        for (const auto& box : user.Boxes())
            letters += static_cast<char>(box.caption[0]);
        return letters;
    }

    DWORD BusRestarts() const {
        return Number("SOFTWARE\\StandIn\\Restarts", Wide(Sample::BusInstanceId())).value_or(0);
    }
    // All characters of PortType's data, a terminator as well; "-" when it is absent.
    std::string Stored() const {
        const platform::QuietScope quiet;
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(ParametersPath()).c_str(), 0, KEY_READ, &key) !=
            0)
            return "no key";
        WCHAR text[300];
        DWORD size = sizeof(text);
        DWORD type = REG_NONE;
        const LSTATUS status = RegQueryValueExW(key, u"PortType", nullptr, &type,
                                                reinterpret_cast<BYTE*>(text), &size);
        RegCloseKey(key);
        if (status == ERROR_FILE_NOT_FOUND) return "-";
        EXPECT_EQ(status, ERROR_SUCCESS);
        EXPECT_EQ(type, DWORD{REG_SZ});
        return platform::ToUtf8(std::u16string(text, size / sizeof(WCHAR)));
    }
};

}  // namespace port_protocol
