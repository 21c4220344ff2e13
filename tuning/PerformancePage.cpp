#include "PerformancePage.h"

#include <strsafe.h>

#include "../resources/resource.h"
#include "AdapterContext.h"
#include "Devices.h"
#include "Discovery.h"
#include "GeneralTuning.h"
#include "HelpDocument.h"
#include "LibraryState.h"
#include "Processors.h"
#include "Reboot.h"
#include "RestoreDefaults.h"
#include "ScenarioRun.h"
#include "Scenarios.h"
#include "TuningLog.h"
#include "WaitCursor.h"

namespace {

// The scenario buttons in the order in which a checked one is looked for.
constexpr struct {
    int control;
    Scenario scenario;
} kScenarioButtons[] = {
    {IDC_SINGLE_PORT, SINGLE_PORT_STREAM}, {IDC_DUAL_PORT, DUAL_PORT_STREAM},
    {IDC_FORWARDING, FORWARDING_STREAM},   {IDC_MULTICAST, MCAST_STREAM},
    {IDC_SINGLE_STREAM, SINGLE_STREAM},
};

void DisableControl(HWND page, int control) {
    if (HWND window = GetDlgItem(page, control)) EnableWindow(window, FALSE);
}

// 1 when the button is checked; 0 also when the dialog has no such button.
int IsChecked(HWND page, int control) {
    const HWND button = GetDlgItem(page, control);
    return button ? static_cast<int>(SendMessageW(button, BM_GETCHECK, 0, 0) & 1) : 0;
}

TuningAdapter* SecondOrNone(AdapterContext& context) {
    return context.second.present ? &context.second : nullptr;
}

bool StartPage(HWND page, AdapterContext& context) {
    const WaitCursor wait;
    if (!GetKeysInfo(context)) {
        DisableControl(page, IDC_RUN_TUNING);
        return false;
    }
    CheckDlgButton(page, context.scenarioControl ? context.scenarioControl : IDC_BALANCED,
                   BST_CHECKED);
    // A sibling that is absent counts as one that isn't Ethernet.
    if (context.second.isEthernet != context.first.isEthernet) {
        DisableControl(page, IDC_DUAL_PORT);
        if (context.second.present) DisableControl(page, IDC_FORWARDING);
    }
    const HWND help = GetDlgItem(page, IDC_HELP_TEXT);
    PrepareHelpControl(help);
    ShowHelpTopic(Library().helpDocument.get(), help, TEXT("Performance"),
                  context.first.isEthernet ? TEXT("_ETH") : TEXT("_IPoIB"));
    SetWindowLongPtrW(page, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&context));
    return true;
}

void ShowFailure(HWND page, LPCWSTR text) {
    MessageBoxW(page, text, TEXT("Performance tuning failed."), MB_OK | MB_ICONERROR);
}

// What the buttons say: exactly one of the scenarios, or the default and none of them.
struct Choice {
    bool valid;
    bool restoreOnly;
    Scenario scenario;
};

Choice ReadChoice(HWND page) {
    int parity = 0;
    Scenario scenario = SINGLE_STREAM;
    for (size_t i = ARRAYSIZE(kScenarioButtons); i-- > 0;) {
        const int checked = IsChecked(page, kScenarioButtons[i].control);
        parity ^= checked;
        if (checked) scenario = kScenarioButtons[i].scenario;
    }
    const int restoreOnly = IsChecked(page, IDC_BALANCED);
    return {parity != restoreOnly, restoreOnly != 0, scenario};
}

// The steps that every press takes before its scenario. False, after a message, when one failed.
bool PrepareMachine(HWND page, AdapterContext& context, ProcessorsInfo& processors) {
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) {
        ShowFailure(page, TEXT("Log allocation failed"));
        return false;
    }
    if (!GetProcessorsInfo(&log, processors)) {
        ShowFailure(page, TEXT("Processors mapping analysis failed"));
        return false;
    }
    log.Close();
    if (!RunGeneralTuning(context, page)) {
        ShowFailure(page, TEXT("General Tuning Failed"));
        return false;
    }
    RestoreTuningDefaults(nullptr, &context.first, SecondOrNone(context));
    return true;
}

// Runs the scenario and shows its outcome. False when it wasn't completed.
bool RunScenario(HWND page, AdapterContext& context, const ProcessorsInfo& processors,
                 Scenario scenario) {
    WCHAR path[kPathCapacity];
    LogStream log = OpenTuningLog(path, ARRAYSIZE(path));
    if (!log) {
        ShowFailure(page, TEXT("Log allocation failed"));
        return false;
    }
    const bool completed =
        TunePerformance(log, &context.first, SecondOrNone(context), processors, scenario);
    const LPCWSTR introduction =
        completed ? TEXT(
                        "The task was completed succesfully.\nFor information about the changes "
                        "that were made, see log:\n\n")
                  : TEXT("For more information see log:\n\n");
    WCHAR text[kPathCapacity + 128];
    (void)StringCchPrintfW(text, ARRAYSIZE(text), TEXT("%s%s."), introduction, path);
    if (!completed) {
        ShowFailure(page, text);
        return false;
    }
    log.Close();
    MessageBoxW(page, text, TEXT("Tuning succeeded"), MB_OK);
    return true;
}

// Brings the new values into effect.
void ApplyChanges(HWND page, const AdapterContext& context) {
    if (context.noRegistryChange == 0) {
        AskReboot(page);
        return;
    }
    (void)RestartDevice(context.first.instanceId);
    if (context.second.present) (void)RestartDevice(context.second.instanceId);
}

void RunTuning(HWND page, AdapterContext& context) {
    const Choice choice = ReadChoice(page);
    if (!choice.valid) {
        ShowFailure(page, TEXT("Please choose one of the tuning scenarios"));
        return;
    }
    ProcessorsInfo processors;
    if (!PrepareMachine(page, context, processors)) return;
    if (choice.restoreOnly)
        MessageBoxW(page, TEXT("Restore succeeded"), TEXT("Restore"), MB_OK);
    else if (!RunScenario(page, context, processors, choice.scenario))
        return;
    ApplyChanges(page, context);
}

// A click unchecks only the enabled buttons of its group. The button of a stored scenario that the
// ports don't allow is disabled, and would stay checked beside the user's choice and spoil it.
void UncheckDisabled(HWND page) {
    for (const auto& row : kScenarioButtons) {
        const HWND button = GetDlgItem(page, row.control);
        if (button && !IsWindowEnabled(button)) CheckDlgButton(page, row.control, BST_UNCHECKED);
    }
}

void OnCommand(HWND page, int control) {
    // A radio button that has just been clicked reads as checked.
    if (IsDlgButtonChecked(page, control) == BST_CHECKED) {
        UncheckDisabled(page);
        return;
    }
    if (control != IDC_RUN_TUNING) return;
    auto* context = reinterpret_cast<AdapterContext*>(GetWindowLongPtrW(page, GWLP_USERDATA));
    if (context) RunTuning(page, *context);
}

}  // namespace

INT_PTR CALLBACK PerformanceDialogProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG: {
            const auto* sheetPage = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
            return StartPage(page, *reinterpret_cast<AdapterContext*>(sheetPage->lParam));
        }
        case WM_COMMAND:
            OnCommand(page, LOWORD(wParam));
            return 0;
        default:
            return 0;
    }
}

UINT CALLBACK PerformancePageCallback(HWND, UINT message, PROPSHEETPAGEW* sheetPage) {
    if (message == PSPCB_RELEASE) delete reinterpret_cast<AdapterContext*>(sheetPage->lParam);
    return 1;
}
