#pragma once
// What the device manager does: finds a device, calls the property page provider that its class key
// names, and opens its sheet. The sheet's thread only.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>
#include <prsht.h>
#include <setupapi.h>

#include "SheetText.h"

namespace sheet {

struct Device {
    Text instanceId;
    Text name;      // as the device manager lists it
    Text provider;  // "Dll,Function"
};

// A property page provider, as setupapi.h describes it.
using Provider = BOOL(WINAPI*)(PSP_PROPSHEETPAGE_REQUEST, LPFNADDPROPSHEETPAGE, LPARAM);

// Finds devices and their providers. Holds each library that it has loaded until it goes, which
// must be after the last sheet.
class DeviceManager {
  public:
    DeviceManager() = default;
    ~DeviceManager();
    DeviceManager(const DeviceManager&) = delete;
    DeviceManager& operator=(const DeviceManager&) = delete;

    // The device of that instance id, compared without regard to case; nothing when it isn't there.
    std::optional<Device> Find(const Text& instanceId) const;
    // The first device whose class key names a provider that can be loaded, else the first network
    // adapter; nothing on a machine without one.
    std::optional<Device> First();
    // All devices, network adapters and those whose class key names a provider first.
    std::vector<Device> All() const;
    // Those to whose sheet a provider adds tabs. Their providers are called.
    std::vector<Device> WithTabs();
    // The function that "Dll,Function" names; null when it can't be loaded.
    Provider LoadProvider(const Text& provider);

  private:
    std::vector<HMODULE> m_libraries;
};

// "device | INSTANCE-ID | NAME", a line each.
std::string ListDevices(const std::vector<Device>& devices);

class DeviceList;

// A device's open sheet, modeless.
class Sheet {
  public:
    // Calls the provider, which may be null, and opens the sheet of the tabs that it adds. Without
    // tabs the sheet has no window.
    Sheet(const Device& device, Provider provider);
    // Closes the window if it is still open.
    ~Sheet();
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;

    const Text& InstanceId() const { return m_instanceId; }
    HWND Window() const { return m_window; }
    bool HasTabs() const { return m_window != nullptr; }
    // The active tab's window; null when the sheet has no tabs or was closed with its buttons.
    HWND Page() const;
    std::vector<Text> Tabs() const;
    std::size_t ActiveTab() const;
    // Makes a tab active. False when the active one doesn't let go.
    bool Activate(std::size_t tab);
    // PSBTN_OK, PSBTN_APPLYNOW or PSBTN_CANCEL, as a click that is still to be handled.
    void Press(int button);
    // The Apply button is enabled once a page has changed.
    bool CanApply() const;
    // Handles a message of the sheet's keyboard and tabs; false when it isn't one.
    bool Handle(MSG& message) const;

  private:
    Text m_instanceId;
    std::unique_ptr<DeviceList> m_list;  // a library may hold on to the device's node
    HWND m_window = nullptr;
};

// The open sheets, the one used last at the end.
class Sheets {
  public:
    // Null when there is none.
    Sheet* Current() const { return m_sheets.empty() ? nullptr : m_sheets.back().get(); }
    void Add(std::unique_ptr<Sheet> sheet) { m_sheets.push_back(std::move(sheet)); }
    // Makes the sheet of that device the current one; false when there is none.
    bool GoTo(const Text& instanceId);
    void CloseCurrent() { m_sheets.pop_back(); }
    // Lets go of those that were closed with their buttons. One without tabs stays.
    void CloseFinished();
    void Dispatch(MSG& message) const;

  private:
    std::vector<std::unique_ptr<Sheet>> m_sheets;
};

}  // namespace sheet
