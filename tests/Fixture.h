#pragma once
// A fresh machine for a test: a sample loaded into it, a user who follows a script, and the library
// attached. When it goes, whatever the library still holds is a failure of the test.

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>
#include <prsht.h>

#include "Call.h"
#include "Machine.h"
#include "Sample.h"
#include "User.h"

using Lines = std::vector<std::string>;

// Follows a script: answers for boxes and files, deeds for the sheet. A box without an answer fails
// the test and gets its default.
class ScriptedUser : public platform::User {
  public:
    struct Box {
        std::u16string caption;
        std::u16string text;
        UINT style;
    };

    void Answer(int button) { m_answers.push_back(button); }
    void Save(std::optional<std::u16string> path) { m_paths.push_back(std::move(path)); }
    void Do(std::function<void()> deed) { m_deeds.push_back(std::move(deed)); }
    void DoFirst(std::function<void()> deed) { m_deeds.push_front(std::move(deed)); }

    // Answers every box that has no answer in the script with its first button.
    bool agrees = false;

    const std::vector<Box>& Boxes() const { return m_boxes; }
    // Called when the script is at its end; true when it did something.
    std::function<bool()> atEnd;

    int OnMessageBox(const platform::MessageBoxRequest& box) override;
    std::optional<std::u16string> OnFileDialog(const platform::FileDialogRequest& dialog) override;
    bool OnIdle() override;

  private:
    std::deque<int> m_answers;
    std::deque<std::optional<std::u16string>> m_paths;
    std::deque<std::function<void()>> m_deeds;
    std::vector<Box> m_boxes;
};

class TestMachine {
  public:
    // The sample must be readable. help: the text of help.xml, or null for none.
    explicit TestMachine(const Sample& sample = Sample(), std::uint64_t seed = 0,
                         const char* help = nullptr);
    ~TestMachine();

    // Copies the INF files of samples/drive to drive C:, so that there are VLANs and teams.
    void AddInfFiles();

    // Loads the library, unless it is loaded. The constructor doesn't, so that a test may lay
    // faults first.
    HMODULE Attach();
    void Detach();

    // Calls the provider for a port and gives the pages that it added; the caller destroys them
    // with DestroyPropertySheetPage. refuse: the callback that adds pages says no.
    struct ProviderResult {
        BOOL result;
        std::vector<HPROPSHEETPAGE> pages;
    };
    ProviderResult CallProvider(int port = 1, bool refuse = false);
    // The same for the device that carries the ports, with its own provider.
    ProviderResult CallBusProvider(bool refuse = false);
    // The same for any device, with the provider of that name.
    ProviderResult CallProvider(const std::string& instanceId, const char* name,
                                bool refuse = false);

    // Opens the sheet of a port, does the user's deeds and then cancels it. False when there is no
    // page to show.
    bool RunSheet(int port = 1);
    bool RunSheet(ProviderResult provided);
    bool RunBusSheet();
    // In a deed: the active page's window.
    HWND Page() const;
    HWND SheetWindow() const { return m_sheet; }
    void Press(int control);
    bool IsChecked(int control);

    // Reading what the outside can see. Paths below HKEY_LOCAL_MACHINE; nothing when absent.
    std::optional<std::u16string> Text(const std::string& path, const std::u16string& value) const;
    std::optional<DWORD> Number(const std::string& path, const std::u16string& value) const;
    // A value's type and all its bytes.
    std::optional<std::pair<DWORD, std::vector<BYTE>>> Bytes(const std::string& path,
                                                             const std::u16string& value) const;
    // A value of a port's class key; "-" when it is absent.
    std::u16string PortText(int port, const std::u16string& value) const;
    DWORD Restarts(int port) const;
    DWORD Reboots() const;
    // Lines of the tuning log without their time stamps, blank ones kept; empty without a log.
    Lines LogLines() const;
    // The tuning log's bytes.
    std::string LogBytes() const;

    platform::Machine machine;
    ScriptedUser user;
    Sample sample;

  private:
    HMODULE m_library = nullptr;
    HWND m_sheet = nullptr;
};

std::u16string Wide(const std::string& utf8);
