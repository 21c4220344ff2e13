#include "PerformancePage.h"

#include <new>
#include <utility>

#include "../resources/resource.h"
#include "AdapterContext.h"
#include "CommonControls.h"
#include "Devices.h"
#include "Discovery.h"
#include "GeneralTuning.h"
#include "HelpDocument.h"
#include "Processors.h"
#include "Reboot.h"
#include "RestoreDefaults.h"
#include "ScenarioRun.h"
#include "Scenarios.h"
#include "TuningLog.h"

#include <strsafe.h>

namespace {

// What the buttons say: exactly one of the scenarios, or the default and none of them.
struct Choice {
    bool valid;
    bool restoreOnly;
    Scenario scenario;
};

class PerformancePage final : public SheetPage {
  public:
    PerformancePage(const AdapterIdentity& identity,
                    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> interfaceDetail) {
        m_context.identity = identity;
        m_context.interfaceDetail = std::move(interfaceDetail);
    }

  private:
    bool OnStart() override;
    void OnCommand(WORD control, WORD notification) override;

    void ShowStartFailure(const DiscoveryFailure& failure) const;
    void Disable(int control) const;
    void UncheckDisabled() const;
    Choice ReadChoice() const;
    void RunTuning();
    bool PrepareMachine(ProcessorsInfo& processors);
    bool RunScenario(const ProcessorsInfo& processors, Scenario scenario);
    void ApplyChanges() const;
    void ShowFailure(LPCWSTR text) const {
        MessageBoxW(Window(), text, TEXT("Performance tuning failed."), MB_OK | MB_ICONERROR);
    }
    TuningAdapter* SecondOrNone() { return m_context.second.present ? &m_context.second : nullptr; }

    AdapterContext m_context;
};

bool PerformancePage::OnStart() {
    DiscoveryFailure failure;
    if (!GetKeysInfo(m_context, failure)) {
        ShowStartFailure(failure);
        return false;
    }
    const TuningAdapter& first = m_context.first;
    const TuningAdapter& second = m_context.second;
    CheckDlgButton(Window(), m_context.scenarioControl ? m_context.scenarioControl : IDC_BALANCED,
                   BST_CHECKED);
    // A sibling that is absent counts as one that isn't Ethernet.
    if (second.isEthernet != first.isEthernet) {
        Disable(IDC_DUAL_PORT);
        if (second.present) Disable(IDC_FORWARDING);
    }
    ShowHelp(Control(IDC_HELP_TEXT), TEXT("Performance"),
             first.isEthernet ? TEXT("_ETH") : TEXT("_IPoIB"));
    return true;
}

void PerformancePage::OnCommand(WORD control, WORD) {
    // A radio button that has just been clicked reads as checked.
    if (IsDlgButtonChecked(Window(), control) == BST_CHECKED)
        UncheckDisabled();
    else if (control == IDC_RUN_TUNING)
        RunTuning();
}

// Leaves the tab without anything to press, and says why: in the log where it can be opened, and in
// the help pane.
void PerformancePage::ShowStartFailure(const DiscoveryFailure& failure) const {
    for (const ScenarioRow& row : TunedScenarios())
        Disable(row.control);
    Disable(IDC_BALANCED);
    Disable(IDC_RUN_TUNING);

    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    LogLine(&log, failure.text);

    WCHAR sentence[kLogTextCapacity + 128];
    (void)StringCchPrintfW(sentence, ARRAYSIZE(sentence),
                           TEXT("This adapter can't be tuned, since its settings or those of the "
                                "port beside it can't be reached. %s"),
                           failure.text);
    ShowHelpSentence(Control(IDC_HELP_TEXT), sentence);
}

void PerformancePage::Disable(int control) const {
    if (const HWND window = Control(control)) EnableWindow(window, FALSE);
}

// A click unchecks only the enabled buttons of its group. The button of a stored scenario that the
// ports don't allow is disabled, and would stay checked beside the user's choice and spoil it.
void PerformancePage::UncheckDisabled() const {
    for (const ScenarioRow& row : TunedScenarios()) {
        const HWND button = Control(row.control);
        if (button && !IsWindowEnabled(button)) SetCheck(button, false);
    }
}

Choice PerformancePage::ReadChoice() const {
    bool parity = false;
    Scenario scenario = SINGLE_STREAM;
    const std::span<const ScenarioRow> rows = TunedScenarios();
    for (size_t i = rows.size(); i-- > 0;) {
        if (!IsChecked(Control(rows[i].control))) continue;
        parity = !parity;
        scenario = rows[i].number;
    }
    const bool restoreOnly = IsChecked(Control(IDC_BALANCED));
    return {parity != restoreOnly, restoreOnly, scenario};
}

void PerformancePage::RunTuning() {
    const Choice choice = ReadChoice();
    if (!choice.valid) {
        ShowFailure(TEXT("Please choose one of the tuning scenarios"));
        return;
    }
    ProcessorsInfo processors;
    if (!PrepareMachine(processors)) return;
    if (choice.restoreOnly)
        MessageBoxW(Window(), TEXT("Restore succeeded"), TEXT("Restore"), MB_OK);
    else if (!RunScenario(processors, choice.scenario))
        return;
    ApplyChanges();
}

// The steps that every press takes before its scenario. False, after a message, when one failed.
bool PerformancePage::PrepareMachine(ProcessorsInfo& processors) {
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) {
        ShowFailure(TEXT("Log allocation failed"));
        return false;
    }
    if (!GetProcessorsInfo(&log, processors)) {
        ShowFailure(TEXT("Processors mapping analysis failed"));
        return false;
    }
    log.Close();
    if (!RunGeneralTuning(m_context, Window())) {
        ShowFailure(TEXT("General Tuning Failed"));
        return false;
    }
    RestoreTuningDefaults(nullptr, &m_context.first, SecondOrNone());
    return true;
}

// Runs the scenario and shows its outcome. False when it wasn't completed.
bool PerformancePage::RunScenario(const ProcessorsInfo& processors, Scenario scenario) {
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) {
        ShowFailure(TEXT("Log allocation failed"));
        return false;
    }
    const bool completed =
        TunePerformance(log, &m_context.first, SecondOrNone(), processors, scenario);
    const LPCWSTR introduction =
        completed ? TEXT(
                        "The task was completed succesfully.\nFor information about the changes "
                        "that were made, see log:\n\n")
                  : TEXT("For more information see log:\n\n");
    WCHAR text[kPathCapacity + 128];
    (void)StringCchPrintfW(text, ARRAYSIZE(text), TEXT("%s%s."), introduction, path);
    if (!completed) {
        ShowFailure(text);
        return false;
    }
    log.Close();
    MessageBoxW(Window(), text, TEXT("Tuning succeeded"), MB_OK);
    return true;
}

// Brings the new values into effect.
void PerformancePage::ApplyChanges() const {
    if (m_context.noRegistryChange == 0) {
        AskReboot(Window());
        return;
    }
    (void)RestartDevice(m_context.first.instanceId);
    if (m_context.second.present) (void)RestartDevice(m_context.second.instanceId);
}

}  // namespace

std::unique_ptr<SheetPage> NewPerformancePage(
    const AdapterIdentity& identity,
    ScopedLocal<SP_DEVICE_INTERFACE_DETAIL_DATA_W> interfaceDetail) {
    return std::unique_ptr<SheetPage>(new (std::nothrow)
                                          PerformancePage(identity, std::move(interfaceDetail)));
}
